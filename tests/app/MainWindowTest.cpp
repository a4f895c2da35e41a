#include "DrivenWindow.h"
#include "ViewProbe.h"

#include <QAccessible>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using Texts = std::vector<std::string>;

class MainWindowTest : public ::testing::Test {
protected:
    MainWindowTest() { EXPECT_TRUE(driven.load(files.write("a.mid", smallSong()))); }

    static std::string nameOfFocus() { return QApplication::focusWidget()->objectName().toStdString(); }

    TestFiles files;
    PlayerScript script;
    DrivenWindow driven{script.factory()};
};

TEST_F(MainWindowTest, TellsAssistiveSoftwareWhatEverythingIs) {
    const struct {
        const char* view;
        const char* name;
        QAccessible::Role role;
    } rows[] = {
        {"titleLabel", "TAMBREL", QAccessible::StaticText},
        {"statusLabel", "Loaded", QAccessible::StaticText},
        {"activityView", "Activity", QAccessible::Graphic},
        {"dropPanel", "MIDI file drop area", QAccessible::Grouping},
        {"fileLabel", "a.mid", QAccessible::StaticText},
        {"counterView", "00:00:00.00", QAccessible::StaticText},
        {"moduleZone", "Sound module", QAccessible::Graphic},
        {"logoView", "MIDI logo", QAccessible::Graphic},
        {"gmModuleLabel", "GM Module", QAccessible::StaticText},
        {"tempoLabel", "120.000 BPS", QAccessible::StaticText},
        {"keyLabel", "KEY D major", QAccessible::StaticText},
        {"tracksLabel", "2 Tracks", QAccessible::StaticText},
        {"lengthLabel", "LENGTH 00:00:10.00", QAccessible::StaticText},
        {"progressLabel", "PROGRESS 00:00:00.00", QAccessible::StaticText},
        {"timeline", "Timeline", QAccessible::Slider},
        {"trackBarsView", "Track bars", QAccessible::Chart},
        {"playPauseButton", "Play", QAccessible::Button},
        {"stopButton", "Stop", QAccessible::Button},
        {"rtzButton", "RTZ", QAccessible::Button},
        {"loudnessButton", "Loudness", QAccessible::Button},
        {"clearButton", "Clear", QAccessible::Button},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.view);
        auto* seen = QAccessible::queryAccessibleInterface(&driven.view(row.view));
        ASSERT_TRUE(seen);
        EXPECT_EQ(seen->text(QAccessible::Name), row.name);
        EXPECT_EQ(seen->role(), row.role);
    }
    // All but the frame around the activity view.
    EXPECT_EQ(driven.controller->findChildren<QWidget*>().size(),
              static_cast<qsizetype>(std::size(rows)) + 1);
}

TEST_F(MainWindowTest, GoesThroughItsControlsAsTheEyeDoes) {
    driven.window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(driven.window.get()));
    Texts order;
    for (int i = 0; i < 7; ++i) {
        order.push_back(nameOfFocus());
        QTest::keyClick(driven.window.get(), Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre("timeline", "playPauseButton", "stopButton", "rtzButton", "loudnessButton",
                                   "clearButton", "timeline"));
}

TEST_F(MainWindowTest, IsPlayedByKeyboardAlone) {
    driven.window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(driven.window.get()));
    const auto press = [&](const char* view, Qt::Key key) {
        driven.view(view).setFocus();
        QTest::keyClick(QApplication::focusWidget(), key);
    };
    const auto& player = driven.controller->player();
    press("playPauseButton", Qt::Key_Return);
    EXPECT_EQ(player.mode(), PlaybackMode::playing);
    press("timeline", Qt::Key_Right);
    EXPECT_EQ(player.position(), 5);
    press("stopButton", Qt::Key_Return);
    EXPECT_EQ(player.mode(), PlaybackMode::idle);
    press("clearButton", Qt::Key_Return);
    EXPECT_EQ(driven.shown(), emptyInterface);
}

TEST_F(MainWindowTest, ExplainsAFailureWhereItNamesIt) {
    ASSERT_TRUE(driven.load(files.path("<b>&.mid")));
    const auto description = [&] {
        return QAccessible::queryAccessibleInterface(&driven.view("statusLabel"))
            ->text(QAccessible::Description)
            .toStdString();
    };
    EXPECT_EQ(description(), "Could not read <b>&.mid: No such file or directory");
    driven.controller->load(files.path("a.mid"));
    EXPECT_EQ(description(), "") << "as soon as it says something else";
}

TEST_F(MainWindowTest, RepaintsOnlyWhatATickChanges) {
    driven.click("playPauseButton");
    ShownView painting(*driven.controller);
    const auto showAt = [&](double seconds) {
        script.position = seconds;
        return QTest::qWaitFor(
            [&] { return driven.view<RetroTimelineView>("timeline").position() == seconds; });
    };
    ASSERT_TRUE(showAt(5));
    static_cast<void>(painting.taken());
    ASSERT_TRUE(showAt(5.05));
    QRegion elsewhere = painting.taken();
    EXPECT_FALSE(elsewhere.isEmpty());
    for (const char* name : {"counterView", "progressLabel", "activityView"})
        elsewhere -= driven.view(name).geometry();
    // A playhead 10 points wide with a little around it, which has moved by 2 points.
    for (const char* name : {"timeline", "trackBarsView"}) {
        const QRect place = driven.view(name).geometry();
        const QRegion painted = elsewhere & place;
        EXPECT_FALSE(painted.isEmpty()) << name;
        for (const QRect& part : painted)
            EXPECT_LE(part.width(), 16) << name;
        elsewhere -= place;
    }
    EXPECT_TRUE(elsewhere.isEmpty()) << elsewhere.boundingRect().x() << ", " << elsewhere.boundingRect().y();
}

TEST_F(MainWindowTest, RepaintsNothingWhileNothingMoves) {
    const struct {
        const char* name;
        std::vector<const char*> clicks;
    } rows[] = {
        {"idle", {}},
        {"paused", {"playPauseButton", "playPauseButton"}},
        {"stopped", {"stopButton"}},
        {"cleared", {"clearButton"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        for (const char* button : row.clicks)
            driven.click(button);
        ShownView painting(*driven.controller);
        static_cast<void>(painting.taken());
        // Long enough for two steps of whatever still moves.
        QTimer::singleShot(200, qApp, [this] { driven.beeps = -1; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return driven.beeps == -1; }));
        driven.beeps = 0;
        EXPECT_TRUE(painting.taken().isEmpty());
    }
}

} // namespace
} // namespace tambrel
