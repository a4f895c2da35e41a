#include "UMPConversion.h"

#include "MIDI2ClipImportError.h"

#include <algorithm>
#include <limits>

namespace tambrel::UMPConversion {
namespace {

std::uint32_t scaledTo14Bits(std::uint32_t value) {
    return static_cast<std::uint32_t>(std::uint64_t{value} * 16383 /
                                      std::numeric_limits<std::uint32_t>::max());
}

// A complete, group-wide message of the setup and performance bank with the given status.
bool isFlexData(const UMPPacket& packet, std::uint32_t status) {
    return (packet.word(0) & 0x00F0FFFF) == (0x00100000 | status);
}

} // namespace

// Values are cut to their top seven bits without rounding; only pitch bend is scaled.
MIDIMessage downConvertedMIDI1Bytes(const UMPPacket& packet) {
    const std::uint8_t status = packet.status();
    const std::uint32_t data = packet.word(1);
    const auto top7 = static_cast<std::uint8_t>(data >> 25);
    switch (MIDIStatus::kind(status)) {
    case MIDIStatus::noteOn: // Velocity 0 would be a note off.
        return {status, packet.data1(), std::max<std::uint8_t>(top7, 1)};
    case MIDIStatus::noteOff:
    case MIDIStatus::polyphonicPressure:
    case MIDIStatus::controlChange:
        return {status, packet.data1(), top7};
    case MIDIStatus::programChange:
        return {status, static_cast<std::uint8_t>(data >> 24 & 0x7F)};
    case MIDIStatus::channelPressure:
        return {status, top7};
    case MIDIStatus::pitchBend: {
        const std::uint32_t bend = scaledTo14Bits(data);
        return {status, static_cast<std::uint8_t>(bend & 0x7F), static_cast<std::uint8_t>(bend >> 7)};
    }
    default:
        throw MIDI2ClipImportError::unsupportedMIDI2ChannelVoiceStatus(status);
    }
}

TimedMetaEvent tempoMetaEvent(std::uint32_t microsecondsPerQuarterNote, std::uint32_t tick) {
    const std::uint32_t tempo = std::clamp<std::uint32_t>(microsecondsPerQuarterNote, 1, 0xFFFFFF);
    return {tick,
            6,
            {MIDIStatus::meta, MetaType::setTempo, 3, static_cast<std::uint8_t>(tempo >> 16),
             static_cast<std::uint8_t>(tempo >> 8), static_cast<std::uint8_t>(tempo)}};
}

TimedMetaEvent timeSignatureMetaEvent(std::uint8_t numerator, std::uint8_t denominatorExponent,
                                      std::uint8_t thirtySecondNotes, std::uint32_t tick) {
    constexpr std::uint8_t clocksPerClick = 24;
    return {tick,
            7,
            {MIDIStatus::meta, MetaType::timeSignature, 4, numerator, denominatorExponent, clocksPerClick,
             thirtySecondNotes}};
}

std::optional<TimedMetaEvent> tempoEvent(const UMPPacket& packet, std::uint32_t tick) {
    constexpr std::uint32_t setTempo = 0;
    constexpr std::uint32_t tensOfNanosecondsPerMicrosecond = 100;
    if (!isFlexData(packet, setTempo))
        return std::nullopt;
    return tempoMetaEvent(packet.word(1) / tensOfNanosecondsPerMicrosecond, tick);
}

std::optional<TimedMetaEvent> timeSignatureEvent(const UMPPacket& packet, std::uint32_t tick) {
    constexpr std::uint32_t setTimeSignature = 1;
    constexpr std::uint8_t largestDenominatorExponent = 7;
    if (!isFlexData(packet, setTimeSignature))
        return std::nullopt;
    const std::uint32_t word = packet.word(1);
    const auto numerator = static_cast<std::uint8_t>(word >> 24);
    const auto denominatorExponent = static_cast<std::uint8_t>(word >> 16);
    if (numerator == 0 || denominatorExponent > largestDenominatorExponent)
        return std::nullopt;
    return timeSignatureMetaEvent(numerator, denominatorExponent, static_cast<std::uint8_t>(word >> 8), tick);
}

} // namespace tambrel::UMPConversion
