#pragma once

#include <cstddef>
#include <cstdint>

namespace tambrel {

/// Status bytes of MIDI 1.0 messages and of the events of a Standard MIDI File; a channel message carries its
/// channel, 0 to 15, in the low four bits. Pure, any thread.
namespace MIDIStatus {

inline constexpr std::uint8_t noteOff = 0x80;
inline constexpr std::uint8_t noteOn = 0x90;
inline constexpr std::uint8_t polyphonicPressure = 0xA0;
inline constexpr std::uint8_t controlChange = 0xB0;
inline constexpr std::uint8_t programChange = 0xC0;
inline constexpr std::uint8_t channelPressure = 0xD0;
inline constexpr std::uint8_t pitchBend = 0xE0;
inline constexpr std::uint8_t systemExclusive = 0xF0;
inline constexpr std::uint8_t systemExclusiveContinuation = 0xF7;
inline constexpr std::uint8_t meta = 0xFF;

/// The kind of a channel message: its status without the channel.
[[nodiscard]] constexpr std::uint8_t kind(std::uint8_t status) {
    return status & 0xF0;
}
[[nodiscard]] constexpr std::uint8_t channel(std::uint8_t status) {
    return status & 0x0F;
}
[[nodiscard]] constexpr bool isChannelMessage(std::uint8_t status) {
    return status >= noteOff && status < systemExclusive;
}
/// Data bytes of a channel message: one for program change and channel pressure, two for the others.
[[nodiscard]] constexpr std::size_t dataLength(std::uint8_t channelStatus) {
    return (channelStatus & 0xE0) == programChange ? 1 : 2;
}

} // namespace MIDIStatus

/// Types of meta events (SMF 1.0, RP-001).
namespace MetaType {

inline constexpr std::uint8_t text = 0x01;
inline constexpr std::uint8_t copyright = 0x02;
inline constexpr std::uint8_t trackName = 0x03;
inline constexpr std::uint8_t instrumentName = 0x04;
inline constexpr std::uint8_t lyric = 0x05;
inline constexpr std::uint8_t marker = 0x06;
inline constexpr std::uint8_t cuePoint = 0x07;
inline constexpr std::uint8_t endOfTrack = 0x2F;
inline constexpr std::uint8_t setTempo = 0x51;
inline constexpr std::uint8_t timeSignature = 0x58;
inline constexpr std::uint8_t keySignature = 0x59;

} // namespace MetaType
} // namespace tambrel
