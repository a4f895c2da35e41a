#pragma once

#include "MIDIData.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tambrel {

/// The container of MIDI 2.0 clips (MIDI Clip File, M2-116-U): a signature of 8 bytes, then Universal MIDI
/// Packets without a gap, every word big-endian.
namespace MIDI2Clip {

inline constexpr std::array<std::uint8_t, 8> signature{'S', 'M', 'F', '2', 'C', 'L', 'I', 'P'};
inline constexpr std::uint16_t defaultTicksPerQuarterNote = 480;
/// Most ticks that one delta clockstamp can hold.
inline constexpr std::uint32_t longestClockstamp = 0xFFFFF;

[[nodiscard]] inline bool hasSignature(ByteView data) {
    return data.size() >= signature.size() && std::ranges::equal(data.first(signature.size()), signature);
}

} // namespace MIDI2Clip
} // namespace tambrel
