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
        {"statusLabel", "Loaded", QAccessible::StaticText},
        {"activityView", "Activity", QAccessible::Graphic},
        {"dropPanel", "MIDI file drop area", QAccessible::Grouping},
        {"counterView", "00:00:00.00", QAccessible::StaticText},
        {"moduleZone", "Sound module", QAccessible::Graphic},
        {"logoView", "MIDI logo", QAccessible::Graphic},
        {"timeline", "Timeline", QAccessible::Slider},
        {"trackBarsView", "Track bars", QAccessible::Chart},
        {"rtzButton", "RTZ", QAccessible::Button},
    };
    for (const auto& row : rows) {
        const auto* seen = QAccessible::queryAccessibleInterface(&driven.view(row.view));
        EXPECT_EQ(seen->text(QAccessible::Name), row.name);
        EXPECT_EQ(seen->role(), row.role) << row.view;
    }
    int nameless = 0;
    for (QWidget* view : driven.controller->findChildren<QWidget*>())
        nameless += QAccessible::queryAccessibleInterface(view)->text(QAccessible::Name).isEmpty();
    EXPECT_EQ(nameless, 1) << "the frame around the activity view";
}

TEST_F(MainWindowTest, GoesThroughItsControlsAsTheEyeDoes) {
    driven.window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(driven.window.get()));
    Texts order;
    for (int i = 0; i < 7; ++i) {
        order.push_back(QApplication::focusWidget()->objectName().toStdString());
        QTest::keyClick(driven.window.get(), Qt::Key_Tab);
    }
    EXPECT_THAT(order, ElementsAre("timeline", "playPauseButton", "stopButton", "rtzButton", "loudnessButton",
                                   "clearButton", "timeline"));
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
    ASSERT_TRUE(showAt(5.001)); // Nothing of it can be seen but in the counter and in the label.
    QRegion elsewhere = painting.taken();
    for (const char* name : {"counterView", "progressLabel", "activityView"})
        elsewhere -= driven.view(name).geometry();
    EXPECT_TRUE(elsewhere.isEmpty()) << elsewhere.boundingRect().x() << ", " << elsewhere.boundingRect().y();
    ASSERT_TRUE(showAt(5.05));
    const QRegion painted = painting.taken();
    for (const char* name : {"timeline", "trackBarsView"}) {
        // A playhead 10 points wide with a little around it, which has moved by 2 points.
        const QRegion part = painted & driven.view(name).geometry();
        EXPECT_FALSE(part.isEmpty()) << name;
        EXPECT_LE(part.boundingRect().width(), 16) << name;
    }
    for (const double seconds : {5.1, 9.0, 0.14, 0.0}) {
        ASSERT_TRUE(showAt(seconds));
        static_cast<void>(painting.taken());
        const QImage screen = onScreen(*driven.window);
        for (const char* name : {"timeline", "trackBarsView"}) {
            QWidget& view = driven.view(name);
            const QRect place(view.mapTo(driven.window.get(), QPoint()), view.size());
            EXPECT_EQ(screen.copy(place), picture(view)) << name << " at " << seconds;
        }
    }
}

TEST_F(MainWindowTest, RepaintsNothingWhileNothingMoves) {
    const struct {
        const char* name;
        std::vector<const char*> clicks;
    } rows[] = {
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
