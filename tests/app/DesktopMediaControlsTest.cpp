#include "DesktopMediaControls.h"
#include "DrivenWindow.h"
#include "LocalPath.h"
#include "PrivateHome.h"
#include "PrivateSessionBus.h"
#include "StandInPortal.h"

#include <QProcess>
#include <QTemporaryDir>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using testing::smfBytes;
using testing::TrackBuilder;
using Texts = std::vector<std::string>;

const QString program = "org.mpris.MediaPlayer2.";
const QString service = program + "tambrel";

/// The real window and its controls on a bus of their own.
class DesktopMediaControlsTest : public ::testing::Test {
protected:
    void openAddress(const QByteArray& address) const {
        EXPECT_EQ(bus.callPlayer(program + "Player.OpenUri", {"'" + address + "'"}).errors, "");
    }
    /// The failure of the load, or "".
    [[nodiscard]] std::string loadAddress(const QByteArray& address) const {
        const auto before = driven.finished.size();
        openAddress(address);
        EXPECT_TRUE(driven.waitForLoads(before + 1));
        return driven.finished.back();
    }
    [[nodiscard]] std::string title() const { return bus.run({"playerctl", "metadata", "title"}).output; }
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

TEST_F(DesktopMediaControlsTest, WritesTheLinesThatTheButtonsWrite) {
    const struct {
        const char* title;
        bool isLoaded;
        Texts before; ///< Buttons that are clicked before.
        const char* button;
        const char* method;
    } rows[] = {
        {"playing without a song", false, {}, "playPauseButton", "Player.Play"},
        {"stopping without a song", false, {}, "stopButton", "Player.Stop"},
        {"playing", true, {}, "playPauseButton", "Player.Play"},
        {"pausing", true, {"playPauseButton"}, "playPauseButton", "Player.Pause"},
        {"pausing by the one key for both", true, {"playPauseButton"}, "playPauseButton", "Player.PlayPause"},
        {"resuming", true, {"playPauseButton", "playPauseButton"}, "playPauseButton", "Player.PlayPause"},
        {"playing with Loudness", true, {"loudnessButton"}, "playPauseButton", "Player.Play"},
        {"stopping", true, {"playPauseButton"}, "stopButton", "Player.Stop"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        const auto prepare = [&] {
            driven.click("clearButton");
            if (row.isLoaded)
                begin();
            for (const auto& button : row.before)
                driven.click(button.c_str());
            static_cast<void>(driven.recorded.settled());
        };
        prepare();
        driven.click(row.button);
        const Texts lines = driven.recorded.settled();
        ASSERT_THAT(lines, Not(IsEmpty()));
        prepare();
        EXPECT_EQ(bus.callPlayer(program + row.method).errors, "");
        EXPECT_THAT(driven.recorded.settled(), ElementsAreArray(lines));
    }
}

TEST_F(DesktopMediaControlsTest, TellsTheDesktopWhatTheWindowDoes) {
    begin();
    BusMonitor monitor(bus, service);
    const std::function<void()> endOfTheSong = [this] {
        script.playing = false;
        script.position = script.duration;
    };
    const auto click = [this](const char* button) { return [this, button] { driven.click(button); }; };
    const auto seek = [this](double fraction) {
        return [this, fraction] { driven.clickTimeline(fraction); };
    };
    const std::string playing = "{'PlaybackStatus': <'Playing'>}";
    const std::string stopped = "{'PlaybackStatus': <'Stopped'>}";
    const struct {
        const char* title;
        std::function<void()> act;
        Texts heard;
    } rows[] = {
        {"the playhead is moved before the song plays", seek(0.5), {"Seeked (int64 5000000,)"}},
        {"it plays, but not from the beginning",
         click("playPauseButton"),
         {playing, "Seeked (int64 5000000,)"}},
        {"a click on the timeline", seek(0.25), {"Seeked (int64 2500000,)"}},
        {"Return to Zero", click("rtzButton"), {"Seeked (int64 0,)"}},
        {"it is over", endOfTheSong, {stopped, "Seeked (int64 0,)"}},
        {"it plays again", click("playPauseButton"), {playing}},
        {"it stops where it has just begun", click("stopButton"), {stopped}},
        {"Loudness, which loads it again",
         [&] {
             driven.click("loudnessButton");
             driven.click("playPauseButton");
         },
         {playing}},
        {"it is paused", click("playPauseButton"), {"{'PlaybackStatus': <'Paused'>}"}},
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
}

TEST_F(DesktopMediaControlsTest, OpensAndPlaysAFileWhateverItsName) {
    for (const char* name : {"100%25.mid", "\xC3\x89tude.MID", "no UTF-8 \xFF.midi", "#1?.mid", "'.mid"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(loadAddress(fileURI(files.write(name, smallSong())).toLatin1()), "");
        EXPECT_EQ(mode(), PlaybackMode::playing);
        EXPECT_EQ(driven.controller->loadedFile()->url, files.path(name));
    }
    EXPECT_EQ(title(), "'");
    EXPECT_THAT(loadAddress("file:///no/raw %C3%89 name.mid"),
                HasSubstr("raw \xC3\x89 name.mid: No such file"));
    EXPECT_EQ(mode(), PlaybackMode::idle);
}

TEST_F(DesktopMediaControlsTest, OpensOnlySongsOfThisComputer) {
    const QByteArray path = song.parent_path().c_str();
    EXPECT_EQ(loadAddress("file://localhost" + path + "/a%20song.mid"), "");
    EXPECT_THAT(bus.callPlayer(program + "Player.OpenUri", {"'file://host" + path + "/a%20song.mid'"}).errors,
                HasSubstr("NotSupported"));
    EXPECT_EQ(title(), "a song");
}

TEST_F(DesktopMediaControlsTest, RaisesAndClosesTheWindow) {
    EXPECT_EQ(bus.callPlayer(program + "Raise").status, 0);
    EXPECT_EQ(raised, 1);
    EXPECT_EQ(bus.callPlayer(program + "Quit").status, 0);
    EXPECT_FALSE(driven.window->isVisible());
    controls.reset();
    EXPECT_NE(bus.callPlayer(program + "Raise").status, 0);
    driven.click("playPauseButton"); // Nobody listens any more.
}

TEST_F(DesktopMediaControlsTest, KeepsTheComputerAwakeWhileASongPlays) {
    StandInPortal portal(bus.connect());
    begin();
    driven.click("rtzButton");
    const auto heard = [&](std::size_t count) {
        return QTest::qWaitFor([&] { return portal.log.size() >= count; }, 30'000);
    };
    driven.click("playPauseButton");
    portal.answer();
    driven.click("rtzButton");
    driven.click("playPauseButton");
    ASSERT_TRUE(heard(2));
    EXPECT_THAT(portal.log, ElementsAre("Inhibit(, 4, A song is playing)", "Close r1"));
}

TEST(TambrelOnTheBusTest, IsPlayedByMediaKeys) {
    const TestFiles files;
    const QTemporaryDir home;
    const auto song = [](std::uint32_t length) {
        return smfBytes(0, 480, {TrackBuilder().noteOn(0, 0, 60).endOfTrack(length)});
    };
    const auto first = files.write("first.mid", song(19'200)); // 20 seconds.
    const auto second = files.write("second.mid", song(9'600));
    const PrivateSessionBus bus;
    QProcess tambrel;
    auto environment = bus.environment();
    setHome(environment, home.path());
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    tambrel.setProcessEnvironment(environment);
    tambrel.start(TAMBREL_PROGRAM, {"--audio-driver", "silent", "--soundfont",
                                    "/usr/share/sounds/sf2/TimGM6mb.sf2", first.c_str()});

    const auto player = [&](const QStringList& words) {
        return bus.run(QStringList{"playerctl"} + words).output;
    };
    const auto comes = [&](const QStringList& words, const std::string& answer) {
        return QTest::qWaitFor([&] { return player(words) == answer; }, 30'000);
    };
    ASSERT_TRUE(comes({"metadata", "title"}, "first")) << tambrel.readAllStandardError().toStdString();
    EXPECT_EQ(player({"metadata", "mpris:length"}), "20000000");
    EXPECT_EQ(player({"metadata", "xesam:url"}), fileURI(first).toStdString());
    EXPECT_EQ(player({"status"}), "Stopped");
    BusMonitor monitor(bus, service);
    const auto seconds = [&] { return std::stod(player({"position"})); };

    EXPECT_EQ(player({"play-pause"}), "");
    EXPECT_EQ(player({"status"}), "Playing");
    EXPECT_TRUE(QTest::qWaitFor([&] { return seconds() > 0; }, 30'000));
    EXPECT_EQ(player({"position", "12"}), "");
    EXPECT_GE(seconds(), 12);
    EXPECT_EQ(player({"pause"}), "");
    EXPECT_EQ(player({"status"}), "Paused");
    const double before = seconds();
    EXPECT_EQ(player({"position", "5-"}), "");
    EXPECT_NEAR(seconds(), before - 5, 1e-5);
    EXPECT_EQ(player({"play"}), "");
    EXPECT_EQ(player({"stop"}), "");
    EXPECT_EQ(player({"status"}), "Stopped");
    EXPECT_EQ(seconds(), 0);
    const Texts lines = monitor.until("Stopped");
    ASSERT_THAT(lines, SizeIs(6)) << "and nothing in between";
    const char* heard[] = {"'Playing'", "Seeked (int64 12000000,)", "'Paused'", "Seeked", "'Playing'",
                           "'Stopped'"};
    for (std::size_t at = 0; at < lines.size(); ++at)
        EXPECT_THAT(lines[at], HasSubstr(heard[at]));

    EXPECT_EQ(player({"open", fileURI(second)}), "");
    EXPECT_TRUE(comes({"metadata", "title"}, "second"));
    EXPECT_EQ(player({"status"}), "Playing");
    EXPECT_EQ(bus.callPlayer(program + "Quit").errors, "");
    EXPECT_TRUE(QTest::qWaitFor([&] { return tambrel.state() == QProcess::NotRunning; }, 30'000));
    EXPECT_EQ(tambrel.exitCode(), 0);
    EXPECT_THAT(tambrel.readAllStandardError().toStdString(), Not(HasSubstr("DBus")));
}

} // namespace
} // namespace tambrel
