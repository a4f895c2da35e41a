#include "AudioDrivers.h"
#include "BlackLEDActivityView.h"
#include "DrivenWindow.h"
#include "GeneralMIDIEngine.h"
#include "TimeText.h"

#include <random>

namespace tambrel {
namespace {

using testing::clipBytes;
using testing::smfBytes;
using testing::TrackBuilder;

std::string playTitle(PlaybackMode mode) {
    return mode == PlaybackMode::idle ? "Play" : mode == PlaybackMode::playing ? "Pause" : "Resume";
}

/// The real window on the real player, with a hand that never rests.
class WindowOnTheEngineTest : public ::testing::Test {
protected:
    explicit WindowOnTheEngineTest(std::filesystem::path bank = "/usr/share/sounds/sf2/TimGM6mb.sf2",
                                   std::string driver = std::string(silentDriverName))
        : engine({.soundBank = std::move(bank), .audioDrivers = {std::move(driver)}}) {
        engine.onFailure = [](const std::string& reason) { ADD_FAILURE() << reason; };
    }

    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(hand() >> 8) % limit; }

    void load() {
        const auto& file = songs[below(static_cast<std::uint32_t>(songs.size()))];
        if (below(2) == 0)
            driven.controller->load(file);
        else
            EXPECT_TRUE(driven.drop(QUrl::fromLocalFile(file.c_str())));
        loadsWanted = driven.finished.size() + 1;
        const bool waits = below(2) == 0;
        EXPECT_TRUE(!waits || driven.waitForLoads(*loadsWanted));
    }

    void clear() {
        driven.click("clearButton");
        loadsWanted.reset();
    }

    /// Looks on until what plays has moved on, or is over.
    void listen() {
        const auto& player = driven.controller->player();
        const double before = player.position();
        EXPECT_TRUE(QTest::qWaitFor(
            [&] { return player.mode() != PlaybackMode::playing || player.position() != before; }));
    }

    void act() {
        switch (below(9)) {
        case 0:
        case 1:
            return load();
        case 2:
        case 3:
            return driven.click("playPauseButton");
        case 4:
            return driven.clickTimeline(below(101) / 100.0);
        case 5:
            return driven.click("loudnessButton");
        case 6:
            return driven.click(below(2) == 0 ? "stopButton" : "rtzButton");
        case 7:
            return below(2) == 0 ? clear() : QCoreApplication::processEvents();
        default:
            return below(4) == 0 ? listen() : QCoreApplication::processEvents();
        }
    }

    void expectAgreement() {
        const auto& player = driven.controller->player();
        const auto& state = driven.controller->playbackState();
        const auto& timeline = driven.view<RetroTimelineView>("timeline");
        const bool isPlaying = player.mode() == PlaybackMode::playing;
        const bool isLoaded = state.originalMIDIData().has_value();
        const bool isLoading = loadsWanted && driven.finished.size() < *loadsWanted;
        EXPECT_EQ(driven.title("playPauseButton"), playTitle(player.mode()));
        EXPECT_EQ(driven.title("loudnessButton"), state.loudnessEnabled() ? "Loudness On" : "Loudness");
        EXPECT_EQ(driven.view("loudnessButton").isEnabled(), !isPlaying);
        EXPECT_EQ(driven.view("logoView").isVisible(), isLoaded);
        EXPECT_EQ(driven.label("lengthLabel"), "LENGTH " + timeText(player.duration()));
        EXPECT_EQ(driven.label("progressLabel"), "PROGRESS " + timeText(timeline.position()));
        EXPECT_EQ(timeline.duration(), player.duration());
        const bool isLoadingVariant = !isPlaying && driven.label("statusLabel") == "Loading";
        const bool moves = driven.view<BlackLEDActivityView>("activityView").isAnimating();
        EXPECT_TRUE(isLoading || moves == (isPlaying || isLoadingVariant));
        EXPECT_FALSE(isLoaded && driven.label("fileLabel") == "DROP MIDI FILE");
    }

