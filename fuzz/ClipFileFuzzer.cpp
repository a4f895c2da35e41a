#include "Check.h"
#include "MIDI2ClipBuilder.h"
#include "MIDI2ClipImporter.h"
#include "SMFHeader.h"
#include "SMFTrackEventWalker.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <vector>

using namespace tambrel;
using fuzz::check;

namespace {

using Message = std::tuple<std::uint32_t, std::uint8_t, std::uint8_t, std::uint8_t>;

// The channel messages of a song by channel, in order of time, tracks and place.
std::array<std::vector<Message>, 16> messages(ByteView smf) {
    std::array<std::vector<Message>, 16> found;
    for (const SMFTrackChunk& track : SMFTrackEventWalker::trackChunks(smf, SMFHeader::read(smf)->trackCount))
        SMFTrackEventWalker::walk(smf, track, SMFMalformedEventPolicy::stop, [&](const auto& event) {
            const auto at = event.dataStart;
            if (MIDIStatus::isChannelMessage(event.status))
                found[MIDIStatus::channel(event.status)].emplace_back(
                    event.tick, event.status, smf[at] & 0x7F,
                    MIDIStatus::dataLength(event.status) == 2 ? smf[at + 1] & 0x7F : 0);
            return SMFTrackWalkDecision::continue_;
        });
    for (auto& channel : found)
        std::ranges::stable_sort(channel, {}, [](const Message& message) { return std::get<0>(message); });
    return found;
}

} // namespace

// A song comes back from its clip with every channel message at its tick.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ByteView smf(bytes, size);
    const MIDIData clip = MIDI2ClipBuilder::buildFile(smf);
    check(clip.empty() == !SMFHeader::read(smf));
    if (clip.empty())
        return 0;
    const auto expected = messages(smf);
    // The importer writes longer pauses than a track can hold.
    constexpr std::uint32_t longestPause = 0x0FFF'FFFF;
    for (const auto& channel : expected) {
        if (!channel.empty() && std::get<0>(channel.back()) > longestPause)
            return 0;
    }
    try {
        check(messages(MIDI2ClipImporter::importPlayableSMF(clip).smfData) == expected);
    } catch (const MIDI2ClipImportError& error) {
        check(error.errorCase() == MIDI2ClipImportError::Case::noPlayableEvents &&
              std::ranges::all_of(expected, &std::vector<Message>::empty));
    }
    return 0;
}
