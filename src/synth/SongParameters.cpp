#include "SongParameters.h"

#include <algorithm>
#include <optional>

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

// Semitones and parts of 128 of one, as tens of cents.
MIDIMessage modulationDepth(std::uint8_t channel, const ParameterValue& value) {
    const int tens = ((value.msb << 7 | value.lsb) * 10 + 64) / 128;
    return MIDIMessage::system(SystemMessage::modulationDepth, channel,
                               static_cast<std::uint8_t>(std::min(tens, 127)));
}

std::optional<MIDIMessage> effectOf(std::uint8_t channel, const ParameterValue& value) {
    constexpr ChannelParameter depthRange{.isRegistered = true, .msb = 0, .lsb = 5};
    constexpr std::uint8_t tableMSB = 1;
    if (value.parameter == depthRange)
        return modulationDepth(channel, value);
    if (value.parameter.isRegistered || value.parameter.msb != tableMSB)
        return std::nullopt;
    const auto row = std::ranges::find(partTable, int{value.parameter.lsb}, &PartParameter::nrpn);
    return row == partTable.end() ? std::nullopt : std::optional(row->effect.message(channel, value.msb));
}

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
    if (message.isSystem() && message.isReset())
        entries_ = {};
    if (MIDIStatus::kind(message.status) != MIDIStatus::controlChange)
        return message;
    const std::uint8_t channel = MIDIStatus::channel(message.status);
    if (message.data1 == Controller::resetAllControllers)
        entries_[channel] = {};
    if (!ParameterEntry::takes(message.data1))
        return message;
    const auto entered = entries_[channel].apply(message.data1, message.data2);
    return entered ? effectOf(channel, *entered).value_or(message) : message;
}

} // namespace tambrel