    TestFiles files;
    const std::vector<std::filesystem::path> songs{
        files.write("a.mid", smallSong()),
        files.write("b.mid", smallSong(false)),
        files.write("short.mid", smfBytes(0, 480, {TrackBuilder().noteOn(0, 0, 60).noteOff(10, 0, 60)})),
        files.write("still.mid", smfBytes(1, 480, {TrackBuilder().tempo(0, 500'000)})),
        files.write("hanging.mid",
                    smfBytes(0, 480, {TrackBuilder().noteOn(0, 0, 60).control(960, 0, 64, 127)})),
        files.write("c.midi2", clipBytes({0xF0200000, 0, 0, 0, 0x20903C64, 0x00400780, 0x20803C00})),
        files.write("bad.mid", {'M', 'T', 'h', 'd'}),
        files.path("none.mid"),
    };
    std::optional<std::weak_ptr<const Timeline>> adopted; ///< Of the newest song that was loaded.
    GeneralMIDIEngine engine;
    DrivenWindow driven{[this](const PlayableSong& song) {
                            adopted = song.timeline;
                            return engine.makePlayer(song);
                        },
                        false};
    std::minstd_rand hand{20};
    std::optional<std::size_t> loadsWanted; ///< How many loads will have ended when the newest has.
};

TEST_F(WindowOnTheEngineTest, AgreesWithThePlayerWhateverTheUserDoes) {
    ASSERT_TRUE(driven.load(songs.front()));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !engine.isLoadingSoundBank(); }, 30'000));
    std::map<PlaybackMode, int> modes;
    for (int step = 0; step < 1000 && !HasFailure(); ++step) {
        SCOPED_TRACE(step);
        act();
        expectAgreement();
        ++modes[driven.controller->player().mode()];
    }
    EXPECT_GT(modes[PlaybackMode::playing], 100) << "or there was little to disagree about";
    EXPECT_GT(modes[PlaybackMode::paused], 20);
    ASSERT_TRUE(!loadsWanted || driven.waitForLoads(*loadsWanted));
    ASSERT_TRUE(driven.load(songs.front()));
    driven.click("playPauseButton");
    listen();
    EXPECT_FALSE(engine.isSilent());
    EXPECT_FALSE(adopted->expired());
    clear();
    EXPECT_TRUE(QTest::qWaitFor([&] { return adopted->expired(); }, 4000)) << "while the device stays open";
    EXPECT_TRUE(QTest::qWaitFor([&] { return engine.isSilent(); }, 10'000));
}

struct WindowWithoutBankTest : WindowOnTheEngineTest {
    WindowWithoutBankTest() : WindowOnTheEngineTest("/no/such/bank.sf2") {}
};

TEST_F(WindowWithoutBankTest, SaysThatThereIsNoneAndKeepsNoSong) {
    ASSERT_TRUE(driven.load(songs.front()));
    EXPECT_EQ(driven.label("statusLabel"), "Playback Error");
    EXPECT_THAT(driven.finished.back(), ::testing::HasSubstr("/no/such/bank.sf2"));
    ASSERT_TRUE(adopted);
    EXPECT_TRUE(QTest::qWaitFor([&] { return adopted->expired(); }));
    expectAgreement();
}

struct WindowWithoutSoundTest : WindowOnTheEngineTest {
    WindowWithoutSoundTest() : WindowOnTheEngineTest("/usr/share/sounds/sf2/TimGM6mb.sf2", "no-such-driver") {
        engine.onOutputFailure = [this](const std::string& reason) {
            driven.controller->playbackFailed(reason);
        };
    }
};

TEST_F(WindowWithoutSoundTest, KeepsTheSongAndSaysAtEveryPlayWhatWasTried) {
    ASSERT_TRUE(driven.load(songs.front()));
    for (int attempt = 1; attempt <= 3; ++attempt) {
        driven.controller->seek(attempt == 3 ? 0.1 : 0);
        driven.click("playPauseButton");
        EXPECT_EQ(driven.label("statusLabel"), "Loaded") << "until it has been tried again";
        ASSERT_TRUE(QTest::qWaitFor([&] { return driven.beeps == attempt; }, 30'000));
        EXPECT_EQ(driven.label("statusLabel"), "Playback Error");
        EXPECT_THAT(driven.label("explanationLabel"), ::testing::HasSubstr("Tried no-such-driver: "));
        EXPECT_EQ(driven.label("fileLabel"), "a.mid");
        EXPECT_EQ(driven.controller->player().position(), attempt == 3 ? 0.1 : 0);
        expectAgreement();
    }
    clear();
    EXPECT_EQ(driven.label("statusLabel"), "READY");
}

} // namespace
} // namespace tambrel
