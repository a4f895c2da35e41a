#pragma once

#include "MIDIMessage.h"

#include <cstdint>

namespace tambrel {

/// A message on its way through the merge of the tracks, packed into one number that stays in a register. Any
/// thread.
struct PackedEvent {
    std::uint32_t tick;
    std::uint32_t message;
};

[[nodiscard]] constexpr std::uint32_t pack(MIDIMessage message) {
    return std::uint32_t{message.data3} << 24 | std::uint32_t{message.data2} << 16 |
           std::uint32_t{message.data1} << 8 | message.status;
}

/// The synthesizer ignores a data byte that is out of range, which would leave a note hanging.
[[nodiscard]] constexpr std::uint32_t packInRange(MIDIMessage message) {
    return pack(message) & 0x7F7F7FFF;
}

[[nodiscard]] constexpr MIDIMessage unpack(std::uint32_t packed) {
    return {static_cast<std::uint8_t>(packed), static_cast<std::uint8_t>(packed >> 8),
            static_cast<std::uint8_t>(packed >> 16), static_cast<std::uint8_t>(packed >> 24)};
}

/// A tempo travels like a message, with its microseconds in the three data bytes.
[[nodiscard]] constexpr bool isTempo(MIDIMessage message) {
    return message.status == MIDIStatus::meta;
}

[[nodiscard]] constexpr std::uint32_t microsecondsPerQuarter(MIDIMessage tempo) {
    return std::uint32_t{tempo.data1} << 16 | std::uint32_t{tempo.data2} << 8 | tempo.data3;
}

} // namespace tambrel
