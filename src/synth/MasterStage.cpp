#include "MasterStage.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace tambrel {
namespace {

// Measured by scripts/measure-loudness: the median of the real songs comes to -17 LUFS.
constexpr float makeUpGain = 2.6F;
// -1 dBFS, and a little for what a finer meter finds between the points that are looked at here.
constexpr float ceiling = 0.87F;
constexpr double lookAheadSeconds = 0.002;
constexpr double releaseSeconds = 0.1;
constexpr double volumeSeconds = 0.01;

double partPerFrame(double seconds, double sampleRate) {
    return 1 - std::exp(-1 / (seconds * sampleRate));
}

// The interpolation between frames: a sinc under a Hann window.
float interpolation(double distance, double width) {
    const double x = std::numbers::pi * distance;
    const double window = 0.5 + 0.5 * std::cos(x / (width / 2));
    return static_cast<float>(window * (x == 0 ? 1 : std::sin(x) / x));
}

} // namespace

MasterStage::MasterStage(double sampleRate)
    : lookAhead_(static_cast<std::size_t>(std::lround(lookAheadSeconds * sampleRate))),
      delay_(lookAhead_ + taps / 2),
      release_(partPerFrame(releaseSeconds, sampleRate)),
      candidates_(lookAhead_ + 1),
      gains_(lookAhead_, unity),
      sumOfGains_(unity * static_cast<Gain>(lookAhead_)) {
    for (Channel& channel : channels_)
        channel.delayed.resize(delay_);
    for (std::size_t phase = 0; phase < phases; ++phase) {
        const double offset = static_cast<double>(phase + 1) / (phases + 1);
        for (std::size_t tap = 0; tap < taps; ++tap)
            filter_[phase][tap] = interpolation(static_cast<double>(tap) - (taps / 2.0 - 1) - offset, taps);
    }
}

void MasterStage::reset() noexcept {
    for (Channel& channel : channels_) {
        channel.recent.fill(0);
        std::ranges::fill(channel.delayed, 0.0F);
    }
    loudFrames_ = 0;
    candidateCount_ = 0;
    envelope_ = unity;
    std::ranges::fill(gains_, unity);
    sumOfGains_ = unity * static_cast<Gain>(lookAhead_);
}

void MasterStage::process(float* left, float* right, int frames) noexcept {
    // A filter of this length makes at most twice the largest sample.
    constexpr float loud = ceiling / 2;
    for (int frame = 0; frame < frames; ++frame) {
        const float newLeft = left[frame] * makeUpGain;
        const float newRight = right[frame] * makeUpGain;
        const float delayedLeft = take(channels_[0], newLeft);
        const float delayedRight = take(channels_[1], newRight);
        recentAt_ = (recentAt_ + 1) % taps;
        delayAt_ = delayAt_ + 1 == delay_ ? 0 : delayAt_ + 1;
        if (std::max(std::abs(newLeft), std::abs(newRight)) > loud)
            loudFrames_ = taps;
        float peak = 0;
        if (loudFrames_ > 0) {
            --loudFrames_;
            peak = std::max(truePeak(channels_[0]), truePeak(channels_[1]));
        }
        const float gain = nextGain(peak);
        left[frame] = delayedLeft * gain;
        right[frame] = delayedRight * gain;
    }
}

// Returns what went in when the delay was this sample's.
float MasterStage::take(Channel& channel, float sample) noexcept {
    channel.recent[recentAt_] = channel.recent[recentAt_ + taps] = sample;
    return std::exchange(channel.delayed[delayAt_], sample);
}

// Of the frame in the middle of the latest, and between it and the next.
float MasterStage::truePeak(const Channel& channel) const noexcept {
    const float* recent = &channel.recent[recentAt_];
    float peak = std::abs(recent[taps / 2 - 1]);
    for (const auto& phase : filter_) {
        float sum = 0;
        for (std::size_t tap = 0; tap < taps; ++tap)
            sum += phase[tap] * recent[tap];
        peak = std::max(peak, std::abs(sum));
    }
    return peak;
}

// No candidate asks for unity, which is what there is without one.
MasterStage::Gain MasterStage::smallestAhead(Gain required) noexcept {
    const std::uint64_t frame = frame_++;
    if (candidateCount_ == 0 && required == unity)
        return unity;
    const auto at = [this](std::size_t index) -> Required& {
        return candidates_[(firstCandidate_ + index) % candidates_.size()];
    };
    while (candidateCount_ > 0 && at(candidateCount_ - 1).gain >= required)
        --candidateCount_;
    if (candidateCount_ > 0 && at(0).frame + lookAhead_ < frame) {
        firstCandidate_ = (firstCandidate_ + 1) % candidates_.size();
        --candidateCount_;
    }
    if (required < unity)
        at(candidateCount_++) = {frame, required};
    return candidateCount_ > 0 ? at(0).gain : unity;
}

// Down as far as the loudest frame ahead asks for and back up slowly; the mean over the look-ahead turns the
// steps into ramps that are done when that frame comes out.
float MasterStage::nextGain(float peak) noexcept {
    const Gain required =
        peak > ceiling ? static_cast<Gain>(static_cast<double>(unity) * (ceiling / peak)) : unity;
    const Gain wanted = smallestAhead(required);
    const auto up = static_cast<Gain>(static_cast<double>(unity - envelope_) * release_);
    envelope_ = std::min(wanted, envelope_ + std::max<Gain>(up, envelope_ < unity ? 1 : 0));
    sumOfGains_ += envelope_ - std::exchange(gains_[gainAt_], envelope_);
    gainAt_ = gainAt_ + 1 == lookAhead_ ? 0 : gainAt_ + 1;
    const Gain full = unity * static_cast<Gain>(lookAhead_);
    return sumOfGains_ == full
               ? 1.0F
               : static_cast<float>(static_cast<double>(sumOfGains_) / static_cast<double>(full));
}

UserVolume::UserVolume(double sampleRate) : step_(static_cast<float>(1 / (volumeSeconds * sampleRate))) {}

void UserVolume::process(float* left, float* right, int frames) noexcept {
    const float volume = volume_.load(std::memory_order_relaxed);
    const float target = volume * volume * volume;
    if (gain_ == 1 && target == 1)
        return;
    for (int frame = 0; frame < frames; ++frame) {
        gain_ += std::clamp(target - gain_, -step_, step_);
        left[frame] *= gain_;
        right[frame] *= gain_;
    }
}

} // namespace tambrel
