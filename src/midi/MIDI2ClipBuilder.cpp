#include "MIDI2ClipBuilder.h"

#include "MIDI2Clip.h"
#include "MIDI2ClipMerge.h"
#include "MIDIDataWriter.h"
#include "SMFHeader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>

namespace tambrel::MIDI2ClipBuilder {
namespace {

using namespace MIDI2Clip;

/// One channel voice packet.
struct TimedUMP {
    std::uint32_t tick;
    std::uint32_t word;
};

/// Appends packets and the clockstamps between them.
class ClipWriter {
public:
    explicit ClipWriter(std::size_t expectedSize) : out_(expectedSize) {}

    void begin(Division division) {
        out_.append(signature);
        for (const std::uint32_t word :
             {deltaClockstamp, ticksPerQuarterNote | ticksPerQuarter(division), deltaClockstamp, startOfClip})
            out_.appendU32(word);
    }

    // `packets` is not empty and in order of tick.
    void append(std::span<const TimedUMP> packets) {
        constexpr std::uint32_t longest = longestClockstamp;
        const std::size_t pauses = (packets.back().tick - lastTick_) / longest; // At most.
        const std::span<std::uint8_t> room = out_.room((packets.size() + pauses) * pairSize);
        std::uint8_t* at = room.data();
        std::uint32_t tick = lastTick_;
        for (const TimedUMP& packet : packets) {
            for (; packet.tick - tick > longest; tick += longest)
                at = writePair(deltaClockstamp | longest, noOperation, at);
            at = writePair(deltaClockstamp | (packet.tick - tick), packet.word, at);
            tick = packet.tick;
        }
        lastTick_ = tick;
        out_.commit(static_cast<std::size_t>(at - room.data()));
    }

    [[nodiscard]] MIDIData end() {
        out_.appendU32(deltaClockstamp);
        out_.appendU32(endOfClip);
        return out_.finish();
    }

private:
    static constexpr std::size_t pairSize = 8;

    // A clockstamp and the word it delays; returns the position after them.
    static std::uint8_t* writePair(std::uint32_t clockstamp, std::uint32_t word, std::uint8_t* at) {
        std::uint64_t pair = std::uint64_t{clockstamp} << 32 | word;
        if constexpr (std::endian::native == std::endian::little)
            pair = __builtin_bswap64(pair); // Compilers do not see through shifts of single bytes here.
        std::memcpy(at, &pair, pairSize);
        return at + pairSize;
    }

    static std::uint32_t ticksPerQuarter(Division division) {
        return division.isTimeCode() ? defaultTicksPerQuarterNote : division.ticks();
    }

    MIDIDataWriter out_;
    std::uint32_t lastTick_ = 0;
};

} // namespace

MIDIData build(ByteView smf, const std::stop_token& stop) {
    const auto header = SMFHeader::read(smf);
    if (!header)
        return {};
    // A note under running status takes three bytes in the song and two words in the clip.
    ClipWriter clip(64 + smf.size() / 3 * 8);
    clip.begin(header->division);
    const auto channelVoiceWord = [smf](const SMFTimedTrackEvent& event, TimedUMP& packet) {
        if (!MIDIStatus::isChannelMessage(event.status))
            return false;
        const std::size_t data = event.dataStart;
        const std::uint32_t data2 = MIDIStatus::dataLength(event.status) == 2 ? smf[data + 1] : 0;
        packet.word =
            midi1ChannelVoice | std::uint32_t{event.status} << 16 | std::uint32_t{smf[data]} << 8 | data2;
        return true;
    };
    mergeTracks<TimedUMP>(smf, header->trackCount, SMFMalformedEventPolicy::skip, stop, channelVoiceWord,
                          [&clip](std::span<const TimedUMP> packets) { clip.append(packets); });
    return clip.end();
}

MIDI2ClipBuildSummary summary(ByteView clip) {
    MIDI2ClipBuildSummary summary{.byteCount = static_cast<std::int64_t>(clip.size())};
    if (!hasSignature(clip))
        return summary;
    const std::size_t words = (clip.size() - signature.size()) / 4;
    const ByteView payload = clip.subspan(signature.size());
    for (std::size_t word = 0; word < words; ++word)
        summary.channelVoiceWordCount += payload[word * 4] >> 4 == 2 ? 1 : 0;
    summary.umpWordCount = static_cast<std::int64_t>(words);
    return summary;
}

} // namespace tambrel::MIDI2ClipBuilder
