#include "SongParameters.h"

#include "PartRouter.h"

#include <algorithm>

namespace tambrel {
namespace {

constexpr SongEffect control(std::uint8_t number) {
    return {MIDIStatus::controlChange, number};
}
constexpr SongEffect part(SystemMessage kind) {
    return {MIDIStatus::systemExclusive, static_cast<std::uint8_t>(kind)};
}

constexpr int controllersOfPart = 0x80; // The block 40 2p.

// General MIDI 2 and what the GS and XG formats say of their parts. All values are centred on 64 where the
// controller's is. The levels of a part and its controllers are one and the same, as in those formats.
constexpr std::array partTable{
    PartParameter{"bank", 0x00, 0x01, noAddress, control(Controller::bankSelectMSB)},
    PartParameter{"bank, low half", noAddress, 0x02, noAddress, control(Controller::bankSelectLSB)},
    PartParameter{"program", 0x01, 0x03, noAddress, {MIDIStatus::programChange}},
    PartParameter{"receive channel", 0x02, 0x04, noAddress, part(SystemMessage::receiveChannel)},
    PartParameter{"part mode", 0x15, 0x07, noAddress, part(SystemMessage::rhythmPart)},
    PartParameter{"bend range", controllersOfPart + 0x10, 0x23, noAddress, part(SystemMessage::bendRange)},
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

constexpr std::array drumTable{
    DrumParameter{"pitch", noAddress, 0x00, 0x18, SystemMessage::drumPitch},
    DrumParameter{"level", 0x02, 0x02, 0x1A, SystemMessage::drumLevel},
    DrumParameter{"pan", 0x04, 0x04, 0x1C, SystemMessage::drumPan},
    DrumParameter{"reverb send", 0x05, 0x05, 0x1D, SystemMessage::drumReverb},
    DrumParameter{"chorus send", 0x06, 0x06, 0x1E, SystemMessage::drumChorus},
};

// Semitones and parts of 128 of one, as tens of cents.
MIDIMessage modulationDepth(std::uint8_t channel, const ParameterValue& value) {
    const int tens = ((value.msb << 7 | value.lsb) * 10 + 64) / 128;
    return MIDIMessage::system(SystemMessage::modulationDepth, channel,
                               static_cast<std::uint8_t>(std::min(tens, 127)));
}

} // namespace

MIDIMessage SongEffect::message(std::uint8_t channel, std::uint8_t value) const {
    constexpr std::uint8_t none = 64, mostSemitones = 24;
    if (*this == part(SystemMessage::bendRange))
        value = static_cast<std::uint8_t>(std::clamp<int>(value - none, 0, mostSemitones));
    if (*this == part(SystemMessage::receiveChannel))
        value = std::min(value, PartRouter::noChannel);
    if (kind == MIDIStatus::systemExclusive)
        return MIDIMessage::system(static_cast<SystemMessage>(number), channel, value);
    const auto status = static_cast<std::uint8_t>(kind | channel);
    return kind == MIDIStatus::programChange ? MIDIMessage{status, value, 0, 0}
                                             : MIDIMessage{status, number, value, 0};
}

MIDIMessage DrumParameter::message(bool isSecond, std::uint8_t key, std::uint8_t value) const {
    constexpr auto first = static_cast<int>(SystemMessage::drumPitch);
    constexpr auto second = static_cast<int>(SystemMessage::secondDrumPitch);
    const int kind = static_cast<int>(effect) + (isSecond ? second - first : 0);
    return MIDIMessage::system(static_cast<SystemMessage>(kind), key, value);
}

std::span<const PartParameter> partParameters() {
    return partTable;
}

std::span<const MasterParameter> masterParameters() {
    return masterTable;
}

std::span<const DrumParameter> drumParameters() {
    return drumTable;
}

MIDIMessage ParameterReader::read(MIDIMessage message) {
    if (message.isSystem())
        readSystem(message);
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

// XG's first kind of drum part has no setup that could be changed, but a song that tries means the drums.
void ParameterReader::readSystem(MIDIMessage message) {
    if (message.isReset()) {
        *this = {};
        isXG_ = message.systemKind() == SystemMessage::xgReset;
    } else if (message.systemKind() == SystemMessage::rhythmPart) {
        drumSetups_[message.data2 & 0x0F] = message.data3 == 0                 ? DrumSetup::none
                                            : message.data3 <= (isXG_ ? 2 : 1) ? DrumSetup::first
                                                                               : DrumSetup::second;
    }
}

std::optional<MIDIMessage> ParameterReader::effectOf(std::uint8_t channel,
                                                     const ParameterValue& value) const {
    constexpr ChannelParameter depthRange{.isRegistered = true, .msb = 0, .lsb = 5};
    constexpr std::uint8_t tableMSB = 1;
    if (value.parameter == depthRange)
        return modulationDepth(channel, value);
    if (value.parameter.isRegistered)
        return std::nullopt;
    if (value.parameter.msb != tableMSB)
        return drumEffectOf(channel, value);
    const auto row = std::ranges::find(partTable, int{value.parameter.lsb}, &PartParameter::nrpn);
    return row == partTable.end() ? std::nullopt : std::optional(row->effect.message(channel, value.msb));
}

std::optional<MIDIMessage> ParameterReader::drumEffectOf(std::uint8_t channel,
                                                         const ParameterValue& value) const {
    const auto row = std::ranges::find(drumTable, int{value.parameter.msb}, &DrumParameter::nrpn);
    const DrumSetup setup = drumSetups_[channel];
    if (row == drumTable.end() || setup == DrumSetup::none)
        return std::nullopt;
    return row->message(setup == DrumSetup::second, value.parameter.lsb, value.msb);
}

} // namespace tambrel
