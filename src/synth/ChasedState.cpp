#include "ChasedState.h"

#include <algorithm>
#include <utility>

namespace tambrel {
namespace {

constexpr ChannelParameter bendRange{.isRegistered = true, .msb = 0, .lsb = 0};

// What the synthesizer acts on: the range of the bend, fine and coarse tuning, and generators.
bool hasEffect(const ChannelParameter& parameter) {
    constexpr std::uint8_t coarseTuning = 2, generatorCount = 63;
    return parameter.isRegistered ? parameter.msb == 0 && parameter.lsb <= coarseTuning
                                  : parameter.isGenerator() && parameter.lsb < generatorCount;
}

// Reset All Controllers spares bank, volume, pan, balance, the sound controllers and the effect depths
// (RP-015, and what the synthesizer does).
bool survivesReset(std::size_t controller) {
    constexpr std::array<std::uint8_t, 8> spared{0, 7, 8, 10, 32, 39, 40, 42};
    return std::ranges::find(spared, controller) != spared.end() || (controller >= 70 && controller <= 79) ||
           (controller >= 91 && controller <= 95);
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
    default:
        applySetting(message);
        break;
    }
}

void ChasedState::applySetting(MIDIMessage message) {
    const auto kind = static_cast<std::size_t>(message.systemKind());
    if (kind >= firstOfPart && kind < firstOfPart + kindsOfPart)
        channels_[message.data2 & 0x0F].ofPart[kind - firstOfPart] = message.data3;
    else if (kind >= firstMaster && kind < firstMaster + masterKinds)
        master_[kind - firstMaster] = message;
    else if (kind >= firstOfKey && kind < firstOfKey + kindsOfKey)
        ofKeys_[kind - firstOfKey][message.data2 & 0x7F] = message.data3;
    else if (message.systemKind() == SystemMessage::bendRange)
        setParameter(channels_[message.data2 & 0x0F], {bendRange, message.data3, 0});
}

// Puts fresh values in place: there are songs that send resets by the thousand.
void ChasedState::reset() {
    masterVolume_ = {};
    master_ = {};
    ofKeys_ = unsetValuesOfKeys();
    for (Channel& channel : channels_) {
        static_cast<ChannelSettings&>(channel) = {};
        channel.controllers = channel.keyPressure = unsetValues();
        channel.ofPart = unsetArray<kindsOfPart>();
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
    if (ParameterEntry::takes(number)) {
        if (const auto entered = channel.entry.apply(number, value))
            setParameter(channel, *entered);
        return;
    }
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
    channel.entry = {};
    // The range of the bend stays; tuning and the non-registered parameters go.
    std::erase_if(channel.parameters,
                  [](const ParameterValue& value) { return value.parameter != bendRange; });
}

void ChasedState::setParameter(Channel& channel, const ParameterValue& entered) {
    if (!hasEffect(entered.parameter))
        return;
    std::erase_if(channel.parameters,
                  [&](const ParameterValue& value) { return value.parameter == entered.parameter; });
    channel.parameters.push_back(entered);
}

} // namespace tambrel
