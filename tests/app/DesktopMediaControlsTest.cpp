#include "DesktopMediaControls.h"
#include "DrivenWindow.h"
#include "LocalPath.h"
#include "PrivateSessionBus.h"
#include "StandInPortal.h"

namespace tambrel {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Texts = std::vector<std::string>;

const QString program = "org.mpris.MediaPlayer2.";

/// The real window and its controls on a bus of their own.
class DesktopMediaControlsTest : public ::testing::Test {
protected:
    [[nodiscard]] std::string errorsOf(const QString& method, const QStringList& words = {}) const {
        return bus.callPlayer(program + method, words).errors;
    }
    /// The failure of the load, or "".
    [[nodiscard]] std::string loadAddress(const QByteArray& address) const {
        const auto before = driven.finished.size();
        EXPECT_EQ(errorsOf("Player.OpenUri", {"'" + address + "'"}), "");
        EXPECT_TRUE(driven.waitForLoads(before + 1));
        return driven.finished.back();
    }
    [[nodiscard]] PlaybackMode mode() const { return driven.controller->player().mode(); }
    void begin() { ASSERT_TRUE(driven.load(song)); }

    TestFiles files;
    PlayerScript script;
    PrivateSessionBus bus;
    DrivenWindow driven{script.factory()};
    const std::filesystem::path song = files.write("a song.mid", smallSong());
    int raised = 0;
    std::optional<DesktopMediaControls> controls{std::in_place, *driven.window, [this] { ++raised; },
                                                 *driven.controller, bus.connect()};
};

TEST_F(DesktopMediaControlsTest, DoesWhatTheDesktopSaysAndTellsItWhatTheWindowDoes) {
    begin();
    BusMonitor monitor(bus, program + "tambrel");
    const auto click = [this](const char* button) { return [this, button] { driven.click(button); }; };
    const auto call = [this](const char* method) {
        return [this, method] { EXPECT_EQ(errorsOf(method), ""); };
    };
    const std::string playing = "{'PlaybackStatus': <'Playing'>}";
    const std::string stopped = "{'PlaybackStatus': <'Stopped'>}";
    const struct {
        const char* title;
        std::function<void()> act;
        Texts heard;
    } rows[] = {
        {"a click on the timeline", [this] { driven.clickTimeline(0.5); }, {"Seeked (int64 5000000,)"}},
        {"it plays, but not from the beginning", call("Player.Play"), {playing, "Seeked (int64 5000000,)"}},
        {"Return to Zero", click("rtzButton"), {"Seeked (int64 0,)"}},
        {"it is over",
         [this] {
             script.playing = false;
             script.position = script.duration;
         },
         {stopped, "Seeked (int64 0,)"}},
        {"it plays again", click("playPauseButton"), {playing}},
        {"it stops where it has just begun", call("Player.Stop"), {stopped}},
        {"Loudness, which loads it again",
         [this] {
             driven.click("loudnessButton");
             driven.click("playPauseButton");
         },
         {playing}},
        {"it is paused", call("Player.Pause"), {"{'PlaybackStatus': <'Paused'>}"}},
        {"a step on",
         [this] { EXPECT_EQ(errorsOf("Player.Seek", {"int64 2500000"}), ""); },
         {"Seeked (int64 2500000,)"}},
        {"it is cleared", click("clearButton"), {"'Metadata': <@a{sv} {}>, 'PlaybackStatus': <'Stopped'>"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        row.act();
        const Texts lines = monitor.until(row.heard.back());
        ASSERT_EQ(lines.size(), row.heard.size());
        for (std::size_t at = 0; at < lines.size(); ++at)
            EXPECT_THAT(lines[at], HasSubstr(row.heard[at]));
    }
    const auto lines = driven.recorded.settled();
    const std::string coordinator = " button or menu item | TambrelTransportCoordinator.";
    EXPECT_EQ(std::ranges::count(lines, "User Action: Clicked Play/Pause" + coordinator + "playPause"), 4);
    EXPECT_THAT(lines, Contains("User Action: Clicked Stop" + coordinator + "stop"));
}

TEST_F(DesktopMediaControlsTest, OpensAndPlaysASongOfThisComputerWhateverItsName) {
    for (const char* name : {"100%25.mid", "#1? \xC3\x89tude.MID", "' no UTF-8 \xFF.midi"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(loadAddress(fileURI(files.write(name, smallSong())).toLatin1()), "");
        EXPECT_EQ(mode(), PlaybackMode::playing);
        EXPECT_EQ(driven.controller->loadedFile()->url, files.path(name));
    }
    EXPECT_EQ(bus.run({"playerctl", "metadata", "title"}).output, "' no UTF-8 \uFFFD");
    EXPECT_THAT(errorsOf("Player.OpenUri", {"'file://host" + QString(song.c_str()) + "'"}),
                HasSubstr("NotSupported"));
    EXPECT_THAT(loadAddress("file://localhost/no/raw %C3%89 name.mid"),
                HasSubstr("raw \xC3\x89 name.mid: No such file"));
    EXPECT_EQ(mode(), PlaybackMode::idle);
}

TEST_F(DesktopMediaControlsTest, RaisesAndClosesTheWindow) {
    EXPECT_EQ(errorsOf("Raise"), "");
    EXPECT_EQ(raised, 1);
    EXPECT_EQ(errorsOf("Quit"), "");
    EXPECT_FALSE(driven.window->isVisible());
    controls.reset();
    EXPECT_NE(errorsOf("Raise"), "");
    driven.click("playPauseButton"); // Nobody listens any more.
}

TEST_F(DesktopMediaControlsTest, KeepsTheComputerAwakeWhileASongPlays) {
    StandInPortal portal(bus.connect());
    begin();
    driven.click("playPauseButton");
    portal.answer();
    driven.click("rtzButton");
    driven.click("playPauseButton");
    ASSERT_TRUE(QTest::qWaitFor([&] { return portal.log.size() >= 2; }, 30'000));
    EXPECT_THAT(portal.log, ElementsAre("Inhibit(, 4, A song is playing)", "Close r1"));
}

} // namespace
} // namespace tambrel
