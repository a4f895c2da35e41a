#include "ChasedState.h"

#include <algorithm>

namespace tambrel {
namespace {

constexpr std::uint8_t nullParameter = 127;

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
    return controller == bankSelectMSB || controller == bankSelectLSB || controller == dataEntryMSB ||
           controller == dataEntryLSB || (controller >= dataIncrement && controller <= registeredMSB) ||
           controller >= allSoundOff;
}

} // namespace

void ChasedState::apply(MIDIMessage message) {
    if (message.isSystem()) {
        applySystem(message);
        return;
    }
    Channel& channel = channels_[MIDIStatus::channel(message.status)];
    switch (MIDIStatus::kind(message.status)) {
    case MIDIStatus::controlChange:
        applyController(channel, message.data1 & 0x7F, message.data2);
        break;
    case MIDIStatus::programChange:
        channel.program = message.data1;
        channel.programBankMSB = channel.controllers[Controller::bankSelectMSB];
        channel.programBankLSB = channel.controllers[Controller::bankSelectLSB];
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
        rhythmMaps_[message.data2 & 0x0F] = message.data3;
        channels_[message.data2 & 0x0F].program = unset; // The part starts anew with its first program.
        break;
    case SystemMessage::none:
        break;
    }
}

// Copies fresh values into place: there are songs that send resets by the thousand.
void ChasedState::reset() {
    masterVolume_ = {};
    rhythmMaps_ = unsetValues<channelCount>();
    for (Channel& channel : channels_) {
        static_cast<ChannelSettings&>(channel) = {};
        channel.controllers = channel.keyPressure = unsetValues();
        channel.parameters.clear();
    }
}

