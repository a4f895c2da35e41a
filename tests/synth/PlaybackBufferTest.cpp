#include "PlaybackBuffer.h"
#include "SynthTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tambrel {
namespace {

using namespace testing;

constexpr std::int64_t rate = 48'000;
constexpr std::size_t fade = 320;

std::int64_t framesPlayed = 0; // By the loudspeaker, whose clock is the only one.
AudioSource::Time now() {
    return AudioSource::Time(std::chrono::microseconds(framesPlayed * 1'000'000 / rate));
}

/// A device that asks for sound `ahead` frames before it is heard, and writes over what is not about to be.
class Loudspeaker {
public:
    Loudspeaker(int ahead, int tooNear) : ahead_(ahead), tooNear_(tooNear) {
        sequencer.setSynthesizer(*synthesizer_);
        open();
    }
    void listen(double seconds) {
        for (const std::int64_t end = framesPlayed + std::llround(seconds * rate); framesPlayed < end;) {
            fill();
            framesPlayed += 64;
            tellTime();
        }
    }
    /// The frame from which on an order is heard.
    std::size_t respond() {
        const auto back = std::max<std::int64_t>(unheard() - tooNear_, 0);
        if (ahead_ > 0)
            sound.resize(sound.size() - static_cast<std::size_t>(buffer.takeBack(static_cast<int>(back))));
        const std::size_t from = sound.size();
        fill();
        return from;
    }
    void loseServer() {
        if (ahead_ > 0)
            sound.resize(static_cast<std::size_t>(framesPlayed));
        buffer.endStream();
        open();
    }

    Sequencer sequencer{rate};
    PlaybackBuffer buffer{sequencer, rate, now};
    std::vector<float> sound; // Of the left channel, what is not heard yet included.

private:
    void open() {
        buffer.beginStream();
        begin_ = framesPlayed;
        tellTime();
    }
    void tellTime() {
        if (ahead_ > 0)
            buffer.heard(framesPlayed - begin_, now());
    }
    [[nodiscard]] std::int64_t unheard() const {
        return static_cast<std::int64_t>(sound.size()) - framesPlayed;
    }
    void fill() {
        std::vector<float> left(448), right(left);
        while (unheard() <= ahead_) {
            buffer.renderAudio(left.data(), right.data(), 448);
            sound.insert(sound.end(), left.begin(), left.end());
        }
    }

    const int ahead_, tooNear_;
    std::int64_t begin_ = 0;
    std::unique_ptr<Synthesizer> synthesizer_ = loadedSynthesizer();
};

/// Two organ notes, the second on the right alone.
std::shared_ptr<const Timeline> song() {
    TrackBuilder track;
    track.program(0, 0, 19).control(0, 0, 91, 0).control(0, 0, 93, 0).noteOn(0, 0, 60, 100);
    return timeline({track.noteOff(1500, 0, 60).endOfTrack(500)});
}

float largestStep(std::span<const float> sound) {
    float step = 0;
    for (std::size_t at = 1; at < sound.size(); ++at)
        step = std::max(step, std::abs(sound[at] - sound[at - 1]));
    return step;
}

class PlaybackBufferTest : public ::testing::TestWithParam<int> {
protected:
    PlaybackBufferTest() { framesPlayed = 0; }

    static bool isSame(std::span<const float> one, std::size_t at, std::span<const float> other,
                       std::size_t otherAt, std::size_t frames) {
        return std::ranges::equal(one.subspan(at, frames), other.subspan(otherAt, frames));
    }
    static std::vector<float> uninterrupted() {
        Loudspeaker plain(0, 0);
        plain.sequencer.play(song(), 0);
        plain.listen(2.5);
        framesPlayed = 0;
        return plain.sound;
    }

