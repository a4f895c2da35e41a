#include "DrumSettings.h"

#include <algorithm>
#include <cmath>

namespace tambrel {
namespace {

constexpr std::uint8_t asInBank = 0xFF;
constexpr float full = 127, centre = 64;

constexpr std::size_t indexOf(SystemMessage kind) {
    return static_cast<std::size_t>(kind) - static_cast<std::size_t>(SystemMessage::drumPitch);
}

// Centibels, by the same law as the volume of a channel.
float attenuation(float level) {
    constexpr float silence = 960;
    return level == 0 ? silence : std::min(400 * std::log10(full / level), silence);
}

// Tenths of a percent, to be added to what the channel's controller sends.
float lessSent(float part, int controller) {
    constexpr float mostSent = 200;
    return (part / full - 1) * mostSent * static_cast<float>(controller) / full;
}

} // namespace

void DrumSettings::reset() noexcept {
    if (!areSet_)
        return;
    for (auto& setup : values_) {
        for (auto& values : setup)
            values.fill(asInBank);
    }
    areSet_ = false;
}

void DrumSettings::apply(MIDIMessage message) noexcept {
    const std::size_t index = indexOf(message.systemKind());
    values_[index / kinds][index % kinds][message.data2 & 0x7F] = message.data3;
    areSet_ = true;
}

void DrumSettings::shape(FluidVoice voice, std::size_t setup, std::size_t key,
                         EffectSends sends) const noexcept {
    using enum SystemMessage;
    const auto change = [&](SystemMessage kind, int generator, auto newValue) {
        const std::uint8_t value = values_[setup][indexOf(kind)][key];
        if (value != asInBank)
            voice.set(generator, newValue(voice.get(generator), static_cast<float>(value)));
    };
    change(drumPitch, GEN_COARSETUNE, [](float usual, float value) { return usual + value - centre; });
    change(drumLevel, GEN_ATTENUATION, [](float usual, float value) { return usual + attenuation(value); });
    change(drumPan, GEN_PAN, [](float usual, float value) {
        constexpr float farthest = 500, steps = 63;
        return value == 0 ? usual : (value - centre) / steps * farthest; // 0 is anywhere.
    });
    change(drumReverb, GEN_REVERBSEND,
           [&](float usual, float value) { return usual + lessSent(value, sends.reverb); });
    change(drumChorus, GEN_CHORUSSEND,
           [&](float usual, float value) { return usual + lessSent(value, sends.chorus); });
}

} // namespace tambrel
