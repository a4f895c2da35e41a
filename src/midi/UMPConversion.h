#pragma once

#include "MIDIMessage.h"
#include "UMPPacket.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tambrel {

/// A channel message at its time. Lists keep the order of the packets, and are sorted stably.
struct TimedEvent {
    std::uint32_t tick;
    MIDIMessage message;
};

/// A tempo or time signature as the meta event of a Standard MIDI File, at its time.
struct TimedMetaEvent {
    std::uint32_t tick = 0;
    std::uint8_t size = 0;
    std::array<std::uint8_t, 7> bytes{};
};

/// Converts packets (UMP, M2-104-UM) to MIDI 1.0 messages and to meta events of a Standard MIDI File (SMF
/// 1.0, RP-001). Pure, any thread.
namespace UMPConversion {

/// The message of a MIDI 1.0 channel voice packet; absent when its status is no channel message.
[[nodiscard]] inline std::optional<MIDIMessage> midi1ByteStream(const UMPPacket& packet) {
    const std::uint8_t status = packet.status();
    if (!MIDIStatus::isChannelMessage(status))
        return std::nullopt;
    return MIDIMessage{status, packet.data1(), packet.data2()};
}

/// The message of a MIDI 2.0 channel voice packet at the resolution of MIDI 1.0. Throws
/// `MIDI2ClipImportError` when MIDI 1.0 has no such message.
[[nodiscard]] MIDIMessage downConvertedMIDI1Bytes(const UMPPacket& packet);

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
