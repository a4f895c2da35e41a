#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tambrel {

/// What stands between the synthesizer and the loudspeaker: make-up gain, and a look-ahead limiter that keeps
/// the true peak (ITU-R BS.1770, oversampled four times) at or below -1 dBFS and leaves alone what stays
/// below. Used by one thread at a time, which may be the audio callback: after the construction nothing
/// allocates, locks or frees.
class MasterStage {
public:
    explicit MasterStage(double sampleRate);

    /// In place; what comes out is what went in `latency` frames ago.
    void process(float* left, float* right, int frames) noexcept;
    /// Frames.
    [[nodiscard]] int latency() const { return static_cast<int>(delay_); }
    /// Begins anew after silence: nothing of what went in comes out any more.
    void reset() noexcept;

private:
    // Gains are whole numbers, so that their running sum stays exact and unity stays unity.
    using Gain = std::int64_t;
    static constexpr Gain unity = Gain{1} << 30;
    static constexpr std::size_t taps = 24;
    static constexpr std::size_t phases = 3; // Between two frames.
    static constexpr std::size_t channelCount = 2;

    struct Channel {
        std::array<float, 2 * taps> recent{}; // Twice, so that the latest always lie in one piece.
        std::vector<float> delayed;
    };

    [[nodiscard]] float take(Channel& channel, float sample) noexcept;
    [[nodiscard]] float truePeak(const Channel& channel) const noexcept;
    [[nodiscard]] Gain smallestAhead(Gain required) noexcept;
    [[nodiscard]] float nextGain(float peak) noexcept;

    const std::size_t lookAhead_; // Frames.
    const std::size_t delay_;
    const double release_; // Part of the way back to unity per frame.
    std::array<std::array<float, taps>, phases> filter_{};

    std::array<Channel, channelCount> channels_;
    std::size_t recentAt_ = 0, delayAt_ = 0;
    std::size_t loudFrames_ = 0; // Still to come in which a peak may lie.

    // The smallest required gain of the look-ahead: those that are smaller than all that came after them.
    struct Required {
        std::uint64_t frame;
        Gain gain;
    };
    std::vector<Required> candidates_;
    std::size_t firstCandidate_ = 0, candidateCount_ = 0;
    std::uint64_t frame_ = 0;

    Gain envelope_ = unity;
    std::vector<Gain> gains_; // Of the look-ahead, and their sum.
    std::size_t gainAt_ = 0;
    Gain sumOfGains_;
};

/// The volume that the user has chosen, on top of everything else. `set` may be called by any thread.
class UserVolume {
public:
    explicit UserVolume(double sampleRate);

    /// 0 (silence) to 1 (as it comes); the loudness follows the ear, by the third power.
    void set(double volume) noexcept { volume_.store(static_cast<float>(volume), std::memory_order_relaxed); }
    [[nodiscard]] double get() const noexcept { return volume_.load(std::memory_order_relaxed); }
    /// A change takes effect within 10 ms, without a step.
    void process(float* left, float* right, int frames) noexcept;

private:
    const float step_; // Per frame.
    std::atomic<float> volume_{1};
    float gain_ = 1;
};

} // namespace tambrel
