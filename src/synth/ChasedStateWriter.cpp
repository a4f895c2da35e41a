#include "ChasedState.h"

#include <algorithm>

namespace tambrel {
namespace {

// Controllers that are sent in a place of their own, or that mean nothing once they have been.
bool isSentApart(std::size_t controller) {
    using namespace Controller;
    return controller == sustain || controller == sostenuto || controller >= allSoundOff;
}

} // namespace

/// Writes down the messages of one channel.
class ChasedState::Writer {
public:
    Writer(const Channel& channel, std::uint8_t number, std::vector<ChasedMessage>& messages)
        : channel_(channel), number_(number), messages_(messages) {}

    // The notes come before the controllers that would have them glide, and before the pedals take hold.
    void write() {
        control(channel_.omniMode, channel_.omniMode == unset ? unset : 0);
        control(channel_.polyMode, channel_.polyMode == unset ? unset : 0);
        writeRhythmMap();
        writeSettings();
        writeNotesAndPedals();
        for (std::uint8_t controller = 0; controller < valueCount; ++controller) {
            if (!isSentApart(controller))
                control(controller, channel_.controllers[controller]);
        }
        writeParameters();
        if (channel_.bendMSB != unset)
            message(MIDIStatus::pitchBend, channel_.bendLSB, channel_.bendMSB);
        if (channel_.pressure != unset)
            message(MIDIStatus::channelPressure, channel_.pressure, 0);
        for (std::uint8_t key = 0; key < valueCount; ++key) {
            if (channel_.keyPressure[key] != unset)
                message(MIDIStatus::polyphonicPressure, key, channel_.keyPressure[key]);
        }
    }

private:
    void message(std::uint8_t kind, std::uint8_t data1, std::uint8_t data2, std::uint32_t tick = 0) {
        messages_.push_back({{static_cast<std::uint8_t>(kind | number_), data1, data2, 0}, tick});
    }
    void control(std::uint8_t controller, std::uint8_t value) {
        if (value != unset)
            message(MIDIStatus::controlChange, controller, value);
    }
    void select(BankSelect bank) {
        control(Controller::bankSelectMSB, bank.msb);
        control(Controller::bankSelectLSB, bank.lsb);
    }

    void writeRhythmMap() {
        select(channel_.bankBeforeRhythm);
        if (channel_.rhythmMap != unset)
            messages_.push_back(
                {MIDIMessage::system(SystemMessage::rhythmPart, number_, channel_.rhythmMap)});
    }

    void writeSettings() {
        for (std::size_t kind = 0; kind < kindsOfPart; ++kind) {
            if (channel_.ofPart[kind] != unset)
                messages_.push_back({MIDIMessage::system(static_cast<SystemMessage>(firstOfPart + kind),
                                                         number_, channel_.ofPart[kind])});
        }
    }

    void writeNotesAndPedals() {
        using namespace Controller;
        const std::vector<HeldNotes::Sounding> notes = heldNotes();
        writeNotes(notes, true);
        control(sostenuto, channel_.controllers[sostenuto]);
        writeNotes(notes, false);
        choose(channel_.programBank, channel_.program);
        select(channel_.bank);
        control(sustain, channel_.controllers[sustain]);
        for (const HeldNotes::Sounding& sounding : notes) {
            if (sounding.isKeyUp)
                message(MIDIStatus::noteOff, sounding.key, 0);
        }
    }

    // A channel of one voice sounds the latest only.
    [[nodiscard]] std::vector<HeldNotes::Sounding> heldNotes() const {
        std::vector<HeldNotes::Sounding> notes = channel_.notes.sounding();
        if (channel_.polyMode == Controller::monoOn && notes.size() > 1)
            notes.erase(notes.begin(), notes.end() - 1);
        return notes;
    }

    void writeNotes(const std::vector<HeldNotes::Sounding>& notes, bool bySostenuto) {
        for (const HeldNotes::Sounding& sounding : notes) {
            if (sounding.isBySostenuto != bySostenuto)
                continue;
            choose(sounding.note.bank, sounding.note.program);
            message(MIDIStatus::noteOn, sounding.key, sounding.note.velocity, sounding.note.tick);
        }
    }

    // The program, unless it stands already.
    void choose(BankSelect bank, std::uint8_t program) {
        if (program == unset || (program == chosenProgram_ && bank == chosenBank_))
            return;
        select(bank);
        message(MIDIStatus::programChange, program, 0);
        chosenBank_ = bank;
        chosenProgram_ = program;
    }

    void writeParameters() {
        using namespace Controller;
        for (const auto& [parameter, msb, lsb] : channel_.parameters) {
            control(parameter.isRegistered ? registeredMSB : nonRegisteredMSB, parameter.msb);
            control(parameter.isRegistered ? registeredLSB : nonRegisteredLSB, parameter.lsb);
            control(dataEntryLSB, lsb);
            control(dataEntryMSB, msb);
        }
        if (channel_.parameters.empty() && channel_.entry == ParameterEntry{})
            return;
        channel_.entry.restore(
            [this](std::uint8_t controller, std::uint8_t value) { control(controller, value); });
    }

    const Channel& channel_;
    const std::uint8_t number_;
    std::vector<ChasedMessage>& messages_;
    BankSelect chosenBank_;
    std::uint8_t chosenProgram_ = unset;
};

void ChasedState::writeWhole(std::vector<ChasedMessage>& messages) const {
    for (const MIDIMessage message : {reset_, masterVolume_}) {
        if (message.isSystem())
            messages.push_back({message});
    }
    for (const MIDIMessage message : master_) {
        if (message.isSystem())
            messages.push_back({message});
    }
    for (std::uint8_t key = 0; key < valueCount; ++key) {
        for (std::size_t kind = 0; kind < kindsOfKey; ++kind) {
            if (const std::uint8_t value = ofKeys_[kind][key]; value != unset)
                messages.push_back(
                    {MIDIMessage::system(static_cast<SystemMessage>(firstOfKey + kind), key, value)});
        }
    }
}

std::vector<ChasedMessage> ChasedState::messages() const {
    std::vector<ChasedMessage> result;
    writeWhole(result);
    for (std::uint8_t channel = 0; channel < channelCount; ++channel)
        Writer(channels_[channel], channel, result).write();
    return result;
}

} // namespace tambrel
