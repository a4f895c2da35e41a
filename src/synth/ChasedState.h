#pragma once

#include "MIDIMessage.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tambrel {

/// What the messages up to some point of a song have left in a synthesizer that began freshly reset:
/// everything but the notes. Sent to a freshly reset synthesizer, `messages` brings it to the same
/// controllers, programs, pitch bend and its range, parameters and pressures as playing up to that point.
class ChasedState {
public:
    /// Takes in the next message of the song. Notes are ignored.
    void apply(MIDIMessage message);

    /// The messages that bring a reset synthesizer to this state.
    [[nodiscard]] std::vector<MIDIMessage> messages() const;

private:
    static constexpr std::uint8_t unset = 0xFF;
    static constexpr std::size_t channelCount = 16;
    static constexpr std::size_t valueCount = 128;
    using Values = std::array<std::uint8_t, valueCount>;

    static constexpr Values unsetValues() {
        Values values{};
        values.fill(unset);
        return values;
    }

    static constexpr std::uint8_t orZero(std::uint8_t value) { return value == unset ? 0 : value; }

    struct BankSelect {
        std::uint8_t msb = unset;
        std::uint8_t lsb = unset;
    };

    /// A parameter that the synthesizer acts on and that was given a value: a registered one (bend range,
    /// fine or coarse tuning) or a generator by way of the non-registered ones.
    struct Parameter {
        bool isRegistered;
        std::uint8_t number;
        std::uint8_t valueMSB, valueLSB; // The low half is the one that stood when the high half came.
    };

    struct ChannelSettings {
        std::uint8_t rhythmMap = unset;
        BankSelect bankBeforeRhythm; // Came before the rhythm map, which starts the part anew.
        BankSelect bank;
        BankSelect programBank; // In force when the program came.
        std::uint8_t program = unset;
        std::uint8_t bendLSB = unset;
        std::uint8_t bendMSB = unset;
        std::uint8_t pressure = unset;
        std::uint8_t omniMode = unset; // Controller 124 or 125.
        std::uint8_t polyMode = unset; // Controller 126 or 127.
        bool registeredIsSelected = true;
        std::uint8_t selectedGenerator = 0;
    };
    struct Channel : ChannelSettings {
        Values controllers = unsetValues(); // Without the bank select.
        Values keyPressure = unsetValues();
        std::vector<Parameter> parameters; // In the order of their latest values.
    };

    void applySystem(MIDIMessage message);
    void reset();
    static void setRhythmMap(Channel& channel, std::uint8_t map);
    static void applyController(Channel& channel, std::uint8_t number, std::uint8_t value);
    static void resetControllers(Channel& channel);
    static void selectGenerator(Channel& channel, std::uint8_t value);
    static void enterData(Channel& channel, std::uint8_t value);
    class Writer;

    MIDIMessage reset_;
    MIDIMessage masterVolume_;
    std::array<Channel, channelCount> channels_;
};

} // namespace tambrel
