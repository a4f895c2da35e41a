#include "LargeClip.h"

#include "MIDI2ClipBuilder.h"
#include "UMPPacket.h"

#include <cstring>

namespace tambrel::bench {
namespace {

constexpr std::size_t signatureSize = 8;

std::uint32_t wordAt(ByteView clip, std::size_t at) {
    std::uint32_t word = 0;
    std::memcpy(&word, clip.data() + at, sizeof word);
    return __builtin_bswap32(word);
}

void append(Bytes& clip, std::uint32_t word) {
    for (const int shift : {24, 16, 8, 0})
        clip.push_back(static_cast<std::uint8_t>(word >> shift));
}

// The companion marks start and end by their first words only.
void appendStream(Bytes& clip, std::uint32_t word) {
    append(clip, word);
    for (int i = 0; i < 3; ++i)
        append(clip, 0);
}

void appendMIDI2ChannelVoice(Bytes& clip, std::uint32_t midi1) {
    append(clip, (midi1 & 0x0FFFFF00) | 0x40000000);
    append(clip, (midi1 & 0x7F) << 25);
}

} // namespace

Bytes largeClip(ByteView smf) {
    const MIDIData companion = MIDI2ClipBuilder::build(smf);
    const ByteView words = companion.view();
    Bytes clip(words.begin(), words.begin() + signatureSize);
    for (std::size_t at = signatureSize; at < words.size(); at += 4) {
        const std::uint32_t word = wordAt(words, at);
        const std::uint32_t type = word >> 28;
        if (type == UMPMessageType::stream)
            appendStream(clip, word);
        else if (type == UMPMessageType::midi1ChannelVoice && (word >> 16 & 1) != 0)
            appendMIDI2ChannelVoice(clip, word);
        else
            append(clip, word);
    }
    return clip;
}

ClipSums barePass(ByteView clip) {
    ClipSums sums;
    for (std::size_t at = signatureSize; at + 4 <= clip.size(); ++sums.packets) {
        const std::uint32_t first = wordAt(clip, at);
        const std::uint32_t type = first >> 28;
        const std::uint32_t status = first >> 20 & 0xF;
        if (type == UMPMessageType::utility && status == 4)
            sums.ticks += first & 0xFFFFF;
        else if (type == UMPMessageType::midi1ChannelVoice || type == UMPMessageType::midi2ChannelVoice)
            sums.noteOns += status == 9;
        const std::size_t end = at + 4 * UMPPacket::wordCount(static_cast<std::uint8_t>(type));
        for (; at < end && at + 4 <= clip.size(); at += 4)
            sums.words += wordAt(clip, at);
    }
    return sums;
}

} // namespace tambrel::bench
