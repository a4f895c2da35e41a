#include "OfflineRenderer.h"
#include "SynthTesting.h"

#include <gmock/gmock.h>

#include <QTemporaryDir>

#include <fstream>
#include <sndfile.h>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace testing;

class OfflineRendererTest : public ::testing::Test {
protected:
    [[nodiscard]] std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename());
        std::ranges::sort(names);
        return names;
    }

    QTemporaryDir home;
    std::filesystem::path folder = home.path().toStdString();
    const Bytes song =
        smfBytes(1, milliseconds(), {TrackBuilder().noteOn(0, 0, 60).noteOff(900, 0, 60).endOfTrack(600)});
    RenderOptions options{.soundBank = bankTimGM6mb, .onProgress = {}, .stop = {}};
};

TEST_F(OfflineRendererTest, WritesTheSongAndItsTailAtAnyRate) {
    for (const int rate : {8000, 44'100, 48'000, 96'000}) {
        SCOPED_TRACE(rate);
        options.sampleRate = rate;
        double progress = 0;
        options.onProgress = [&](double part) {
            EXPECT_GE(part, progress);
            EXPECT_LE(part, 1);
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
        const std::vector<float> end(sound.end() - rate / 100, sound.end());
        EXPECT_LT(peak(end), 2 * inaudible);
    }
    EXPECT_THAT(files(), ElementsAre("song.wav"));
}

TEST_F(OfflineRendererTest, LeavesTheFolderAsItWasWhenItFailsOrIsStopped) {
    std::ofstream(folder / "old.wav") << "old";
    std::ofstream(folder / "bank.sf2") << "no bank";
    std::filesystem::create_directory(folder / "directory");
    std::filesystem::create_symlink("/dev/null", folder / "device");
    const auto before = files();
    RenderOptions brokenBank = options;
    brokenBank.soundBank = folder / "bank.sf2";
    EXPECT_THROW(renderToWAV(song, folder / "old.wav", brokenBank), SoundBankError);
    for (const char* output : {"directory", "directory/", "device", "no/new.wav", "old.wav/new.wav"})
        EXPECT_THROW(renderToWAV(song, folder / output, options), RenderError) << output;

    TrackBuilder many; // Enough that building the timeline notices that it should stop.
    for (int note = 0; note < 70'000; ++note)
        many.noteOn(1, 0, 60).noteOff(1, 0, 60);
    for (const bool atOnce : {true, false}) {
        std::stop_source stop;
        options.stop = stop.get_token();
        options.onProgress = [&](double part) { part > 0.001 ? stop.request_stop() : false; };
        if (atOnce)
            stop.request_stop();
        for (const char* output : {"old.wav", "new.wav"})
            EXPECT_TRUE(
                renderToWAV(smfBytes(1, milliseconds(), {many}), folder / output, options).wasStopped);
    }
    EXPECT_EQ(files(), before);
    EXPECT_EQ(std::filesystem::file_size(folder / "old.wav"), 3U);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "device"));
}

} // namespace
} // namespace tambrel
