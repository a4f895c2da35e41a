#pragma once

#include "HeldNotes.h"
#include "MIDIMessage.h"
#include "ParameterEntry.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tambrel {

/// One message of a chased state. A note on stands for a note that has been sounding since `tick`.
struct ChasedMessage {
    MIDIMessage message;
    std::uint32_t tick = 0;

    [[nodiscard]] bool isNote() const { return MIDIStatus::kind(message.status) == MIDIStatus::noteOn; }
    bool operator==(const ChasedMessage&) const = default;
};

/// What the messages up to some point of a song have left in a synthesizer that began freshly reset. Sent to
/// a freshly reset synthesizer, `messages` brings it to the same controllers, programs, pitch bend and its
/// range, parameters and pressures as playing up to that point, with the notes that are held there. One
/// thread at a time.
class ChasedState {
public:
    /// Takes in the next message of the song, which comes at `tick`.
    void apply(MIDIMessage message, std::uint32_t tick = 0);
    /// The same for a note on or off, which most messages are.
    void applyNote(MIDIMessage message, std::uint32_t tick) {
        Channel& channel = channels_[MIDIStatus::channel(message.status)];
        const bool isOn = MIDIStatus::kind(message.status) == MIDIStatus::noteOn;
        const std::uint8_t velocity = isOn ? message.data2 : std::uint8_t{0};
        channel.notes.play(message.data1 & 0x7F, {tick, velocity, channel.program, channel.programBank});
        if (velocity > 0) // The note has glided from the key that was named for it.
            channel.controllers[Controller::portamentoControl] = unset;
    }

    /// The messages that bring a reset synthesizer to this state.
    [[nodiscard]] std::vector<ChasedMessage> messages() const;

private:
    static constexpr std::uint8_t unset = unsetValue;
    static constexpr std::size_t channelCount = 16;
    static constexpr std::size_t valueCount = 128;
    using Values = std::array<std::uint8_t, valueCount>;

    template<std::size_t Size>
    static constexpr std::array<std::uint8_t, Size> unsetArray() {
        std::array<std::uint8_t, Size> values{};
        values.fill(unset);
        return values;
    }
    static constexpr Values unsetValues() { return unsetArray<valueCount>(); }

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
        ParameterEntry entry;
    };
    static constexpr auto firstOfPart = static_cast<std::size_t>(SystemMessage::keyShift);
    static constexpr auto kindsOfPart =
        static_cast<std::size_t>(SystemMessage::lastScaleTuning) + 1 - firstOfPart;
    static constexpr auto firstMaster = static_cast<std::size_t>(SystemMessage::masterTuning);
    static constexpr auto firstOfKey = static_cast<std::size_t>(SystemMessage::keyTuning);
    static constexpr auto masterKinds = firstOfKey - firstMaster;
    static constexpr auto kindsOfKey =
        static_cast<std::size_t>(SystemMessage::lastDrumSetting) + 1 - firstOfKey;
    using ValuesOfKeys = std::array<Values, kindsOfKey>;

    static constexpr ValuesOfKeys unsetValuesOfKeys() {
        ValuesOfKeys values{};
        values.fill(unsetValues());
        return values;
    }

    struct Channel : ChannelSettings {
        std::array<std::uint8_t, kindsOfPart> ofPart = unsetArray<kindsOfPart>(); // System messages.
        Values controllers = unsetValues(); // Without bank select and parameters.
        Values keyPressure = unsetValues();
        std::vector<ParameterValue> parameters; // In the order of their latest values.
        HeldNotes notes;
    };

    void applySystem(MIDIMessage message);
    void applySetting(MIDIMessage message);
    void writeWhole(std::vector<ChasedMessage>& messages) const;
    void reset();
    static void setRhythmMap(Channel& channel, std::uint8_t map);
    static void applyController(Channel& channel, std::uint8_t number, std::uint8_t value);
    static void resetControllers(Channel& channel);
    static void setParameter(Channel& channel, const ParameterValue& entered);
    class Writer;

    MIDIMessage reset_;
    MIDIMessage masterVolume_;
    std::array<MIDIMessage, masterKinds> master_;
    ValuesOfKeys ofKeys_ = unsetValuesOfKeys();
    std::array<Channel, channelCount> channels_;
};

} // namespace tambrel
