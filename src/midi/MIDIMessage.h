#pragma once

#include "MIDIStatus.h"

#include <cstddef>
#include <cstdint>

namespace tambrel {

/// The system-exclusive messages that change how a General MIDI synthesizer sounds. Like all here, any
/// thread.
enum class SystemMessage : std::uint8_t {
    none,
    gmReset,      ///< Universal: GM System On, also GM2 On and Off.
    gsReset,      ///< Address 40 00 7F.
    xgReset,      ///< XG System On.
    masterVolume, ///< Universal; `data2` and `data3` are the low and high 7 bits.
    rhythmPart,   ///< GS use for rhythm part; `data2` is the channel, `data3` the drum map or 0 for none.
    // Of the whole instrument except its drums.
    masterTuning,   ///< `data2` and `data3` as above: 0 a semitone down, 8192 none, 16383 one up.
    masterKeyShift, ///< `data3` in semitones; 64 is none.
    masterBalance,  ///< `data3`: 0 is left, 64 the middle, 127 right.
    reverbType,     ///< `data3` is a kind of reverb in the order of GS, 8 being off.
    chorusType,     ///< `data3` is a kind of chorus in the order of GS, 8 being off.
    // Of a key in all channels; always sent as a pair, in this order.
    keyTuning,         ///< The key `data2` sounds at the semitone `data3`,
    keyTuningFraction, ///< and `data3` parts of 128 above.
    // Of the drum with the key `data2` in the first drum setup; `data3` is the value.
    drumPitch,                       ///< Semitones; 64 is none.
    drumLevel,                       ///< 127 is as the sound bank has it.
    drumPan,                         ///< 1 is left, 64 the middle, 127 right; 0 as the sound bank has it.
    drumReverb,                      ///< Parts of 127 of what the channel sends.
    drumChorus,                      ///< The same.
    secondDrumPitch,                 ///< The same five of the second setup.
    lastDrumSetting = drumPitch + 9, ///< The second setup's chorus.
    // Of the channel `data2`; `data3` is the value.
    receiveChannel,  ///< The channel that this part, `data2`, receives from now on; 16 is none.
    bendRange,       ///< Semitones.
    keyShift,        ///< Semitones; 64 is none.
    modulationDepth, ///< Depth of the full modulation wheel, in tens of cents.
    scaleTuning,     ///< Cents of every C, 64 being none; the kinds that follow are of C#, D, up to B.
    lastScaleTuning = scaleTuning + 11,
};

/// One MIDI 1.0 message in four bytes: a channel message as it is sent, or a system-exclusive message reduced
/// to its kind, in `data1`, and its values.
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
    /// Of a system message.
    [[nodiscard]] constexpr bool isReset() const {
        return systemKind() >= SystemMessage::gmReset && systemKind() <= SystemMessage::xgReset;
    }
};

/// Controllers of MIDI 1.0 that the player treats by name.
namespace Controller {

inline constexpr std::uint8_t bankSelectMSB = 0;
inline constexpr std::uint8_t modulation = 1;
inline constexpr std::uint8_t dataEntryMSB = 6;
inline constexpr std::uint8_t volume = 7;
inline constexpr std::uint8_t pan = 10;
inline constexpr std::uint8_t bankSelectLSB = 32;
inline constexpr std::uint8_t dataEntryLSB = 38;
inline constexpr std::uint8_t sustain = 64;
inline constexpr std::uint8_t sostenuto = 66;
inline constexpr std::uint8_t softPedal = 67;
// The sound controllers, centred on 64.
inline constexpr std::uint8_t resonance = 71;
inline constexpr std::uint8_t release = 72;
inline constexpr std::uint8_t attack = 73;
inline constexpr std::uint8_t cutoff = 74;
inline constexpr std::uint8_t decay = 75;
inline constexpr std::uint8_t vibratoRate = 76;
inline constexpr std::uint8_t vibratoDepth = 77;
inline constexpr std::uint8_t vibratoDelay = 78;
inline constexpr std::uint8_t portamentoControl = 84; // The key that the next note glides from.
inline constexpr std::uint8_t reverbSend = 91;
inline constexpr std::uint8_t chorusSend = 93;
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
