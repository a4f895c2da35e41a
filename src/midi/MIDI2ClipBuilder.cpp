#include "MIDI2ClipBuilder.h"

#include "MIDI2Clip.h"
#include "MIDIDataWriter.h"
#include "SMFTrackMerger.h"

#include <algorithm>
#include <optional>

namespace tambrel::MIDI2ClipBuilder {
namespace {

constexpr std::uint32_t noOperation = 0;
constexpr std::uint32_t deltaClockstamp = 0x00400000;
constexpr std::uint32_t ticksPerQuarterNote = 0x00300000;
constexpr std::uint32_t channelVoice = 0x20000000;
constexpr std::uint32_t startOfClip = 0xF0200000;
constexpr std::uint32_t endOfClip = 0xF0210000;

/// Appends packets and the clockstamps between them.
class ClipWriter {
public:
    explicit ClipWriter(std::size_t expectedSize) : out_(expectedSize) {}

    void begin(std::uint16_t division) {
        out_.append(MIDI2Clip::signature);
        for (const std::uint32_t word :
             {deltaClockstamp, ticksPerQuarterNote | ticksPerQuarter(division), deltaClockstamp, startOfClip})
            out_.appendU32(word);
    }

    void append(std::uint32_t tick, std::uint32_t word) {
        std::uint32_t delta = tick - lastTick_;
        lastTick_ = tick;
        while (delta > MIDI2Clip::longestClockstamp)
            [[unlikely]] {
                out_.appendU32(deltaClockstamp | MIDI2Clip::longestClockstamp, noOperation);
                delta -= MIDI2Clip::longestClockstamp;
            }
        out_.appendU32(deltaClockstamp | delta, word);
    }

    [[nodiscard]] MIDIData end() {
        out_.appendU32(deltaClockstamp);
        out_.appendU32(endOfClip);
        return out_.finish();
    }

private:
    static std::uint32_t ticksPerQuarter(std::uint16_t division) {
        const bool isTimeCode = (division & 0x8000) != 0;
        return isTimeCode ? MIDI2Clip::defaultTicksPerQuarterNote : std::max<std::uint32_t>(division, 1);
    }

    MIDIDataWriter out_;
    std::uint32_t lastTick_ = 0;
};

} // namespace

MIDIData build(ByteView smf) {
    if (!SMFByteCodec::hasHeader(smf))
        return {};
    // A note under running status is three bytes here and two words there.
    ClipWriter clip(64 + smf.size() / 3 * 8);
    clip.begin(SMFByteCodec::readU16(smf, 12));
    const auto channelVoiceWord = [smf](std::int64_t, const SMFTimedTrackEvent& event, std::uint32_t& word) {
        if (!MIDIStatus::isChannelMessage(event.status))
            return false;
        const auto data = static_cast<std::size_t>(event.dataStart);
        const std::uint32_t data2 = MIDIStatus::dataLength(event.status) == 2 ? smf[data + 1] : 0;
        word = channelVoice | std::uint32_t{event.status} << 16 | std::uint32_t{smf[data]} << 8 | data2;
        return true;
    };
    SMFTrackMerger::merge<std::uint32_t>(
        smf, SMFTrackEventWalker::trackChunks(smf, SMFByteCodec::readU16(smf, 10)),
        SMFMalformedEventPolicy::skip, channelVoiceWord,
        [&clip](std::uint32_t tick, std::uint32_t word) { clip.append(tick, word); });
    return clip.end();
}

MIDI2ClipBuildSummary summary(ByteView clip) {
    MIDI2ClipBuildSummary summary{.byteCount = static_cast<std::int64_t>(clip.size())};
    if (!MIDI2Clip::hasSignature(clip))
        return summary;
    const std::size_t words = (clip.size() - MIDI2Clip::signature.size()) / 4;
    const ByteView payload = clip.subspan(MIDI2Clip::signature.size());
    for (std::size_t word = 0; word < words; ++word)
        summary.channelVoiceWordCount += payload[word * 4] >> 4 == 2 ? 1 : 0;
    summary.umpWordCount = static_cast<std::int64_t>(words);
    return summary;
}

} // namespace tambrel::MIDI2ClipBuilder