void ChasedState::applyController(Channel& channel, std::uint8_t number, std::uint8_t value) {
    using namespace Controller;
    switch (number) {
    case resetAllControllers:
        resetControllers(channel);
        return;
    case omniOff:
    case omniOn:
        channel.omniMode = number;
        return;
    case monoOn:
    case polyOn:
        channel.polyMode = number;
        channel.monoVoices = value;
        return;
    case dataEntryMSB:
        enterData(channel, value);
        break;
    case nonRegisteredLSB:
    case nonRegisteredMSB:
        channel.registeredIsSelected = false;
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
    channel.bendLSB = channel.bendMSB = channel.pressure = unset;
    channel.registeredIsSelected = true;
    // The range of the bend stays; tuning and the non-registered parameters go.
    std::erase_if(channel.parameters, [](const Parameter& parameter) {
        return !parameter.isRegistered || parameter.numberMSB != 0 || parameter.numberLSB != 0;
    });
}

void ChasedState::enterData(Channel& channel, std::uint8_t value) {
    using namespace Controller;
    const auto orNull = [](std::uint8_t number) { return number == unset ? nullParameter : number; };
    const bool registered = channel.registeredIsSelected;
    const auto msb = orNull(channel.controllers[registered ? registeredMSB : nonRegisteredMSB]);
    const auto lsb = orNull(channel.controllers[registered ? registeredLSB : nonRegisteredLSB]);
    if (msb == nullParameter && lsb == nullParameter)
        return;
    std::erase_if(channel.parameters, [&](const Parameter& parameter) {
        return parameter.isRegistered == registered && parameter.numberMSB == msb &&
               parameter.numberLSB == lsb;
    });
    const std::uint8_t low = channel.controllers[dataEntryLSB];
    channel.parameters.push_back({registered, msb, lsb, value, low == unset ? std::uint8_t{0} : low});
}

std::vector<MIDIMessage> ChasedState::messages() const {
    std::vector<MIDIMessage> result;
    if (reset_.isSystem())
        result.push_back(reset_);
    for (std::uint8_t channel = 0; channel < channelCount; ++channel) {
        if (rhythmMaps_[channel] != unset)
            result.push_back(MIDIMessage::system(SystemMessage::rhythmPart, channel, rhythmMaps_[channel]));
    }
    if (masterVolume_.isSystem())
        result.push_back(masterVolume_);
    for (std::uint8_t channel = 0; channel < channelCount; ++channel)
        appendChannel(channels_[channel], channel, result);
    return result;
}

void ChasedState::appendChannel(const Channel& channel, std::uint8_t number,
                                std::vector<MIDIMessage>& messages) {
    const auto status = [number](std::uint8_t kind) { return static_cast<std::uint8_t>(kind | number); };
    const auto control = [&](std::uint8_t controller, std::uint8_t value) {
        if (value != unset)
            messages.push_back({status(MIDIStatus::controlChange), controller, value, 0});
    };

    if (channel.omniMode != unset)
        control(channel.omniMode, 0);
    if (channel.polyMode != unset)
        control(channel.polyMode, channel.monoVoices);
    if (channel.program != unset) {
        control(Controller::bankSelectMSB, channel.programBankMSB);
        control(Controller::bankSelectLSB, channel.programBankLSB);
        messages.push_back({status(MIDIStatus::programChange), channel.program, 0, 0});
    }
    control(Controller::bankSelectMSB, channel.controllers[Controller::bankSelectMSB]);
    control(Controller::bankSelectLSB, channel.controllers[Controller::bankSelectLSB]);
    for (std::uint8_t controller = 0; controller < valueCount; ++controller) {
        if (!isSentApart(controller))
            control(controller, channel.controllers[controller]);
    }
    appendParameters(channel, status(MIDIStatus::controlChange), messages);
    if (channel.bendMSB != unset)
        messages.push_back({status(MIDIStatus::pitchBend), channel.bendLSB, channel.bendMSB, 0});
    if (channel.pressure != unset)
        messages.push_back({status(MIDIStatus::channelPressure), channel.pressure, 0, 0});
    for (std::uint8_t key = 0; key < valueCount; ++key) {
        if (channel.keyPressure[key] != unset)
            messages.push_back({status(MIDIStatus::polyphonicPressure), key, channel.keyPressure[key], 0});
    }
}

void ChasedState::appendParameters(const Channel& channel, std::uint8_t status,
                                   std::vector<MIDIMessage>& messages) {
    using namespace Controller;
    const auto control = [&](std::uint8_t controller, std::uint8_t value) {
        if (value != unset)
            messages.push_back({status, controller, value, 0});
    };
    for (const Parameter& parameter : channel.parameters) {
        control(parameter.isRegistered ? registeredMSB : nonRegisteredMSB, parameter.numberMSB);
        control(parameter.isRegistered ? registeredLSB : nonRegisteredLSB, parameter.numberLSB);
        control(dataEntryLSB, parameter.valueLSB);
        control(dataEntryMSB, parameter.valueMSB);
    }
    // The bare data entry values, with nothing selected that they could change; then the selection itself,
    // the one in force last.
    if (!channel.parameters.empty() || channel.controllers[dataEntryMSB] != unset ||
        channel.controllers[dataEntryLSB] != unset) {
        control(registeredMSB, nullParameter);
        control(registeredLSB, nullParameter);
        const auto orZero = [](std::uint8_t value) { return value == unset ? std::uint8_t{0} : value; };
        control(dataEntryLSB, orZero(channel.controllers[dataEntryLSB]));
        control(dataEntryMSB, orZero(channel.controllers[dataEntryMSB]));
    }
    const auto selectNonRegistered = [&] {
        control(nonRegisteredMSB, channel.controllers[nonRegisteredMSB]);
        control(nonRegisteredLSB, channel.controllers[nonRegisteredLSB]);
    };
    const auto selectRegistered = [&] {
        control(registeredMSB, channel.controllers[registeredMSB]);
        control(registeredLSB, channel.controllers[registeredLSB]);
    };
    if (channel.registeredIsSelected) {
        selectNonRegistered();
        selectRegistered();
    } else {
        selectRegistered();
        selectNonRegistered();
    }
}

} // namespace tambrel
