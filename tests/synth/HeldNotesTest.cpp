#include "Sequencer.h"
#include "SynthTesting.h"

#include <gtest/gtest.h>

namespace tambrel {
namespace {

using namespace testing;

constexpr double sampleRate = 48000;

/// A sequencer on the real synthesizer, without a device.
class HeldNotesTest : public ::testing::Test {
protected:
    HeldNotesTest() { sequencer.setSynthesizer(*synthesizer); }

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

double level(const std::vector<float>& sound, double from, double to) {
    double sum = 0;
    const auto first = static_cast<std::size_t>(from * sampleRate),
               last = static_cast<std::size_t>(to * sampleRate);
    for (std::size_t frame = first; frame < last; ++frame)
        sum += double{sound[frame]} * sound[frame];
    return 10 * std::log10(sum / static_cast<double>(last - first) + 1e-12);
}

TEST_F(HeldNotesTest, NotesThatAreHeldSoundAfterASeekAsInPlayThrough) {
    struct Row {
        const char* name;
        int program, channel, key;
        double place;
        bool sounds = true;
    };
    const Row rows[] = {
        {"piano, just struck", 0, 0, 60, 0.05},
        {"piano, decaying", 0, 0, 60, 2.5},
        {"low piano, long ago", 0, 0, 36, 5},
        {"guitar, long ago", 24, 0, 50, 3},
        {"organ", 19, 0, 60, 9},
        {"strings, still swelling", 48, 0, 60, 0.3},
        {"strings", 48, 0, 60, 4},
        {"a bass, with its filter closing", 38, 0, 40, 0.5},
        {"drums are left out", 0, 9, 49, 0.3, false},
        {"a sample that has ended", 115, 0, 60, 5, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TrackBuilder track;
        track.program(0, row.channel, row.program)
            .noteOn(0, row.channel, row.key, 100)
            .control(10, row.channel, 64, 127);
        const auto song = timeline({track.noteOff(40, row.channel, row.key).endOfTrack(12'000)});
        sequencer.halt();
        render(0.02);
        sequencer.play(song, 0);
        render(row.place);
        const auto playedThrough = render(1);
        sequencer.halt();
        render(0.02);
        sequencer.play(song, row.place);
        const auto sought = render(1);
        if (row.sounds) {
            EXPECT_NEAR(level(sought, 0, 1), level(playedThrough, 0, 1), 3.5);
            EXPECT_NEAR(level(sought, 0.02, 0.2), level(playedThrough, 0.02, 0.2), 3.5);
        } else {
            EXPECT_LT(peak(sought), 10 * inaudible);
        }
        EXPECT_LT(std::abs(sought.front()), 10 * inaudible) << "A step at the start.";
    }
}

TEST_F(HeldNotesTest, APauseKeepsEveryNoteAsItSounds) {
    sequencer.play(noteAndSilence(), 0);
    render(0.5);
    ASSERT_TRUE(sequencer.pause());
    const auto fadeOut = render(0.02);
    const double paused = sequencer.position();
    EXPECT_NEAR(paused, 0.5, 0.01);
    EXPECT_GT(peak(fadeOut), 0.01F);
    EXPECT_TRUE(sequencer.isSilent());
    EXPECT_EQ(peak(render(1)), 0);
    EXPECT_EQ(sequencer.position(), paused);
    sequencer.resume();
    const auto resumed = render(0.5);
    EXPECT_NEAR(sequencer.position(), paused + 0.5, 0.01);

    const auto other = loadedSynthesizer();
    Sequencer uninterrupted(sampleRate);
    uninterrupted.setSynthesizer(*other);
    uninterrupted.play(noteAndSilence(), 0);
    const auto expected = render(uninterrupted, 1.1, 64);
    constexpr std::size_t fade = 5 * 64;
    EXPECT_TRUE(std::equal(resumed.begin() + fade, resumed.end() - 64, expected.begin() + 24'000 + 2 * fade));

    ASSERT_TRUE(sequencer.pause());
    sequencer.resume(); // Before it has come into force.
    EXPECT_GT(level(render(0.1), 0.05, 0.1), -60);
    sequencer.play(noteAndSilence(), 0);
    EXPECT_FALSE(sequencer.pause()) << "as it has not begun";
    render(0.1);
    EXPECT_EQ(peak(render(0.1)), 0);
}

} // namespace
} // namespace tambrel
