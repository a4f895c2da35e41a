#pragma once

#include "MIDIMessage.h"
#include "ParameterEntry.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace tambrel {

/// What a message of a song comes down to: a controller, a program change, or a system message of a part or
/// of the whole instrument. All here is for one thread at a time.
struct SongEffect {
    std::uint8_t kind; ///< A status: control change, program change or system exclusive.
    std::uint8_t number = 0;

    /// `channel` is left out of the messages for the whole instrument.
    [[nodiscard]] MIDIMessage message(std::uint8_t channel, std::uint8_t value) const;
    bool operator==(const SongEffect&) const = default;
};

inline constexpr int noAddress = -1;

/// A parameter of one part, by all the ways in which songs set it.
struct PartParameter {
    const char* name;
    int gs;   ///< The last byte of the address 40 1p xx, or of 40 2p xx, and then 0x80 more.
    int xg;   ///< The last byte of the address 08 pp xx.
    int nrpn; ///< The low half of the non-registered number; the high half is 1.
    SongEffect effect;
};
[[nodiscard]] std::span<const PartParameter> partParameters();

/// A parameter of the whole instrument. An address is three bytes of seven bits, written as one number.
struct MasterParameter {
    const char* name;
    int gs;
    int xg;
    SystemMessage effect;
};
[[nodiscard]] std::span<const MasterParameter> masterParameters();

/// A parameter of a single drum. There are two drum setups, and each drum part uses one.
struct DrumParameter {
    const char* name;
    int gs;               ///< The low half of the middle byte of the address 41 mx rr: setup, key.
    int xg;               ///< The last byte of the address 3m rr xx.
    int nrpn;             ///< The high half of the non-registered number; the low half is the key.
    SystemMessage effect; ///< In the first setup.

    [[nodiscard]] MIDIMessage message(bool isSecond, std::uint8_t key, std::uint8_t value) const;
};
[[nodiscard]] std::span<const DrumParameter> drumParameters();

/// Kinds of reverb and chorus, in the order of GS; `off` is beyond.
enum class EffectType : std::uint8_t { off = 8 };
inline constexpr std::size_t effectTypes = 9;

/// Turns the controllers that set a parameter into what that comes down to. One object a song, which is told
/// every message but the notes, in order.
class ParameterReader {
public:
    [[nodiscard]] MIDIMessage read(MIDIMessage message);

private:
    enum class DrumSetup : std::uint8_t { none, first, second };

    void readSystem(MIDIMessage message);
    [[nodiscard]] std::optional<MIDIMessage> effectOf(std::uint8_t channel,
                                                      const ParameterValue& value) const;
    [[nodiscard]] std::optional<MIDIMessage> drumEffectOf(std::uint8_t channel,
                                                          const ParameterValue& value) const;

    bool isXG_ = false;
    std::array<ParameterEntry, 16> entries_; // By channel.
    std::array<DrumSetup, 16> drumSetups_ = usualDrumSetups();

    static constexpr std::array<DrumSetup, 16> usualDrumSetups() {
        constexpr std::size_t drumChannel = 9;
        std::array<DrumSetup, 16> setups{};
        setups[drumChannel] = DrumSetup::first;
        return setups;
    }
};

} // namespace tambrel
