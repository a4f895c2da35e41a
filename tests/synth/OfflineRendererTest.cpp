#include "OfflineRenderer.h"
#include "SynthTesting.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fstream>
#include <sndfile.h>

namespace tambrel {
namespace {

using namespace testing;

class OfflineRendererTest : public ::testing::Test {
protected:
    QTemporaryDir home;
    std::filesystem::path folder = home.path().toStdString();
    RenderOptions options{.soundBank = bankTimGM6mb, .onProgress = {}, .stop = {}};
};

TEST_F(OfflineRendererTest, WritesTheSongAndItsTailAtAnyRate) {
    const auto song =
        smfBytes(1, milliseconds(), {TrackBuilder().noteOn(0, 0, 60).noteOff(900, 0, 60).endOfTrack(600)});
    for (const int rate : {8000, 44'100, 96'000}) {
        SCOPED_TRACE(rate);
        options.sampleRate = rate;
        double progress = 0;
        options.onProgress = [&](double part) {
            EXPECT_GE(part, progress);
            progress = part;
        };
        const RenderResult result = renderToWAV(song, folder / "song.wav", options);
        EXPECT_EQ(progress, 1);
        EXPECT_FALSE(result.wasStopped);
        EXPECT_GT(result.seconds, 1.5);
        EXPECT_LT(result.seconds, 4);

        SF_INFO info{};
        SNDFILE* file = sf_open((folder / "song.wav").c_str(), SFM_READ, &info);
        ASSERT_NE(file, nullptr);
        std::vector<float> sound(static_cast<std::size_t>(info.frames * info.channels));
        sf_readf_float(file, sound.data(), info.frames);
        sf_close(file);
        EXPECT_EQ(info.channels, 2);
        EXPECT_EQ(info.samplerate, rate);
        EXPECT_EQ(info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        EXPECT_NEAR(static_cast<double>(info.frames) / rate, result.seconds, 1e-9);
        EXPECT_NEAR(peak(sound), result.peak, 0.001);
        EXPECT_GT(peak(sound), 0.01F);
        EXPECT_LT(peak({sound.end() - rate / 100, sound.end()}), 2 * inaudible);
    }
}

TEST_F(OfflineRendererTest, LeavesTheFolderAsItWasWhenItFailsOrIsStopped) {
    std::ofstream(folder / "old.wav") << "old";
    std::filesystem::create_directory(folder / "directory");
    std::filesystem::create_symlink("/dev/null", folder / "device");
    // Enough that building the timeline notices that it should stop.
    const auto song = smfBytes(1, milliseconds(), {randomTrack(1, 70'000)});
    for (const char* output : {"directory", "directory/", "device", "old.wav/new.wav"})
        EXPECT_THROW(renderToWAV(song, folder / output, options), RenderError) << output;
    std::stop_source stop;
    options.stop = stop.get_token();
    stop.request_stop();
    EXPECT_TRUE(renderToWAV(song, folder / "old.wav", options).wasStopped);
    EXPECT_EQ(std::filesystem::file_size(folder / "old.wav"), 3U);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "device"));
}

} // namespace
} // namespace tambrel
