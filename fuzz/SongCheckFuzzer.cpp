#include "Check.h"
#include "EventText.h"
#include "MIDI2Clip.h"
#include "NoteFilter.h"
#include "SongCheck.h"
#include "SongDetails.h"

#include <algorithm>

using namespace tambrel;
using fuzz::check;

// Every finding lies within the file, and a file without one can be dumped as text. A note filter takes away
// its notes and nothing else.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ByteView data(bytes, size);
    const auto findings = checkSong(data);
    for (const SongFinding& finding : findings)
        check(finding.position <= size && !finding.explanation.empty());
    check(std::ranges::is_sorted(findings, {}, &SongFinding::position));
    if (findings.empty())
        static_cast<void>(EventText::dump(data));

    const SongDetails details = SongDetails::gather(data);
    const NoteParts parts = partsWithNotes(data);
    check(parts.tracks.empty() == (details.notes == 0));
    NoteFilter filter;
    filter.muted.channels = parts.channels;
    const MIDIData silent = filter.applied(data);
    check(partsWithNotes(silent).tracks.empty());
    if (!silent.empty())
        check(SongDetails::gather(silent).tempos.size() == details.tempos.size());
    return 0;
}
