#include "SongParameters.h"

#include <algorithm>

namespace tambrel {
namespace {

constexpr SongEffect control(std::uint8_t number) {
    return {MIDIStatus::controlChange, number};
}
constexpr SongEffect part(SystemMessage kind) {
    return {MIDIStatus::systemExclusive, static_cast<std::uint8_t>(kind)};
}

// General MIDI 2 and what the GS and XG formats say of their parts. All values are centred on 64 where the
// controller's is. The levels of a part and its controllers are one and the same, as in those formats.
constexpr std::array partTable{
    PartParameter{"bank", 0x00, 0x01, noAddress, control(Controller::bankSelectMSB)},
    PartParameter{"bank, low half", noAddress, 0x02, noAddress, control(Controller::bankSelectLSB)},
    PartParameter{"program", 0x01, 0x03, noAddress, {MIDIStatus::programChange}},
    PartParameter{"part mode", 0x15, 0x07, noAddress, part(SystemMessage::rhythmPart)},
    PartParameter{"key shift", 0x16, 0x08, noAddress, part(SystemMessage::keyShift)},
    PartParameter{"volume", 0x19, 0x0B, noAddress, control(Controller::volume)},
    PartParameter{"pan", 0x1C, 0x0E, noAddress, control(Controller::pan)},
    PartParameter{"chorus send", 0x21, 0x12, noAddress, control(Controller::chorusSend)},
    PartParameter{"reverb send", 0x22, 0x13, noAddress, control(Controller::reverbSend)},
    PartParameter{"vibrato rate", 0x30, 0x15, 0x08, control(Controller::vibratoRate)},
    PartParameter{"vibrato depth", 0x31, 0x16, 0x09, control(Controller::vibratoDepth)},
    PartParameter{"vibrato delay", 0x37, 0x17, 0x0A, control(Controller::vibratoDelay)},
    PartParameter{"cutoff", 0x32, 0x18, 0x20, control(Controller::cutoff)},
    PartParameter{"resonance", 0x33, 0x19, 0x21, control(Controller::resonance)},
    PartParameter{"attack", 0x34, 0x1A, 0x63, control(Controller::attack)},
    PartParameter{"decay", 0x35, 0x1B, 0x64, control(Controller::decay)},
    PartParameter{"release", 0x36, 0x1C, 0x66, control(Controller::release)},
};

constexpr std::array masterTable{
    MasterParameter{"volume", 0x400004, 0x000004, SystemMessage::masterVolume},
    MasterParameter{"key shift", 0x400005, 0x000006, SystemMessage::masterKeyShift},
    MasterParameter{"pan", 0x400006, noAddress, SystemMessage::masterBalance},
    MasterParameter{"reverb type", 0x400130, 0x020100, SystemMessage::reverbType},
    MasterParameter{"chorus type", 0x400138, 0x020120, SystemMessage::chorusType},
};

constexpr std::uint8_t nullParameter = 127;
constexpr std::uint8_t partNRPN = 1; // The high half of the numbers in the table.
constexpr std::uint8_t modulationDepthRange = 5;

} // namespace

MIDIMessage SongEffect::message(std::uint8_t channel, std::uint8_t value) const {
    if (kind == MIDIStatus::systemExclusive)
        return MIDIMessage::system(static_cast<SystemMessage>(number), channel, value);
    const auto status = static_cast<std::uint8_t>(kind | channel);
    return kind == MIDIStatus::programChange ? MIDIMessage{status, value, 0, 0}
                                             : MIDIMessage{status, number, value, 0};
}

std::span<const PartParameter> partParameters() {
    return partTable;
}

std::span<const MasterParameter> masterParameters() {
    return masterTable;
}

MIDIMessage ParameterReader::read(MIDIMessage message) {
    using namespace Controller;
    if (message.isSystem() && message.isReset())
        channels_ = {};
    if (MIDIStatus::kind(message.status) != MIDIStatus::controlChange)
        return message;
    Channel& channel = channels_[MIDIStatus::channel(message.status)];
    switch (message.data1) {
    case nonRegisteredMSB:
        channel.isRegistered = false;
        channel.nonMSB = message.data2;
        channel.nonLSB = 0;
        break;
    case nonRegisteredLSB:
        channel.isRegistered = false;
        channel.nonLSB = message.data2;
        break;
    case registeredMSB:
        channel.isRegistered = true;
        channel.msb = message.data2;
        break;
    case registeredLSB:
        channel.isRegistered = true;
        channel.lsb = message.data2;
        break;
    case resetAllControllers:
        channel.isRegistered = true;
        channel.msb = channel.lsb = channel.nonMSB = nullParameter;
        break;
    case dataEntryMSB:
    case dataEntryLSB:
        return enter(channel, message);
    default:
        break;
    }
    return message;
}

MIDIMessage ParameterReader::enter(Channel& channel, MIDIMessage message) {
    if (channel.isRegistered)
        return channel.msb == 0 && channel.lsb == modulationDepthRange ? enterDepth(channel, message)
                                                                       : message;
    if (channel.nonMSB != partNRPN || message.data1 != Controller::dataEntryMSB)
        return message;
    const auto row = std::ranges::find(partTable, int{channel.nonLSB}, &PartParameter::nrpn);
    return row == partTable.end() ? message
                                  : row->effect.message(MIDIStatus::channel(message.status), message.data2);
}

// Semitones, and parts of 128 of one. What the modulation wheel does by itself is half a semitone.
MIDIMessage ParameterReader::enterDepth(Channel& channel, MIDIMessage message) {
    const bool isHigh = message.data1 == Controller::dataEntryMSB;
    (isHigh ? channel.depthMSB : channel.depthLSB) = message.data2;
    if (isHigh)
        channel.depthLSB = 0;                                     // It comes after, if at all.
    const int halves = channel.depthMSB * 128 + channel.depthLSB; // Parts of 128 of a semitone.
    const int tens = (halves * 10 + 64) / 128;
    return MIDIMessage::system(SystemMessage::modulationDepth, MIDIStatus::channel(message.status),
                               static_cast<std::uint8_t>(std::min(tens, 127)));
}

} // namespace tambrel
