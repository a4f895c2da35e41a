#include "Check.h"
#include "MIDI2ClipBuilder.h"
#include "SMFHeader.h"
#include "SMFTrackEventWalker.h"

#include <algorithm>

using namespace tambrel;
using fuzz::check;

// Every channel message of the song is in the clip, the clip takes as long as the song, and its summary is
// right.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ByteView smf(bytes, size);
    const MIDIData clip = MIDI2ClipBuilder::build(smf);
    const MIDI2ClipBuildSummary summary = MIDI2ClipBuilder::summary(clip);
    check(summary.byteCount == static_cast<std::int64_t>(clip.size()));
    const auto header = SMFHeader::read(smf);
    if (!header) {
        check(clip.empty());
        return 0;
    }
    std::int64_t messages = 0;
    std::uint64_t lastTick = 0;
    for (const SMFTrackChunk& track : SMFTrackEventWalker::trackChunks(smf, header->trackCount)) {
        SMFTrackEventWalker::walk(smf, track, SMFMalformedEventPolicy::skip, [&](const auto& event) {
            if (MIDIStatus::isChannelMessage(event.status)) {
                ++messages;
                lastTick = std::max<std::uint64_t>(lastTick, event.tick);
            }
            return SMFTrackWalkDecision::continue_;
        });
    }
    check(summary.channelVoiceWordCount == messages && summary.umpWordCount * 4 + 8 == summary.byteCount);
    std::uint64_t ticks = 0;
    for (std::size_t at = 8; at < clip.size(); at += 4) {
        const std::uint32_t word = SMFByteCodec::readU32(clip, at);
        ticks += word >> 20 == 0x004 ? word & 0xFFFFF : 0;
    }
    check(ticks == lastTick);
    return 0;
}