    const std::vector<float> whole = uninterrupted();
    Loudspeaker speaker{GetParam(), 480};
    PlaybackBuffer& buffer = speaker.buffer;
};

INSTANTIATE_TEST_SUITE_P(Ahead, PlaybackBufferTest, ::testing::Values(0, 700, 9600, 30'000));

TEST_P(PlaybackBufferTest, APauseLosesNoSampleAndIsHeardAtOnce) {
    speaker.listen(0.3);
    speaker.sequencer.play(song(), 0);
    std::size_t began = speaker.respond();
    std::size_t songAt = 0;
    for (int turn = 0; turn < 20; ++turn) {
        SCOPED_TRACE(turn);
        speaker.listen(0.01 + 0.003 * turn);
        const double position = buffer.position();
        const auto since = framesPlayed - static_cast<std::int64_t>(began);
        EXPECT_NEAR(position * rate, static_cast<double>(since + static_cast<std::int64_t>(songAt)) - 108,
                    448);
        ASSERT_TRUE(speaker.sequencer.pause(position));
        const std::size_t paused = speaker.respond();
        EXPECT_LE(paused, static_cast<std::size_t>(framesPlayed) + 480 + 448);
        const std::size_t from = turn == 0 ? began : began + fade; // A resume fades in.
        const std::size_t count = paused > from ? paused - from : 0;
        EXPECT_TRUE(isSame(speaker.sound, from, whole, songAt + from - began, count));
        speaker.listen(0.05);
        EXPECT_TRUE(buffer.isSilent());
        EXPECT_EQ(buffer.position(), position);
        EXPECT_EQ(peak(std::span(speaker.sound).subspan(paused + fade)), 0);
        songAt += paused > began ? paused - began : 0;
        speaker.sequencer.resume();
        began = speaker.respond();
        if (turn % 4 == 3) { // Taken back at once.
            ASSERT_TRUE(speaker.sequencer.pause(position));
            songAt += speaker.respond() - began;
            speaker.sequencer.resume();
            began = speaker.respond() + (GetParam() > 0 ? fade : 0); // What has been written fades out.
        }
    }
    speaker.listen(0.5);
    EXPECT_TRUE(isSame(speaker.sound, began + fade, whole, songAt + fade, 9600));
    EXPECT_LT(largestStep(speaker.sound), 1.1F * largestStep(whole));
}

TEST_P(PlaybackBufferTest, EveryOrderFadesWhatIsHeardAndTheSongFollows) {
    for (int turn = 0; turn < 12; ++turn) {
        SCOPED_TRACE(turn);
        const double place = turn % 3 == 2 ? 1.7 : 0; // Where nothing sounds any more.
        speaker.sequencer.play(song(), place);
        speaker.listen(turn % 4 == 3 ? 0.01 : 0); // More is asked for before the answer.
        const std::size_t began = speaker.respond();
        speaker.listen(turn == 6 ? 0.005 : 0.3 + turn * 0.0017);
        const double heard = static_cast<double>(framesPlayed - static_cast<std::int64_t>(began)) / rate;
        EXPECT_NEAR(buffer.position(), std::clamp(place + heard, place, 2.0), 0.012);
        if (turn % 3 == 1) {
            speaker.sequencer.halt();
            const std::size_t halted = speaker.respond();
            speaker.listen(0.1);
            EXPECT_TRUE(buffer.isSilent());
            EXPECT_EQ(peak(std::span(speaker.sound).subspan(halted + fade)), 0);
        }
    }
    EXPECT_LT(largestStep(speaker.sound), 1.1F * largestStep(whole));
    speaker.sequencer.play(song(), 1.9);
    speaker.respond();
    bool wasEarly = false;
    while (!buffer.hasFinished()) {
        wasEarly = buffer.position() > 1.9999;
        speaker.listen(0.002);
    }
    EXPECT_FALSE(wasEarly) << "The end is told when it is heard.";
    EXPECT_EQ(buffer.position(), 2);
    speaker.listen(1);
    EXPECT_TRUE(buffer.isSilent());
}

TEST_P(PlaybackBufferTest, ASongThatLoopsIsHeardFromItsBeginningRightAfterItsEnd) {
    speaker.sequencer.setLooping(true);
    speaker.sequencer.play(song(), 1);
    const std::size_t secondLap = speaker.respond() + rate;
    speaker.listen(5.5);
    for (const std::size_t lap : {0U, 1U}) {
        float difference = 0; // The chorus swings on.
        for (std::size_t at = 108 + 1024; at < 95'000; ++at)
            difference =
                std::max(difference, std::abs(speaker.sound[secondLap + lap * 2 * rate + at] - whole[at]));
        EXPECT_LT(difference, peak(whole) / 30) << lap;
    }
    for (const std::int64_t lap : {3, 4}) {
        EXPECT_EQ(buffer.lap(), lap);
        EXPECT_NEAR(buffer.position(), 0.5, 0.03);
        ASSERT_TRUE(speaker.sequencer.pause(buffer.position(), lap));
        speaker.respond();
        EXPECT_EQ(buffer.lap(), lap);
        speaker.sequencer.resume();
        speaker.respond();
        speaker.listen(2);
    }
    speaker.sequencer.setLooping(false);
    speaker.listen(2);
    EXPECT_TRUE(buffer.hasFinished());
    EXPECT_EQ(buffer.position(), 2);
}

TEST_P(PlaybackBufferTest, WhatSoundsWhereASongBeginsAgainIsNotCutOff) {
    TrackBuilder held;
    held.program(0, 0, 19).control(0, 0, 91, 0).control(0, 0, 93, 0).noteOn(0, 0, 60, 100).endOfTrack(301);
    speaker.sequencer.setLooping(true);
    speaker.sequencer.play(timeline({held}), 0);
    const std::size_t began = speaker.respond();
    speaker.listen(3);
    for (std::size_t lap = 1; lap < 8; ++lap) {
        const auto seam = std::span(speaker.sound).subspan(began + lap * 14'448 + 172, 240);
        EXPECT_GT(peak(seam), peak(whole) / 3) << lap;
    }
    EXPECT_LT(largestStep(speaker.sound), 1.5F * largestStep(whole));
}

TEST_P(PlaybackBufferTest, WhatALostServerHasNotPlayedIsPlayedByTheNext) {
    speaker.sequencer.play(song(), 0);
    const std::size_t began = speaker.respond();
    speaker.listen(0.5);
    const double position = buffer.position();
    speaker.loseServer();
    EXPECT_NEAR(buffer.position(), position, 1e-4);
    speaker.listen(0.5);
    EXPECT_TRUE(isSame(speaker.sound, began, whole, 0, 45'000));
    EXPECT_NEAR(buffer.position(), position + 0.5, 0.01);
}

TEST_P(PlaybackBufferTest, TheVolumeChangesWhereTheSoundIsHeardAndLosesNothing) {
    speaker.sequencer.play(song(), 0);
    speaker.listen(0.5);
    buffer.volume().set(0.5);
    const std::size_t softer = speaker.respond();
    speaker.listen(0.3);
    const std::size_t began = speaker.sound.size();
    ASSERT_GT(began, softer + 4800);
    for (std::size_t at = softer + 480; at < softer + 4800; ++at)
        ASSERT_NEAR(speaker.sound[at], whole[at] / 8, 1e-6);
}

} // namespace
} // namespace tambrel
