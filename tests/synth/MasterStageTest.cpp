#include "MasterStage.h"
#include "SynthTesting.h"

#include <gtest/gtest.h>

#include <numbers>
#include <random>
#include <tuple>

namespace tambrel {
namespace {

using namespace testing;
using Sound = std::vector<float>;

constexpr double sampleRate = 48000;

Sound sine(double level, double hertz, double seconds, double phase = 0) {
    Sound sound(static_cast<std::size_t>(seconds * sampleRate));
    for (std::size_t frame = 0; frame < sound.size(); ++frame)
        sound[frame] = static_cast<float>(
            level * std::sin(2 * std::numbers::pi * hertz * static_cast<double>(frame) / sampleRate + phase));
    return sound;
}

Sound operator+(Sound first, const Sound& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// The left channel of what comes out, in periods of several lengths; the right one is half as loud.
Sound process(MasterStage& master, const Sound& sound) {
    Sound left = sound, right = sound;
    for (float& sample : right)
        sample /= 2;
    for (std::size_t at = 0, period = 1; at < sound.size(); at += period, period = period % 1024 + 37) {
        period = std::min(period, sound.size() - at);
        master.process(&left[at], &right[at], static_cast<int>(period));
    }
    for (std::size_t frame = 0; frame < sound.size(); ++frame)
        EXPECT_EQ(right[frame], left[frame] / 2) << "The channels must share their gain.";
    return left;
}

/// By a longer filter than the limiter's own, at eight points a frame.
double truePeak(const Sound& sound) {
    constexpr int reach = 24, points = 8;
    double peak = 0;
    for (std::size_t frame = reach; frame + reach < sound.size(); ++frame) {
        for (int point = 0; point < points && std::abs(sound[frame]) > 0.3F; ++point) {
            double sum = 0;
            for (int tap = -reach; tap <= reach; ++tap) {
                const double x = std::numbers::pi * (tap - static_cast<double>(point) / points);
                const double window = 0.5 + 0.5 * std::cos(x / (reach + 1));
                sum += window * (x == 0 ? 1 : std::sin(x) / x) *
                       sound[frame + static_cast<std::size_t>(tap + reach) - reach];
            }
            peak = std::max(peak, std::abs(sum));
        }
    }
    return 20 * std::log10(peak);
}

TEST(MasterStageTest, LeavesAloneWhatStaysBelowTheCeilingButForTheGain) {
    MasterStage master(sampleRate);
    const Sound quiet = sine(0.2, 997, 0.1) + sine(0.01, 97, 0.1) + Sound(4800, 0.0F);
    const Sound out = process(master, quiet);
    const float gain = *std::ranges::max_element(out) / *std::ranges::max_element(quiet);
    EXPECT_GT(gain, 2);
    for (std::size_t frame = 0; frame + static_cast<std::size_t>(master.latency()) < quiet.size(); ++frame)
        ASSERT_FLOAT_EQ(out[frame + static_cast<std::size_t>(master.latency())], quiet[frame] * gain)
            << frame;
}

TEST(MasterStageTest, KeepsTheTruePeakBelowOneDecibel) {
    Sound noise(9600), clicks(9600);
    std::mt19937 engine(1);
    for (std::size_t frame = 2; frame < noise.size(); ++frame) // Like music, mostly low.
        noise[frame] = 0.8F * noise[frame - 1] + std::uniform_real_distribution<float>(-1, 1)(engine);
    for (std::size_t frame = 500; frame < clicks.size(); frame += 331 + engine() % 700)
        clicks[frame] = clicks[frame + 1] = engine() % 2 == 0 ? 3.0F : -3.0F;
    const std::tuple<const char*, Sound> rows[] = {
        {"a loud tone", sine(2, 440, 0.2)},
        {"a tone with its peaks between the frames", sine(1, 12'000, 0.2, std::numbers::pi / 4)},
        {"a tone that begins", Sound(480, 0.0F) + sine(4, 50, 0.2)},
        {"noise", noise},
        {"clicks", clicks},
        {"just above", sine(0.36, 3000, 0.2)},
    };
    for (const auto& [name, sound] : rows) {
        SCOPED_TRACE(name);
        MasterStage master(sampleRate);
        const Sound out = process(master, sound + Sound(960, 0.0F));
        EXPECT_LE(truePeak(out), -1);
        EXPECT_GE(truePeak(out), -3.5) << "softer than it need be";
    }
}

TEST(MasterStageTest, ComesBackWithoutAStepAndAtOnceAfterAReset) {
    for (const bool isReset : {false, true}) {
        MasterStage master(sampleRate);
        process(master, sine(2, 441, 0.1));
        if (isReset)
            master.reset();
        const Sound after = process(master, sine(0.1, 441, 0.5));
        const Sound early(after.begin() + 900, after.begin() + 1300);
        const Sound late(after.end() - 4800, after.end());
        EXPECT_EQ(peak(early) > 0.95F * peak(late), isReset);
        float step = 0;
        for (std::size_t frame = 901; frame < after.size(); ++frame)
            step = std::max(step, std::abs(after[frame] - after[frame - 1]));
        EXPECT_LT(step, 1.1 * 2 * std::numbers::pi * 441 / sampleRate * peak(late));
    }
}

TEST(UserVolumeTest, FollowsTheThirdPowerWithoutAStep) {
    UserVolume volume(sampleRate);
    Sound sound = sine(0.5, 441, 1), right = sound;
    const double volumes[] = {1, 0.5, 0, 0.8};
    for (std::size_t part = 0; part < std::size(volumes); ++part) {
        volume.set(volumes[part]);
        volume.process(&sound[part * 12'000], &right[part * 12'000], 12'000);
        const Sound settled(sound.begin() + static_cast<std::ptrdiff_t>(part * 12'000 + 481),
                            sound.begin() + static_cast<std::ptrdiff_t>(part * 12'000 + 12'000));
        EXPECT_NEAR(peak(settled), 0.5 * std::pow(volumes[part], 3), 1e-4);
    }
    for (std::size_t frame = 1; frame < sound.size(); ++frame)
        ASSERT_LT(std::abs(sound[frame] - sound[frame - 1]), 0.032) << frame;
    EXPECT_EQ(sound, right);
}

} // namespace
} // namespace tambrel
