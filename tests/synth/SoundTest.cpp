#include "OfflineRenderer.h"
#include "SoundMeasures.h"
#include "SynthTesting.h"
#include "TestFiles.h"

#include <gmock/gmock.h>

#include <numbers>
#include <optional>
#include <sndfile.h>
#include <span>

namespace tambrel {
namespace {

using namespace testing;

constexpr double none = -36; // Decibels at most: the controller for pan goes to 63 of 64 on the right.

struct Row {
    const char* name;
    TrackBuilder before;
    double cents, left, right; // Decibels are those above a note at the default volume.
    int channel = 0, key = 60, velocity = 100;
};

TEST(SoundTest, IsAsLoudAsHighAndWhereTheMessagesSay) {
    const double centre = 20 * std::log10(std::numbers::sqrt2 / 2);
    const auto volume = [](double part) { return 40 * std::log10(part); };
    const Row rows[] = {
        {"left", dry(), 0, 0, none},
        {"right", dry().program(0, 0, 1), 0, none, 0},
        {"centre", dry().program(0, 0, 2), 0, centre, centre},
        {"pan to the left", dry().program(0, 0, 2).control(0, 0, 10, 0), 0, 0, none},
        {"pan to the right", dry().program(0, 0, 2).control(0, 0, 10, 127), 0, none, 0},
        {"key", dry(), 1200, 0, none, 0, 72},
        {"another channel", dry().program(0, 1, 1).pitchBend(0, 0, 0), 0, none, 0, 1},
        {"soft", dry(), 0, volume(0.64), none, 0, 60, 64},
        {"hard", dry(), 0, volume(1.27), none, 0, 60, 127},
        {"volume", dry().control(0, 0, 7, 50), 0, volume(0.5), none},
        {"expression", dry().control(0, 0, 11, 64), 0, volume(64.0 / 127), none},
        {"master volume", dry().sysex(0, halfVolume), 0, volume(8192.0 / 16383), none},
        {"bend up", dry().pitchBend(0, 0, 16'383), 200, 0, none},
        {"bend down", dry().pitchBend(0, 0, 0), -200, 0, none},
        {"bend a little", dry().pitchBend(0, 0, 8192 + 64), 200.0 * 64 / 8192, 0, none},
        {"channel pressure", dry().channelPressure(0, 0, 64), 50, 0, none},
        {"key pressure", dry().polyphonicPressure(0, 0, 60, 32), 50, 0, none},
        {"bend range", parameter(0, 12).pitchBend(0, 0, 12'288), 600, 0, none},
        {"bend range, and data for no parameter",
         parameter(0, 12)
             .control(0, 0, 101, 127)
             .control(0, 0, 100, 127)
             .control(0, 0, 6, 1)
             .pitchBend(0, 0, 4096),
         -600, 0, none},
        {"fine tuning", parameter(1, 96), 50, 0, none},
        {"fine tuning, low half last", parameter(1, 64).control(0, 0, 38, 127), 100.0 * 127 / 8192, 0, none},
        {"coarse tuning", parameter(2, 59), -500, 0, none},
        {"generator",
         dry().control(0, 0, 99, 120).control(0, 0, 98, 51).control(0, 0, 38, 12).control(0, 0, 6, 64), 1200,
         0, none},
        {"all controllers reset",
         parameter(0, 3)
             .pitchBend(0, 0, 0)
             .control(0, 0, 11, 1)
             .control(0, 0, 121, 0)
             .pitchBend(0, 0, 16'383),
         300, 0, none},
        {"bank, high half", dry().control(0, 0, 0, 8).program(0, 0, 0), 1200, 0, none},
        {"bank, low half", dry().control(0, 0, 32, 8).program(0, 0, 0), 0, 0, none},
        {"bank, low half, in XG", dry().sysex(0, xgOn).control(0, 0, 32, 8).program(0, 0, 0), 1200, 0, none},
        {"a program that the bank lacks", dry().program(0, 0, 99), 0, 0, none},
        {"a variation that the bank lacks", dry().control(0, 0, 0, 8).program(0, 0, 1), 0, none, 0},
        {"a kit that the bank lacks", dry().program(0, 9, 40), 700, centre, centre, 9},
        {"drums", dry(), 700, centre, centre, 9},
        {"rhythm part", dry().sysex(0, rhythmPart(1, 1)), 700, centre, centre},
        {"melodic part", dry().sysex(0, rhythmPart(0, 0)), 0, 0, none, 9},
        {"mono elsewhere", dry().control(0, 0, 126, 16).program(0, 1, 1), 0, none, 0, 1},
        {"omni elsewhere", dry().control(0, 0, 124, 0).program(0, 1, 1), 0, none, 0, 1},
        {"gone with a reset", parameter(2, 59).control(0, 0, 7, 0).sysex(0, halfVolume).sysex(0, gmOn), 0, 0,
         none},
    };
    std::optional<double> usual;
    RealTime player;
    for (const Row& row : rows) {
        auto track = row.before;
        track.noteOn(500, row.channel, row.key, row.velocity).endOfTrack(600);
        for (const double start : {0.0, 0.5}) {
            SCOPED_TRACE(std::string(row.name) + (start == 0 ? ", played" : ", sought"));
            player.sequencer.play(timeline({track}), start);
            player.heard = {48000, {}, {}};
            const Sound& sound = player.listen(1.1 - start);
            const auto left = sound.cut(sound.left, 0.6 - start, 1.1 - start);
            const auto right = sound.cut(sound.right, 0.6 - start, 1.1 - start);
            if (!usual)
                usual = decibels(left);
            EXPECT_NEAR(std::max(decibels(left) - *usual, none), row.left, 0.1);
            EXPECT_NEAR(std::max(decibels(right) - *usual, none), row.right, 0.1);
            // FluidSynth bends by 127 parts of 128, in whole cents.
            EXPECT_NEAR(cents(row.left == none ? right : left, 48000), row.cents,
                        0.6 + std::abs(row.cents) / 100);
        }
    }
}

/// The largest step from one sample to the next.
float largestStep(Samples samples) {
    float step = 0;
    for (std::size_t at = 1; at < samples.size(); ++at)
        step = std::max(step, std::abs(samples[at] - samples[at - 1]));
    return step;
}

TEST(SoundTest, FadesWithoutAStepAndIsSilentAfter) {
    const auto song =
        timeline({dry().noteOn(0, 0, 60).noteOff(1500, 0, 60).noteOn(500, 0, 60).endOfTrack(2000)});
    RealTime player;
    player.sequencer.play(song, 0);
    const float own = largestStep(player.listen(0.2).left);
    ASSERT_GT(own, 0.001F);
    for (int turn = 0; turn < 40; ++turn) { // Wherever the wave is.
        player.heard = {48000, {}, {}};
        player.sequencer.play(song, 0);
        const double stopped = player.listen(0.1 + turn * 0.0017).length();
        EXPECT_LT(decibels(player.heard.cut(player.heard.right, 0, 9)), -120);
        if (turn % 2 == 0)
            player.sequencer.halt();
        else
            player.sequencer.play(song, 1.6); // Where nothing sounds.
        const Sound& sound = player.listen(0.3);
        EXPECT_LT(largestStep(sound.left), own * 1.01F) << turn;
        EXPECT_GT(decibels(sound.cut(sound.left, 0.02, stopped)), -50);
        EXPECT_GT(peak(sound.cut(sound.left, stopped, stopped + 0.003)), own);
        EXPECT_LT(peak(sound.cut(sound.left, stopped + 0.008, 9)), turn % 2 == 0 ? 1e-30F : inaudible)
            << turn;
    }
}

/// A WAV file as it is read by others.
Sound readWAV(const std::filesystem::path& file) {
    SF_INFO info{};
    SNDFILE* const opened = sf_open(file.c_str(), SFM_READ, &info);
    EXPECT_EQ(info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(info.channels, 2);
    Sound sound{static_cast<double>(info.samplerate), {}, {}};
    for (float frame[2]; sf_readf_float(opened, frame, 1) == 1;) {
        sound.left.push_back(frame[0]);
        sound.right.push_back(frame[1]);
    }
    sf_close(opened);
    return sound;
}

TEST(SoundTest, AWAVHoldsTheSongAndItsTailAtAnyRate) {
    const TestFiles files;
    auto track = dry().program(0, 1, 2);
    track.noteOn(500, 0, 60).noteOff(500, 0, 60).noteOn(0, 1, 72);
    track.control(1, 1, 66, 127).control(0, 1, 64, 127).endOfTrack(499); // Held when the song ends.
    const auto song = Timeline::build(smfBytes(1, milliseconds(), {track}));
    for (const int rate : {8000, 44'100, 96'000}) {
        SCOPED_TRACE(rate);
        double progress = 0;
        RenderOptions options;
        options.soundBanks = {testBank};
        options.format.rate = rate;
        options.onProgress = [&](double part) {
            EXPECT_GE(part, progress);
            progress = part;
        };
        const RenderResult result = renderToFile(files.path("first.wav"), song, options, true);
        EXPECT_EQ(std::exchange(progress, 0), 1);
        static_cast<void>(renderToFile(files.path("second.wav"), song, options, true));
        EXPECT_TRUE(content(files.path("first.wav")) == content(files.path("second.wav")));
        const Sound sound = readWAV(files.path("first.wav"));
        EXPECT_EQ(sound.sampleRate, rate);
        EXPECT_FALSE(result.wasStopped);

        const auto left = sound.cut(sound.left, 0.6, 0.95), both = sound.cut(sound.right, 1.1, 1.45);
        const double loud = decibels(both);
        EXPECT_LT(peak(sound.cut(sound.left, 0, 0.495)), 2 * inaudible);
        EXPECT_GT(peak(sound.cut(sound.left, 0.5, 0.51)), 0.01F);
        EXPECT_NEAR(cents(left, rate), 0, 0.5);
        EXPECT_LT(peak(sound.cut(sound.right, 0, 0.995)), 2 * inaudible);
        EXPECT_NEAR(cents(both, rate), 1200, 0.5);
        EXPECT_NEAR(loud - decibels(left), -3, 0.1);
        // The release of half a second, linear in decibels, goes down by 96.
        const double first = decibels(sound.cut(sound.left, 1.55, 1.65));
        EXPECT_NEAR(first - loud, -16, 1);
        EXPECT_NEAR(decibels(sound.cut(sound.left, 1.65, 1.75)) - first, -19.2, 0.2);
        EXPECT_NEAR(sound.length(), 2.0, 0.2);
        EXPECT_NEAR(result.seconds, sound.length(), 1e-9);
        EXPECT_NEAR(result.peak, peak(sound.left), 1e-4);
        EXPECT_LT(result.peak, 0.15) << "which leaves room for more voices";
        const double power =
            std::pow(10, decibels(sound.left) / 10) + std::pow(10, decibels(sound.right) / 10);
        EXPECT_NEAR(result.rms, std::sqrt(power / 2), 1e-5);
    }
}

TEST(SoundTest, AFolderStaysAsItWasWhenAWAVFailsOrIsStopped) {
    const TestFiles files;
    files.write("old.wav", {1, 2, 3});
    std::filesystem::create_directory(files.path("directory"));
    std::filesystem::create_symlink("/dev/null", files.path("device"));
    RenderOptions options;
    options.soundBanks = {testBank};
    const auto song = Timeline::build(smfBytes(1, milliseconds(), {dry().endOfTrack(1000)}));
    for (const char* output : {"directory", "directory/", "device", "old.wav/new.wav"})
        EXPECT_THROW(renderToFile(files.path(output), song, options, true), RenderError) << output;
    std::stop_source stop;
    options.stop = stop.get_token();
    options.onProgress = [&stop](double) { stop.request_stop(); };
    EXPECT_TRUE(renderToFile(files.path("old.wav"), song, options, true).wasStopped);
    EXPECT_EQ(content(files.path("old.wav")), "\1\2\3");
    EXPECT_TRUE(std::filesystem::is_symlink(files.path("device")));
    const auto left = std::distance(std::filesystem::directory_iterator(files.path("")),
                                    std::filesystem::directory_iterator());
    EXPECT_EQ(left, 3) << "with nothing half written";
}

} // namespace
} // namespace tambrel
