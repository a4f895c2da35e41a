#include "ChasedState.h"

#include <algorithm>
#include <utility>

namespace tambrel {
namespace {

constexpr std::uint8_t bendRange = 0; // Registered parameters.
constexpr std::uint8_t coarseTuning = 2;
constexpr std::uint8_t nullParameter = 127;

// SoundFont 2.01, 9.6: the high half of a non-registered number that selects generators. Low halves below 100
// add up to the generator, those from 100 to 102 add that many hundreds, thousands and so on. A high half and
// an entry of data start the sum anew.
constexpr std::uint8_t generatorMSB = 120;
constexpr std::uint8_t hundred = 100;
constexpr std::uint8_t noGenerator = 63; // Stands for every sum that is too large.

constexpr std::uint8_t addedBy(std::uint8_t lsb) {
    if (lsb < hundred)
        return std::min(lsb, noGenerator);
    return lsb <= hundred + 2 ? noGenerator : 0;
}

// Reset All Controllers spares bank, volume, pan, balance, the sound controllers and the effect depths
// (RP-015, and what the synthesizer does).
bool survivesReset(std::size_t controller) {
    constexpr std::array<std::uint8_t, 8> spared{0, 7, 8, 10, 32, 39, 40, 42};
    return std::ranges::find(spared, controller) != spared.end() || (controller >= 70 && controller <= 79) ||
           (controller >= 91 && controller <= 95);
}

// Controllers that are sent in a place of their own, or that mean nothing once they have been.
bool isSentApart(std::size_t controller) {
    using namespace Controller;
    return controller == dataEntryMSB || controller == dataEntryLSB || controller == sustain ||
           controller == sostenuto || (controller >= nonRegisteredLSB && controller <= registeredMSB) ||
           controller >= allSoundOff;
}

} // namespace

void ChasedState::apply(MIDIMessage message, std::uint32_t tick) {
    if (message.isSystem()) {
        applySystem(message);
        return;
    }
    Channel& channel = channels_[MIDIStatus::channel(message.status)];
    switch (MIDIStatus::kind(message.status)) {
    case MIDIStatus::noteOff:
    case MIDIStatus::noteOn:
        applyNote(message, tick);
        break;
    case MIDIStatus::controlChange:
        applyController(channel, message.data1 & 0x7F, message.data2);
        break;
    case MIDIStatus::programChange:
        channel.program = message.data1;
        channel.programBank = channel.bank;
        break;
    case MIDIStatus::pitchBend:
        channel.bendLSB = message.data1;
        channel.bendMSB = message.data2;
        break;
    case MIDIStatus::channelPressure:
        channel.pressure = message.data1;
        break;
    case MIDIStatus::polyphonicPressure:
        channel.keyPressure[message.data1 & 0x7F] = message.data2;
        break;
    default:
        break;
    }
}

void ChasedState::applySystem(MIDIMessage message) {
    switch (message.systemKind()) {
    case SystemMessage::gmReset:
    case SystemMessage::gsReset:
    case SystemMessage::xgReset:
        reset();
        reset_ = message;
        break;
    case SystemMessage::masterVolume:
        masterVolume_ = message;
        break;
    case SystemMessage::rhythmPart:
        setRhythmMap(channels_[message.data2 & 0x0F], message.data3);
        break;
    case SystemMessage::none:
        break;
    }
}

// Puts fresh values in place: there are songs that send resets by the thousand.
void ChasedState::reset() {
    masterVolume_ = {};
    for (Channel& channel : channels_) {
        static_cast<ChannelSettings&>(channel) = {};
        channel.controllers = channel.keyPressure = unsetValues();
        channel.parameters.clear();
        channel.notes = {};
    }
}

// The part starts anew with its first program.
void ChasedState::setRhythmMap(Channel& channel, std::uint8_t map) {
    channel.rhythmMap = map;
    channel.program = unset;
    channel.notes.silence(); // They sound in a kit, or the kit does not know them.
    const BankSelect bank = std::exchange(channel.bank, {});
    if (bank.msb != unset)
        channel.bankBeforeRhythm.msb = bank.msb;
    if (bank.lsb != unset)
        channel.bankBeforeRhythm.lsb = bank.lsb;
}

void ChasedState::applyController(Channel& channel, std::uint8_t number, std::uint8_t value) {
    using namespace Controller;
    switch (number) {
    case bankSelectMSB:
        channel.bank.msb = value;
        return;
    case bankSelectLSB:
        channel.bank.lsb = value;
        return;
    case sustain:
        channel.notes.setSustain(isPedalDown(value));
        break;
    case sostenuto:
        channel.notes.setSostenuto(isPedalDown(value));
        break;
    case resetAllControllers:
        resetControllers(channel);
        return;
    case allSoundOff:
        channel.notes.silence();
        return;
    case allNotesOff:
        channel.notes.releaseKeys();
        return;
    case omniOff:
    case omniOn:
        channel.notes.silence(); // What a pedal may keep of them is left out.
        channel.omniMode = number;
        return;
    case monoOn:
    case polyOn:
        channel.notes.silence();
        channel.polyMode = number;
        return;
    case dataEntryMSB:
        enterData(channel, value);
        break;
    case nonRegisteredMSB:
        channel.registeredIsSelected = false;
        channel.selectedGenerator = 0;
        channel.controllers[nonRegisteredLSB] = 0;
        break;
    case nonRegisteredLSB:
        channel.registeredIsSelected = false;
        selectGenerator(channel, value);
        break;
    case registeredLSB:
    case registeredMSB:
        channel.registeredIsSelected = true;
        break;
    default:
        break;
    }
    channel.controllers[number] = value;
}

void ChasedState::resetControllers(Channel& channel) {
    for (std::size_t controller = 0; controller < valueCount; ++controller) {
        if (!survivesReset(controller))
            channel.controllers[controller] = unset;
    }
    channel.keyPressure = unsetValues();
    channel.notes.setSustain(false);
    channel.notes.setSostenuto(false);
    channel.bendLSB = channel.bendMSB = channel.pressure = unset;
    channel.registeredIsSelected = true;
    // The range of the bend stays; tuning and the non-registered parameters go.
    std::erase_if(channel.parameters, [](const Parameter& parameter) {
        return !parameter.isRegistered || parameter.number != bendRange;
    });
}

void ChasedState::selectGenerator(Channel& channel, std::uint8_t value) {
    if (channel.controllers[Controller::nonRegisteredMSB] != generatorMSB)
        return;
    const int sum = channel.selectedGenerator + addedBy(value);
    channel.selectedGenerator = static_cast<std::uint8_t>(std::min<int>(sum, noGenerator));
}

void ChasedState::enterData(Channel& channel, std::uint8_t value) {
    using namespace Controller;
    const bool registered = channel.registeredIsSelected;
    std::uint8_t number = channel.controllers[registeredLSB];
    if (registered) {
        if (channel.controllers[registeredMSB] != 0 || number > coarseTuning)
            return;
    } else {
        if (channel.controllers[nonRegisteredMSB] != generatorMSB ||
            channel.controllers[nonRegisteredLSB] >= hundred)
            return;
        number = std::exchange(channel.selectedGenerator, std::uint8_t{0});
        if (number == noGenerator)
            return;
    }
    std::erase_if(channel.parameters, [&](const Parameter& parameter) {
        return parameter.isRegistered == registered && parameter.number == number;
    });
    channel.parameters.push_back({registered, number, value, orZero(channel.controllers[dataEntryLSB])});
}

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
        writeNotesAndPedals();
        for (std::uint8_t controller = 0; controller < valueCount; ++controller) {
            if (!isSentApart(controller))
                control(controller, channel_.controllers[controller]);
        }
        writeParameters();
        writeSelections();
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
        for (const Parameter& parameter : channel_.parameters) {
            control(parameter.isRegistered ? registeredMSB : nonRegisteredMSB,
                    parameter.isRegistered ? 0 : generatorMSB);
            control(parameter.isRegistered ? registeredLSB : nonRegisteredLSB, parameter.number);
            control(dataEntryLSB, parameter.valueLSB);
            control(dataEntryMSB, parameter.valueMSB);
        }
        // The bare data entry values, with nothing selected that they could change.
        if (channel_.parameters.empty() && channel_.controllers[dataEntryMSB] == unset &&
            channel_.controllers[dataEntryLSB] == unset)
            return;
        control(registeredMSB, nullParameter);
        control(registeredLSB, nullParameter);
        control(dataEntryLSB, orZero(channel_.controllers[dataEntryLSB]));
        control(dataEntryMSB, orZero(channel_.controllers[dataEntryMSB]));
    }

    // The one in force last.
    void writeSelections() {
        if (channel_.registeredIsSelected)
            selectNonRegistered();
        control(Controller::registeredMSB, channel_.controllers[Controller::registeredMSB]);
        control(Controller::registeredLSB, channel_.controllers[Controller::registeredLSB]);
        if (!channel_.registeredIsSelected)
            selectNonRegistered();
    }

    void selectNonRegistered() {
        using namespace Controller;
        const std::uint8_t msb = channel_.controllers[nonRegisteredMSB];
        const std::uint8_t lsb = channel_.controllers[nonRegisteredLSB];
        control(nonRegisteredMSB, msb);
        if (msb != generatorMSB) {
            control(nonRegisteredLSB, lsb);
            return;
        }
        // A low half that no longer counts, since data has been entered, is given a sum that is too large for
        // it to do anything, and data again.
        const int before = channel_.selectedGenerator - addedBy(lsb);
        const bool isSpent = before < 0;
        if (isSpent || channel_.selectedGenerator == noGenerator)
            control(nonRegisteredLSB, hundred);
        else if (before > 0)
            control(nonRegisteredLSB, static_cast<std::uint8_t>(before));
        control(nonRegisteredLSB, lsb);
        if (isSpent)
            control(dataEntryMSB, orZero(channel_.controllers[dataEntryMSB]));
    }

    const Channel& channel_;
    const std::uint8_t number_;
    std::vector<ChasedMessage>& messages_;
    BankSelect chosenBank_;
    std::uint8_t chosenProgram_ = unset;
};

std::vector<ChasedMessage> ChasedState::messages() const {
    std::vector<ChasedMessage> result;
    if (reset_.isSystem())
        result.push_back({reset_});
    if (masterVolume_.isSystem())
        result.push_back({masterVolume_});
    for (std::uint8_t channel = 0; channel < channelCount; ++channel)
        Writer(channels_[channel], channel, result).write();
    return result;
}

} // namespace tambrel
