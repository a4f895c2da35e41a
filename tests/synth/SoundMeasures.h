#pragma once

#include "Sequencer.h"
#include "SynthTesting.h"

#include <span>
#include <vector>

namespace tambrel::testing {

using Samples = std::span<const float>;

/// Stereo sound that can be cut by seconds.
struct Sound {
    double sampleRate;
    std::vector<float> left, right;

    [[nodiscard]] Samples cut(const std::vector<float>& channel, double from, double to) const {
        const auto frame = [&](double seconds) {
            return std::min(channel.size(), static_cast<std::size_t>(std::llround(seconds * sampleRate)));
        };
        return Samples(channel).subspan(frame(from), frame(to) - frame(from));
    }
    [[nodiscard]] double length() const { return static_cast<double>(left.size()) / sampleRate; }
};

inline double decibels(Samples samples) {
    double squares = 0;
    for (const float sample : samples)
        squares += double{sample} * sample;
    return 10 * std::log10(squares / static_cast<double>(samples.size()) + 1e-20);
}

/// Hertz of a sine, by the moments at which it rises through zero.
inline double frequency(Samples samples, double sampleRate) {
    std::vector<double> rises;
    for (std::size_t at = 1; at < samples.size(); ++at) {
        if (const double before = samples[at - 1], after = samples[at]; before < 0 && after >= 0)
            rises.push_back(static_cast<double>(at) - after / (after - before));
    }
    return rises.size() < 2 ? 0
                            : sampleRate * static_cast<double>(rises.size() - 1) / (rises.back() - rises[0]);
}

inline double cents(Samples samples, double sampleRate) {
    constexpr double key60 = 480;
    return 1200 * std::log2(frequency(samples, sampleRate) / key60);
}

/// What the audio callback is given: a sequencer on the synthesizer with the bank of sines.
class RealTime {
public:
    RealTime() {
        synthesizer_->loadSoundBank(testBank);
        sequencer.setSynthesizer(*synthesizer_);
    }

    Sound& listen(double seconds) {
        std::vector<float> left(1024), right(1024);
        for (const double end = heard.length() + seconds; heard.length() < end;) {
            sequencer.renderAudio(left.data(), right.data(), 1024);
            heard.left.insert(heard.left.end(), left.begin(), left.end());
            heard.right.insert(heard.right.end(), right.begin(), right.end());
        }
        return heard;
    }

    Sequencer sequencer{48000};
    Sound heard{48000, {}, {}};

private:
    std::unique_ptr<Synthesizer> synthesizer_ = makeSynthesizer(48000);
};

inline TrackBuilder dry() {
    TrackBuilder track;
    for (const int channel : {0, 1, 9})
        track.control(0, channel, 91, 0).control(0, channel, 93, 0); // No reverb, no chorus.
    return track;
}

inline TrackBuilder parameter(int number, int value) {
    return dry().control(0, 0, 101, 0).control(0, 0, 100, number).control(0, 0, 6, value);
}

} // namespace tambrel::testing
