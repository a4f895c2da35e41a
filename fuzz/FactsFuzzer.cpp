#include "Check.h"
#include "MIDIFileInfo.h"

using namespace tambrel;
using fuzz::check;

// Phrases lie within the song, one after another, and are wide enough to be seen.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const MIDIFileInfo info = MIDIFileInfo::parse({bytes, size});
    check(info.isSupportedFormat || info.timelineLanes.empty());
    check(!info.tempoBPM || *info.tempoBPM > 3.5);
    check(!info.wasExplodedFromFormat0 || (info.format == 0 && info.displayTrackCount > 1));
    for (const MIDITrackPhraseLane& lane : info.timelineLanes) {
        check(!lane.label.empty() && !lane.phrases.empty());
        double lastStart = -1;
        for (const MIDIPhrase& phrase : lane.phrases) {
            check(phrase.start > lastStart && phrase.start <= 1.0);
            check(phrase.end >= phrase.start + 0.005 && phrase.end <= 1.005);
            lastStart = phrase.start;
        }
    }
    return 0;
}
