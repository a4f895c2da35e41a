#pragma once

#include "MIDIStatus.h"

#include <cstddef>
#include <cstdint>

namespace tambrel {

/// The system-exclusive messages that change what a General MIDI synthesizer sounds like.
enum class SystemMessage : std::uint8_t {
    none,
    gmReset,      ///< Universal: GM System On, also GM2 On and Off.
    gsReset,      ///< Address 40 00 7F.
    xgReset,      ///< XG System On.
    masterVolume, ///< Universal; `data2` and `data3` are the low and high 7 bits.
    rhythmPart,   ///< GS use for rhythm part; `data2` is the channel, `data3` the drum map or 0 for none.
};

/// One message of MIDI 1.0 in four bytes: a channel message as it is sent, or what a system-exclusive message
/// comes down to, with its kind in `data1`.
struct MIDIMessage {
    std::uint8_t status = 0;
    std::uint8_t data1 = 0;
    std::uint8_t data2 = 0;
    std::uint8_t data3 = 0;

    bool operator==(const MIDIMessage&) const = default;

    /// Bytes of a channel message, its status included: 2 or 3.
    [[nodiscard]] constexpr std::size_t size() const { return 1 + MIDIStatus::dataLength(status); }

    [[nodiscard]] static constexpr MIDIMessage system(SystemMessage kind, std::uint8_t data2 = 0,
                                                      std::uint8_t data3 = 0) {
        return {MIDIStatus::systemExclusive, static_cast<std::uint8_t>(kind), data2, data3};
    }
    [[nodiscard]] constexpr bool isSystem() const { return status == MIDIStatus::systemExclusive; }
    [[nodiscard]] constexpr SystemMessage systemKind() const { return static_cast<SystemMessage>(data1); }
};

/// Controllers of MIDI 1.0 that the player treats by name.
namespace Controller {

inline constexpr std::uint8_t bankSelectMSB = 0;
inline constexpr std::uint8_t dataEntryMSB = 6;
inline constexpr std::uint8_t bankSelectLSB = 32;
inline constexpr std::uint8_t dataEntryLSB = 38;
inline constexpr std::uint8_t sustain = 64;
inline constexpr std::uint8_t sostenuto = 66;
inline constexpr std::uint8_t portamentoControl = 84; // The key that the next note glides from.
inline constexpr std::uint8_t nonRegisteredLSB = 98;
inline constexpr std::uint8_t nonRegisteredMSB = 99;
inline constexpr std::uint8_t registeredLSB = 100;
inline constexpr std::uint8_t registeredMSB = 101;
inline constexpr std::uint8_t allSoundOff = 120;
inline constexpr std::uint8_t resetAllControllers = 121;
inline constexpr std::uint8_t allNotesOff = 123;
inline constexpr std::uint8_t omniOff = 124;
inline constexpr std::uint8_t omniOn = 125;
inline constexpr std::uint8_t monoOn = 126;
inline constexpr std::uint8_t polyOn = 127;

/// What a pedal's value means.
constexpr bool isPedalDown(std::uint8_t value) {
    return value >= 64;
}

} // namespace Controller
} // namespace tambrel
