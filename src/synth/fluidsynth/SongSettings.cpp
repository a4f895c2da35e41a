#include "SongSettings.h"

#include "SoundModulators.h"

#include <algorithm>
#include <cmath>

namespace tambrel {
namespace {

constexpr int allGroups = -1;
constexpr std::size_t drumChannel = 9;
constexpr std::uint8_t drumBankOfGM2 = 120;
constexpr int drumBank = 128;

struct Reverb {
    double roomSize, damp, width, level;
};
// In the order of GS: three rooms, two halls, a plate, two delays (rooms, for want of delays), and off.
constexpr Reverb reverbs[]{{0.1, 0.3, 0.5, 0.9}, {0.2, 0.2, 0.5, 0.9}, {0.3, 0.1, 0.6, 0.9},
                           {0.45, 0, 0.7, 0.9},  {0.6, 0, 0.8, 0.9},   {0.4, 0, 0.9, 0.9},
                           {0.2, 0.2, 0.5, 0.9}, {0.2, 0.2, 0.9, 0.9}, {0, 0, 0, 0}};
constexpr Reverb usualReverb{0.2, 0, 0.5, 0.9};

struct Chorus {
    int voices;
    double level, hertz, milliseconds;
};
// In the order of GS: four choruses of growing depth, feedback, flanger, two short delays, and off.
constexpr Chorus choruses[]{{2, 1.6, 0.3, 4}, {3, 1.8, 0.3, 6}, {3, 2, 0.3, 8},
                            {3, 2, 0.6, 10},  {4, 2, 0.3, 10},  {2, 2, 0.2, 3},
                            {1, 2, 0.1, 2},   {2, 2, 0.1, 2},   {3, 0, 0.3, 8}};
constexpr Chorus usualChorus{3, 2, 0.3, 8};

void use(fluid_synth_t& synth, const Reverb& reverb) {
    fluid_synth_set_reverb_group_roomsize(&synth, allGroups, reverb.roomSize);
    fluid_synth_set_reverb_group_damp(&synth, allGroups, reverb.damp);
    fluid_synth_set_reverb_group_width(&synth, allGroups, reverb.width);
    fluid_synth_set_reverb_group_level(&synth, allGroups, reverb.level);
}

void use(fluid_synth_t& synth, const Chorus& chorus) {
    fluid_synth_set_chorus_group_nr(&synth, allGroups, chorus.voices);
    fluid_synth_set_chorus_group_level(&synth, allGroups, chorus.level);
    fluid_synth_set_chorus_group_speed(&synth, allGroups, chorus.hertz);
    fluid_synth_set_chorus_group_depth(&synth, allGroups, chorus.milliseconds);
}

} // namespace

void SongSettings::reset(SystemMessage standard) noexcept {
    isXG_ = standard == SystemMessage::xgReset;
    channels_ = {};
    channels_[drumChannel].isDrums = true;
    keyTuning_ = keyTuningFraction_ = {};
    drums_.reset();
    masterKeyShift_ = 0;
    masterTuning_ = 0;
    setBalance(centre);
    if (effectsAreChanged_) {
        use(synth_, usualReverb);
        use(synth_, usualChorus);
    }
    effectsAreChanged_ = false;
    for (std::size_t channel = 0; channel < channelCount; ++channel)
        restoreControllers(static_cast<int>(channel));
}

void SongSettings::apply(MIDIMessage message) noexcept {
    using enum SystemMessage;
    const std::size_t key = message.data2 & 0x7F;
    Channel& channel = channels_[message.data2 & 0x0F];
    const SystemMessage kind = message.systemKind();
    if (kind == masterTuning)
        masterTuning_ = ((message.data2 | message.data3 << 7) - 8192) * 100.0 / 8192;
    else if (kind == masterKeyShift)
        masterKeyShift_ = message.data3 - centre;
    else if (kind == masterBalance)
        setBalance(message.data3);
    else if (kind == reverbType)
        setReverb(message.data3);
    else if (kind == chorusType)
        setChorus(message.data3);
    else if (kind == SystemMessage::keyTuning)
        keyTuning_[key] = 100.0F * (static_cast<float>(message.data3) - static_cast<float>(key));
    else if (kind == SystemMessage::keyTuningFraction)
        keyTuningFraction_[key] = static_cast<float>(message.data3) * 100.0F / 128;
    else if (kind >= drumPitch && kind <= lastDrumSetting)
        drums_.apply(message);
    else if (kind == bendRange)
        fluid_synth_pitch_wheel_sens(&synth_, message.data2 & 0x0F, message.data3);
    else if (kind == SystemMessage::keyShift)
        channel.keyShift = message.data3;
    else if (kind == modulationDepth)
        channel.depth = message.data3;
    else if (kind >= scaleTuning && kind <= lastScaleTuning) {
        if (!channel.isTuned)
            channel.scale.fill(centre);
        channel.isTuned = true;
        channel.scale[static_cast<std::size_t>(kind) - static_cast<std::size_t>(scaleTuning)] = message.data3;
    }
    if (kind == masterTuning || kind == masterKeyShift) {
        for (std::size_t each = 0; each < channelCount; ++each)
            restoreControllers(static_cast<int>(each));
    } else if (kind == SystemMessage::keyShift || kind == modulationDepth) {
        restoreControllers(message.data2 & 0x0F);
    }
}

// XG has banks of drums of its own, which FluidSynth knows.
void SongSettings::selectBank(int channel, std::uint8_t msb) noexcept {
    Channel& settings = channels_[static_cast<std::size_t>(channel)];
    const bool isDrums = !isXG_ && msb == drumBankOfGM2;
    if (isXG_ || settings.isDrumsByBank == isDrums)
        return;
    settings.isDrumsByBank = isDrums;
    setChannelType(channel);
    if (!settings.isDrums) // Which bank FluidSynth keeps meanwhile would depend on the one before.
        fluid_synth_bank_select(&synth_, channel, isDrums ? drumBank : 0);
}

void SongSettings::setDrums(int channel, std::uint8_t map) noexcept {
    Channel& settings = channels_[static_cast<std::size_t>(channel)];
    settings.isDrums = map > 0;
    settings.drumSetup = map > (isXG_ ? 2 : 1) ? 1 : 0;
    settings.isDrumsByBank = false;
    setChannelType(channel);
}

void SongSettings::setChannelType(int channel) noexcept {
    const Channel& settings = channels_[static_cast<std::size_t>(channel)];
    const bool areDrums = settings.isDrums || settings.isDrumsByBank;
    fluid_synth_set_channel_type(&synth_, channel, areDrums ? CHANNEL_TYPE_DRUM : CHANNEL_TYPE_MELODIC);
    restoreControllers(channel);
}

// Whole semitones go to one controller and what is left, at most half a semitone, to the other. What is said
// of the whole instrument does not move drums.
void SongSettings::restoreControllers(int channel) noexcept {
    const Channel& settings = channels_[static_cast<std::size_t>(channel)];
    const bool areDrums = settings.isDrums || settings.isDrumsByBank;
    const double cents = areDrums ? 0 : masterTuning_ + masterKeyShift_ * 100.0;
    const int semitones = static_cast<int>(std::lround(cents / 100));
    const auto set = [&](std::uint8_t controller, int value) {
        fluid_synth_cc(&synth_, channel, controller, std::clamp(value + centre, 0, 127));
    };
    set(PrivateController::modulationDepth, settings.depth - usualDepth);
    set(PrivateController::keyShift, semitones + settings.keyShift - centre);
    set(PrivateController::fineTuning, static_cast<int>(std::lround(cents - semitones * 100)));
}

void SongSettings::shapeDrum(FluidVoice voice, int channel, int key) const noexcept {
    EffectSends sends;
    fluid_synth_get_cc(&synth_, channel, Controller::reverbSend, &sends.reverb);
    fluid_synth_get_cc(&synth_, channel, Controller::chorusSend, &sends.chorus);
    drums_.shape(voice, channels_[static_cast<std::size_t>(channel)].drumSetup, static_cast<std::size_t>(key),
                 sends);
}

float SongSettings::tuningOf(int channel, int key) const noexcept {
    const Channel& settings = channels_[static_cast<std::size_t>(channel)];
    const auto index = static_cast<std::size_t>(key);
    const int scale = settings.isTuned ? settings.scale[index % notesOfOctave] - centre : 0;
    return keyTuning_[index] + keyTuningFraction_[index] + static_cast<float>(scale);
}

void SongSettings::setReverb(std::uint8_t kind) noexcept {
    use(synth_, reverbs[std::min<std::size_t>(kind, std::size(reverbs) - 1)]);
    effectsAreChanged_ = true;
}

void SongSettings::setChorus(std::uint8_t kind) noexcept {
    use(synth_, choruses[std::min<std::size_t>(kind, std::size(choruses) - 1)]);
    effectsAreChanged_ = true;
}

void SongSettings::setBalance(std::uint8_t value) noexcept {
    const float offset = std::clamp(static_cast<float>(value - centre) / (centre - 1), -1.0F, 1.0F);
    left_ = std::min(1 - offset, 1.0F);
    right_ = std::min(1 + offset, 1.0F);
}

void SongSettings::process(float* left, float* right, int frames) const noexcept {
    if (left_ == 1 && right_ == 1)
        return;
    for (int frame = 0; frame < frames; ++frame) {
        left[frame] *= left_;
        right[frame] *= right_;
    }
}

} // namespace tambrel
