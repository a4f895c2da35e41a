#pragma once

#include "MIDIStatus.h"
#include "UMPPacket.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tambrel {

/// A channel message of MIDI 1.0 in one word. From the top: status, first data byte, second data byte or 0,
/// size in bytes (2 or 3).
struct ChannelMessage {
    std::uint32_t bits = 0;

    /// `data2` counts only in a message that has a second data byte.
    constexpr ChannelMessage(std::uint8_t status, std::uint32_t data1, std::uint32_t data2 = 0)
        : bits(std::uint32_t{status} << 24 | data1 << 16 |
               (MIDIStatus::dataLength(status) == 2 ? data2 << 8 | 3 : 2)) {}

    [[nodiscard]] std::size_t size() const { return bits & 0xFF; }
};

/// A channel message at its time. A list of them keeps the order of the packets, which stands for an order
/// number: sorting is stable.
struct TimedEvent {
    std::uint32_t tick;
    ChannelMessage message;
};

/// A tempo or time signature as the meta event of a Standard MIDI File, at its time.
struct TimedMetaEvent {
    std::uint32_t tick = 0;
    std::uint8_t size = 0;
    std::array<std::uint8_t, 7> bytes{};
};

/// What packets (UMP, M2-104-UM) say in the messages of MIDI 1.0 and the meta events of a Standard MIDI File
/// (SMF 1.0, RP-001). Pure, any thread.
namespace UMPConversion {

/// The message of a MIDI 1.0 channel voice packet; absent when its status is no channel message.
[[nodiscard]] inline std::optional<ChannelMessage> midi1ByteStream(const UMPPacket& packet) {
    const std::uint8_t status = packet.status();
    if (!MIDIStatus::isChannelMessage(status))
        return std::nullopt;
    return ChannelMessage(status, packet.data1(), packet.data2());
}

/// The message of a MIDI 2.0 channel voice packet at the resolution of MIDI 1.0. Throws
/// `MIDI2ClipImportError` when MIDI 1.0 has no such message.
[[nodiscard]] ChannelMessage downConvertedMIDI1Bytes(const UMPPacket& packet);

/// The event of a Flex Data packet; absent when the packet says something else.
[[nodiscard]] std::optional<TimedMetaEvent> tempoEvent(const UMPPacket& packet, std::uint32_t tick);
[[nodiscard]] std::optional<TimedMetaEvent> timeSignatureEvent(const UMPPacket& packet, std::uint32_t tick);

/// Clamped to what three bytes hold, 1 to 0xFFFFFF.
[[nodiscard]] TimedMetaEvent tempoMetaEvent(std::uint32_t microsecondsPerQuarterNote, std::uint32_t tick);

/// `denominatorExponent` is the power of two; `thirtySecondNotes` are those in a quarter note.
[[nodiscard]] TimedMetaEvent timeSignatureMetaEvent(std::uint8_t numerator, std::uint8_t denominatorExponent,
                                                    std::uint8_t thirtySecondNotes, std::uint32_t tick);

} // namespace UMPConversion
} // namespace tambrel
