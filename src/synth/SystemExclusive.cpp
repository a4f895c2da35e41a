#include "SystemExclusive.h"

#include <algorithm>
#include <array>

namespace tambrel {
namespace {

constexpr int any = -1; // Matches every byte: a device number, a value.

template<std::size_t Size>
bool matches(ByteView payload, const std::array<int, Size>& pattern) {
    return payload.size() >= Size &&
           std::equal(pattern.begin(), pattern.end(), payload.begin(),
                      [](int wanted, std::uint8_t byte) { return wanted == any || wanted == byte; });
}

// GS counts its parts with the drum part first.
std::uint8_t channelOfPart(std::uint8_t part) {
    constexpr std::uint8_t drumChannel = 9;
    if (part == 0)
        return drumChannel;
    return part <= drumChannel ? part - 1 : part;
}

} // namespace

std::optional<MIDIMessage> readSystemExclusive(ByteView payload) {
    using enum SystemMessage;
    constexpr std::array<int, 3> gmSystem{0x7E, any, 0x09};
    constexpr std::array<int, 8> gsResetPattern{0x41, any, 0x42, 0x12, 0x40, 0x00, 0x7F, 0x00};
    constexpr std::array<int, 7> gsSystemMode{0x41, any, 0x42, 0x12, 0x00, 0x00, 0x7F};
    constexpr std::array<int, 7> xgSystemOn{0x43, any, 0x4C, 0x00, 0x00, 0x7E, 0x00};
    constexpr std::array<int, 6> volume{0x7F, any, 0x04, 0x01, any, any};
    constexpr std::array<int, 8> useForRhythm{0x41, any, 0x42, 0x12, 0x40, any, 0x15, any};

    if (matches(payload, gmSystem))
        return MIDIMessage::system(gmReset);
    if (matches(payload, gsResetPattern) || matches(payload, gsSystemMode))
        return MIDIMessage::system(gsReset);
    if (matches(payload, xgSystemOn))
        return MIDIMessage::system(xgReset);
    if (matches(payload, volume))
        return MIDIMessage::system(masterVolume, payload[4] & 0x7F, payload[5] & 0x7F);
    if (matches(payload, useForRhythm) && (payload[5] & 0xF0) == 0x10)
        return MIDIMessage::system(rhythmPart, channelOfPart(payload[5] & 0x0F), payload[7]);
    return std::nullopt;
}

} // namespace tambrel
