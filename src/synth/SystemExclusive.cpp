#include "SystemExclusive.h"

#include "SongParameters.h"

#include <algorithm>
#include <array>

namespace tambrel {
namespace {

using enum SystemMessage;
using Messages = std::vector<MIDIMessage>;

constexpr int any = -1; // Matches every byte: a device number, a value.
constexpr std::uint8_t channelCount = 16;

template<std::size_t Size>
bool matches(ByteView payload, const std::array<int, Size>& pattern) {
    return payload.size() >= Size &&
           std::equal(pattern.begin(), pattern.end(), payload.begin(),
                      [](int wanted, std::uint8_t byte) { return wanted == any || wanted == byte; });
}

std::uint8_t low7(int value) {
    return static_cast<std::uint8_t>(value & 0x7F);
}

// GS counts its parts with the drum part first.
std::uint8_t channelOfPart(std::uint8_t part) {
    constexpr std::uint8_t drumChannel = 9;
    if (part == 0)
        return drumChannel;
    return part <= drumChannel ? part - 1 : part;
}

SystemMessage scaleTuningOf(int note) {
    return static_cast<SystemMessage>(static_cast<int>(scaleTuning) + note);
}

// XG has many kinds of its own; the groups of eight that it orders them in are told apart.
std::uint8_t effectTypeOfXG(SystemMessage effect, std::uint8_t type) {
    constexpr std::uint8_t off = static_cast<std::uint8_t>(EffectType::off);
    constexpr std::array<std::uint8_t, 5> reverbs{off, 4, 1, 3, 5}; // None, hall, room, stage, plate.
    constexpr std::uint8_t firstChorus = 0x41;
    constexpr std::array<std::uint8_t, 3> choruses{2, 1, 5}; // Chorus, celeste, flanger.
    if (effect == reverbType)
        return type < reverbs.size() ? reverbs[type] : reverbs[1];
    if (type == 0)
        return off;
    return type >= firstChorus && type < firstChorus + choruses.size() ? choruses[type - firstChorus]
                                                                       : choruses[0];
}

MIDIMessage masterMessage(SystemMessage effect, std::uint8_t value) {
    // Volume in the seven bits of GS and XG; the universal message has fourteen.
    return MIDIMessage::system(effect, effect == masterVolume ? value : 0, value);
}

// Four halves of bytes, tenths of a cent around 1024; the message has 14 bits for a semitone either way.
void readMasterTuning(ByteView data, Messages& messages) {
    constexpr std::size_t digits = 4;
    if (data.size() < digits)
        return;
    int tenths = -1024;
    for (std::size_t digit = 0; digit < digits; ++digit)
        tenths += (data[digit] & 0x0F) << 4 * (digits - 1 - digit);
    const int bits = 8192 + std::clamp(tenths, -1000, 1000) * 8191 / 1000;
    messages.push_back(MIDIMessage::system(masterTuning, low7(bits), low7(bits >> 7)));
}

void readPart(bool isXG, int parameter, std::uint8_t channel, std::uint8_t value, Messages& messages) {
    const int firstTuning = isXG ? 0x41 : 0x40;
    const int note = parameter - firstTuning;
    if (note >= 0 && note < 12)
        messages.push_back(MIDIMessage::system(scaleTuningOf(note), channel, value));
    const auto row =
        std::ranges::find(partParameters(), parameter, isXG ? &PartParameter::xg : &PartParameter::gs);
    if (row != partParameters().end())
        messages.push_back(row->effect.message(channel, value));
}

// GS: 41 mx rr, with the key last. XG: 3m rr xx.
void readDrum(bool isXG, ByteView address, std::size_t at, std::uint8_t value, Messages& messages) {
    const auto last = static_cast<std::uint8_t>(address[2] + at);
    const int parameter = isXG ? last : address[1] & 0x0F;
    const int setup = isXG ? address[0] & 0x0F : address[1] >> 4;
    const auto row =
        std::ranges::find(drumParameters(), parameter, isXG ? &DrumParameter::xg : &DrumParameter::gs);
    if (row != drumParameters().end() && setup <= 1)
        messages.push_back(row->message(setup == 1, isXG ? address[1] & 0x7F : last, value));
}

// Data from an address on, a byte each.
void readParameters(bool isXG, ByteView address, ByteView data, Messages& messages) {
    const int block = address[1] >> 4; // Of GS parts.
    const bool isPart = isXG ? address[0] == 0x08 && address[1] < channelCount
                             : address[0] == 0x40 && (block == 1 || block == 2);
    const bool isDrum = isXG ? (address[0] & 0xF0) == 0x30 : address[0] == 0x41;
    const int start = address[0] << 16 | address[1] << 8 | address[2];
    if (start == (isXG ? 0x000000 : 0x400000))
        readMasterTuning(data, messages);
    for (std::size_t at = 0; at < data.size() && address[2] + at < 0x80; ++at) {
        const std::uint8_t value = data[at] & 0x7F;
        if (isPart) {
            const std::uint8_t part = address[1] & 0x0F;
            const int parameter = address[2] + static_cast<int>(at);
            if (isXG)
                readPart(isXG, parameter, part, value, messages);
            else
                readPart(isXG, (block - 1) * 0x80 + parameter, channelOfPart(part), value, messages);
            continue;
        }
        if (isDrum) {
            readDrum(isXG, address, at, value, messages);
            continue;
        }
        const auto row = std::ranges::find(masterParameters(), start + static_cast<int>(at),
                                           isXG ? &MasterParameter::xg : &MasterParameter::gs);
        if (row == masterParameters().end())
            continue;
        const bool isType = row->effect == reverbType || row->effect == chorusType;
        messages.push_back(
            masterMessage(row->effect, isXG && isType ? effectTypeOfXG(row->effect, value) : value));
    }
}

// A checksum comes last; a message that is cut off has none.
void readGS(ByteView payload, Messages& messages) {
    constexpr std::size_t header = 7;
    const std::size_t data = std::max<std::size_t>(payload.size() - header, 2) - 1;
    readParameters(false, payload.subspan(4), payload.subspan(header, data), messages);
}

void readXG(ByteView payload, Messages& messages) {
    constexpr std::size_t header = 6;
    readParameters(true, payload.subspan(3), payload.subspan(header), messages);
}

// GM2's global parameters of reverb and chorus: pairs of a parameter and its value, of which 0 is the type.
void readGlobalParameter(ByteView payload, Messages& messages) {
    constexpr std::array<int, 10> reverb{0x7F, any, 0x04, 0x05, 1, 1, 1, 0x01, 0x01, 0};
    constexpr std::array<int, 10> chorus{0x7F, any, 0x04, 0x05, 1, 1, 1, 0x01, 0x02, 0};
    constexpr std::uint8_t plate = 8, plateOfGS = 5;
    if (payload.size() <= reverb.size())
        return;
    const std::uint8_t type = payload[reverb.size()];
    if (matches(payload, reverb))
        messages.push_back(MIDIMessage::system(reverbType, 0, type == plate ? plateOfGS : type & 0x07));
    if (matches(payload, chorus))
        messages.push_back(MIDIMessage::system(chorusType, 0, type & 0x07));
}

// Single notes: a count, then the key, and the semitone and its parts that it sounds at.
void readNoteTuning(ByteView payload, std::size_t countAt, Messages& messages) {
    constexpr std::size_t entry = 4;
    constexpr std::uint8_t unchanged = 0x7F;
    for (std::size_t at = countAt + 1; at + entry <= payload.size(); at += entry) {
        if (payload[at + 1] == unchanged && payload[at + 2] == unchanged && payload[at + 3] == unchanged)
            continue;
        messages.push_back(MIDIMessage::system(keyTuning, payload[at], payload[at + 1]));
        messages.push_back(MIDIMessage::system(keyTuningFraction, payload[at], payload[at + 2]));
    }
}

// The twelve notes of the octave for the channels of a bit map, in cents of one byte or two.
void readOctaveTuning(ByteView payload, std::size_t bytes, Messages& messages) {
    constexpr std::size_t notes = 12, header = 7;
    if (payload.size() < header + notes * bytes)
        return;
    const int channels = (payload[4] & 0x03) << 14 | payload[5] << 7 | payload[6];
    for (std::uint8_t channel = 0; channel < channelCount; ++channel) {
        for (std::size_t note = 0; note < notes && (channels >> channel & 1) != 0; ++note) {
            const std::uint8_t high = payload[header + note * bytes];
            // 14 bits are 100 cents either way.
            const int cents = bytes == 1 ? high - 64 : (high - 64) * 100 / 64;
            messages.push_back(MIDIMessage::system(scaleTuningOf(static_cast<int>(note)), channel,
                                                   low7(std::clamp(cents + 64, 0, 127))));
        }
    }
}

void readTuning(ByteView payload, Messages& messages) {
    switch (payload[3]) {
    case 0x02:
        return readNoteTuning(payload, 5, messages);
    case 0x07:
        return readNoteTuning(payload, 6, messages);
    case 0x08:
        return readOctaveTuning(payload, 1, messages);
    case 0x09:
        return readOctaveTuning(payload, 2, messages);
    default:
        return;
    }
}

void readDeviceControl(ByteView payload, Messages& messages) {
    constexpr std::array effects{masterVolume, masterBalance, masterTuning, masterKeyShift};
    const std::uint8_t kind = payload[3];
    if (kind >= 1 && kind <= effects.size() && payload.size() >= 6)
        messages.push_back(MIDIMessage::system(effects[kind - 1U], low7(payload[4]), low7(payload[5])));
    else
        readGlobalParameter(payload, messages);
}

} // namespace

std::vector<MIDIMessage> readSystemExclusive(ByteView payload) {
    constexpr std::array<int, 3> gmSystem{0x7E, any, 0x09};
    constexpr std::array<int, 8> gsResetPattern{0x41, any, 0x42, 0x12, 0x40, 0x00, 0x7F, 0x00};
    constexpr std::array<int, 7> gsSystemMode{0x41, any, 0x42, 0x12, 0x00, 0x00, 0x7F};
    constexpr std::array<int, 8> gs{0x41, any, 0x42, 0x12, any, any, any, any};
    constexpr std::array<int, 7> xgSystemOn{0x43, any, 0x4C, 0x00, 0x00, 0x7E, 0x00};
    constexpr std::array<int, 7> xg{0x43, any, 0x4C, any, any, any, any};
    constexpr std::array<int, 5> deviceControl{0x7F, any, 0x04, any, any};
    constexpr std::array<int, 5> tuning{any, any, 0x08, any, any};
    constexpr std::uint8_t end = 0xF7;

    if (!payload.empty() && payload.back() == end)
        payload = payload.first(payload.size() - 1);
    if (matches(payload, gmSystem))
        return {MIDIMessage::system(gmReset)};
    if (matches(payload, gsResetPattern) || matches(payload, gsSystemMode))
        return {MIDIMessage::system(gsReset)};
    if (matches(payload, xgSystemOn))
        return {MIDIMessage::system(xgReset)};
    Messages messages;
    if (matches(payload, gs))
        readGS(payload, messages);
    else if (matches(payload, xg) && (payload[1] & 0xF0) == 0x10)
        readXG(payload, messages);
    else if (matches(payload, deviceControl))
        readDeviceControl(payload, messages);
    else if (matches(payload, tuning) && (payload[0] == 0x7E || payload[0] == 0x7F))
        readTuning(payload, messages);
    return messages;
}

} // namespace tambrel
