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
    std::vector<float> render(double seconds, int block = 64) {
        std::vector<float> sound, left(static_cast<std::size_t>(block), 1), right(left); // All to be written.
        while (static_cast<double>(sound.size()) < seconds * sampleRate) {
            sequencer.renderAudio(left.data(), right.data(), block);
            sound.insert(sound.end(), left.begin(), left.end());
        }
        return sound;
    }

    std::unique_ptr<Synthesizer> synthesizer = loadedSynthesizer();
    Sequencer sequencer{sampleRate};
};

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

} // namespace
} // namespace tambrel
