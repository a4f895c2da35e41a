#pragma once

#include "MIDIData.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tambrel {

/// The container of MIDI 2.0 clips (MIDI Clip File, M2-116-U): a signature of 8 bytes, then Universal MIDI
/// Packets without a gap, every word big-endian. Pure, any thread.
namespace MIDI2Clip {

inline constexpr std::array<std::uint8_t, 8> signature{'S', 'M', 'F', '2', 'C', 'L', 'I', 'P'};
inline constexpr std::uint16_t defaultTicksPerQuarterNote = 480;

// First words of a clip's packets, for group 0 and with a value of 0.
inline constexpr std::uint32_t noOperation = 0;
inline constexpr std::uint32_t ticksPerQuarterNote = 0x00300000; ///< Value: the low 16 bits.
inline constexpr std::uint32_t deltaClockstamp = 0x00400000;     ///< Value: ticks, the low 20 bits.
inline constexpr std::uint32_t midi1ChannelVoice = 0x20000000;   ///< Value: the message, the low 24 bits.
inline constexpr std::uint32_t systemExclusive7 = 0x30000000;    ///< Of two words.
inline constexpr std::uint32_t setTempo = 0xD0100000; ///< Flex data of four words: 10 ns a quarter note.
inline constexpr std::uint32_t setTimeSignature = 0xD0100001;
inline constexpr std::uint32_t setKeySignature = 0xD0100005;
inline constexpr std::uint32_t startOfClip = 0xF0200000;
inline constexpr std::uint32_t endOfClip = 0xF0210000;

/// Most ticks that one delta clockstamp can hold.
inline constexpr std::uint32_t longestClockstamp = 0xFFFFF;

[[nodiscard]] inline bool hasSignature(ByteView data) {
    return data.size() >= signature.size() && std::ranges::equal(data.first(signature.size()), signature);
}

} // namespace MIDI2Clip
} // namespace tambrel
