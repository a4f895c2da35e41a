#include "Sequencer.h"
#include "SynthTesting.h"

#include <gmock/gmock.h>

#include <random>
#include <thread>
#include <tuple>

namespace tambrel {
namespace {

using namespace testing;

constexpr double sampleRate = 48000;

/// A sequencer on the real synthesizer, without a device.
class SequencerTest : public ::testing::Test {
protected:
    SequencerTest() { sequencer.setSynthesizer(*synthesizer); }

    /// The left channel of what is rendered in calls of `block` frames.
    static std::vector<float> render(Sequencer& sequencer, double seconds, int block) {
        std::vector<float> sound, left(static_cast<std::size_t>(block), 1), right(left); // All to be written.
        while (static_cast<double>(sound.size()) < seconds * sampleRate) {
            sequencer.renderAudio(left.data(), right.data(), block);
            sound.insert(sound.end(), left.begin(), left.end());
        }
        return sound;
    }
    std::vector<float> render(double seconds, int block = 64) { return render(sequencer, seconds, block); }

    std::unique_ptr<Synthesizer> synthesizer = loadedSynthesizer();
    Sequencer sequencer{sampleRate};
};

/// An organ's note under the pedal for two seconds, then two seconds of silence.
std::shared_ptr<const Timeline> noteAndSilence() {
    TrackBuilder track;
    track.program(0, 0, 19).control(0, 0, 64, 127).noteOn(0, 0, 60, 127).noteOff(1900, 0, 60);
    return timeline({track.control(100, 0, 64, 0).endOfTrack(2000)});
}

double firstAudible(const std::vector<float>& sound) {
    const auto found =
        std::ranges::find_if(sound, [](float sample) { return std::abs(sample) > 4 * inaudible; });
    return static_cast<double>(found - sound.begin());
}

TEST_F(SequencerTest, EventsLandWithinOneBlockOfTheirTime) {
    const auto note = [](std::uint32_t ticks) { return TrackBuilder().noteOn(ticks, 9, 76); };
    const auto tempos = TrackBuilder().tempo(0, 300'000).tempo(500, 1'000'001).tempo(1, 77'777);
    const std::tuple<const char*, std::shared_ptr<const Timeline>, double> rows[] = {
        {"at once", timeline({note(0)}), 0},
        {"between blocks", timeline({note(7)}), 0},
        {"after a seek", timeline({note(2999)}), 2.5},
        {"after a seek to the very moment", timeline({note(2999)}), 2.999},
        {"after tempo changes", timeline({tempos, note(2000)}, 480), 0},
    };
    synthesizer->send({0x99, 76, 64, 0});
    std::vector<float> direct(4800), right(4800);
    synthesizer->render(direct.data(), right.data(), 4800);
    const double attack = firstAudible(direct);
    ASSERT_LT(attack, 4800);
    for (const auto& [name, song, start] : rows) {
        SCOPED_TRACE(name);
        const double due = song->tempoMap().secondsAt(song->events().front().tick) - start;
        sequencer.halt();
        render(0.1);
        sequencer.play(song, start);
        EXPECT_NEAR(firstAudible(render(due + 0.2)) - attack, due * sampleRate, 64);
    }
}

TEST_F(SequencerTest, SoundsTheSameWhateverTheDeviceAsksFor) {
    TrackBuilder track;
    for (int step = 0; step < 20; ++step) {
        track.program(5, 0, 5 * step).noteOn(7, 0, 40 + step).pitchBend(13, 0, 800 * step);
        track.noteOn(17, 9, 35 + step).noteOff(3, 0, 40 + step);
    }
    const auto song = timeline({track});
    std::vector<float> expected;
    for (const int block : {64, 1, 37, 1000, 1024}) {
        const auto freshSynthesizer = loadedSynthesizer();
        Sequencer fresh(sampleRate);
        fresh.setSynthesizer(*freshSynthesizer);
        fresh.play(song, 0);
        auto sound = render(fresh, 1, block);
        sound.resize(48'000);
        if (block == 64)
            expected = sound;
        EXPECT_GT(peak(sound), 0.01F);
        EXPECT_TRUE(sound == expected) << "calls of " << block << " frames";
    }
}

TEST_F(SequencerTest, NothingSoundsAfterAHaltOrASeekIntoSilence) {
    for (const int block : {64, 1024, 37}) {
        SCOPED_TRACE(block);
        sequencer.play(noteAndSilence(), 0);
        ASSERT_GT(peak(render(0.5)), 0.01F);
        sequencer.play(noteAndSilence(), 2.5);
        render(0.05, block);
        EXPECT_LT(peak(render(0.5, block)), inaudible);

        sequencer.play(noteAndSilence(), 0);
        ASSERT_GT(peak(render(0.5)), 0.01F);
        sequencer.halt();
        EXPECT_FALSE(sequencer.isSilent());
        render(0.01, block);
        EXPECT_TRUE(sequencer.isSilent());
        EXPECT_EQ(peak(render(0.1, block)), 0);
        EXPECT_EQ(sequencer.position(), 0);
    }
}

TEST_F(SequencerTest, PositionRunsUpToTheDurationAndTheLastNotesRingOut) {
    const auto song =
        timeline({TrackBuilder().control(0, 0, 64, 127).noteOn(0, 0, 60, 127).endOfTrack(1001)});
    for (const double start : {0.0, 0.7, 1.001, 5.0}) {
        SCOPED_TRACE(start);
        sequencer.play(song, start);
        double before = std::min(start, song->duration());
        EXPECT_EQ(sequencer.position(), before);
        double rendered = 0;
        for (; !sequencer.hasFinished(); rendered += 64 / sampleRate) {
            ASSERT_LT(rendered, 1.1);
            render(64 / sampleRate);
            ASSERT_GE(sequencer.position(), before);
            ASSERT_LE(sequencer.position(), song->duration());
            before = sequencer.position();
        }
        EXPECT_NEAR(rendered, std::max(song->duration() - start, 0.0), 0.01); // A fade may come first.
        EXPECT_EQ(sequencer.position(), song->duration());
        EXPECT_EQ(peak(render(0.1)) > 0.001F, start == 0);
        for (rendered = 0; !sequencer.isSilent(); rendered += 0.1, render(0.1))
            ASSERT_LT(rendered, 11);
        EXPECT_EQ(peak(render(0.1)), 0);
    }
}

TEST_F(SequencerTest, TheLatestOrderCountsAndTheOthersAreFreed) {
    auto first = noteAndSilence(), second = noteAndSilence();
    const auto third = noteAndSilence();
    const std::weak_ptr<const Timeline> oldSongs[] = {first, second};
    sequencer.play(std::exchange(first, nullptr), 1);
    EXPECT_EQ(sequencer.position(), 1);
    render(0.1);
    sequencer.play(std::exchange(second, nullptr), 0.5);
    EXPECT_EQ(sequencer.position(), 0.5);
    EXPECT_FALSE(oldSongs[0].expired()) << "while it is still sounding";
    sequencer.halt();
    EXPECT_TRUE(oldSongs[1].expired()) << "as it was never taken";
    render(64 / sampleRate);
    sequencer.play(third, 2.5); // During the fade.
    EXPECT_FALSE(sequencer.isSilent());
    EXPECT_FALSE(sequencer.collect());
    render(0.1);
    EXPECT_TRUE(sequencer.collect());
    EXPECT_TRUE(oldSongs[0].expired());
    EXPECT_NEAR(sequencer.position(), 2.6, 0.02);
    sequencer.halt();
    render(0.1);
    EXPECT_TRUE(sequencer.collect());
    EXPECT_EQ(third.use_count(), 1);
}

TEST_F(SequencerTest, WaitsInSilenceForTheSynthesizer) {
    Sequencer early(sampleRate);
    early.play(noteAndSilence(), 0);
    EXPECT_EQ(peak(render(early, 0.02, 1024)), 0);
    EXPECT_EQ(early.position(), 0);
    early.setSynthesizer(*synthesizer);
    EXPECT_GT(peak(render(early, 0.02, 1024)), 0.001F);
}

TEST_F(SequencerTest, TakesOrdersFromAnotherThread) {
    const std::shared_ptr<const Timeline> songs[] = {noteAndSilence(),
                                                     timeline({TrackBuilder().endOfTrack(5)})};
    std::jthread rendering([this](const std::stop_token& stop) {
        std::vector<float> left(1024), right(1024);
        std::mt19937 engine(1);
        while (!stop.stop_requested())
            sequencer.renderAudio(left.data(), right.data(), 1 + static_cast<int>(engine() % 1024));
    });
    std::mt19937 engine(2);
    for (int action = 0; action < 20'000; ++action) {
        const auto what = engine() % 8;
        if (what == 0)
            sequencer.play(songs[engine() % 2], static_cast<double>(engine() % 5));
        else if (what == 1)
            sequencer.halt();
        else if (what == 2)
            sequencer.collect();
        else
            ASSERT_TRUE(sequencer.position() >= 0 && sequencer.position() <= 4);
    }
    sequencer.halt();
    while (!sequencer.isSilent())
        std::this_thread::yield();
    EXPECT_TRUE(sequencer.collect());
    rendering.request_stop();
    rendering.join();
    EXPECT_EQ(songs[0].use_count() + songs[1].use_count(), 2);
}

} // namespace
} // namespace tambrel
