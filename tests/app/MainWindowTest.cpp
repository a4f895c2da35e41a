#include "Announcer.h"
#include "DrivenWindow.h"
#include "ExpectedText.h"
#include "RetroStyle.h"
#include "ViewProbe.h"

#include <QAccessible>
#include <QMetaEnum>
#include <QSignalSpy>

#include <algorithm>
#include <cmath>

namespace tambrel {
namespace {

class MainWindowTest : public ::testing::Test {
protected:
    MainWindowTest() { EXPECT_TRUE(driven.load(files.write("a.mid", smallSong()))); }

    static std::string nameOfFocus() { return QApplication::focusWidget()->objectName().toStdString(); }

    TestFiles files;
    PlayerScript script;
    DrivenWindow driven{script.factory()};
};

TEST_F(MainWindowTest, TellsAssistiveSoftwareWhatEverythingIs) {
    std::string all;
    for (QWidget* view : driven.controller->view().findChildren<QWidget*>()) {
        auto* seen = QAccessible::queryAccessibleInterface(view);
        ASSERT_TRUE(seen);
        all += QMetaEnum::fromType<QAccessible::Role>().valueToKey(seen->role());
        for (const auto kind : {QAccessible::Name, QAccessible::Value, QAccessible::Description})
            all += " \"" + seen->text(kind).toStdString() + "\"";
        all += seen->state().focusable ? " focusable\n" : "\n";
    }
    driven.window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(driven.window.get()));
    all += "Tab goes through:";
    for (int i = 0; i < 7; ++i) {
        all += " " + nameOfFocus();
        QTest::keyClick(driven.window.get(), Qt::Key_Tab);
    }
    EXPECT_TRUE(isExpected(all + "\n", "window/accessibility.txt"));
}

TEST_F(MainWindowTest, IsPlayedByKeyboardAlone) {
    driven.window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(driven.window.get()));
    const auto& player = driven.controller->player();
    const std::tuple<const char*, Qt::Key, PlaybackMode, double> rows[] = {
        {"playPauseButton", Qt::Key_Return, PlaybackMode::playing, 0},
        {"timeline", Qt::Key_Right, PlaybackMode::playing, 5},
        {"stopButton", Qt::Key_Return, PlaybackMode::idle, 0},
    };
    for (const auto& [view, key, mode, position] : rows) {
        driven.view(view).setFocus();
        QTest::keyClick(QApplication::focusWidget(), key);
        EXPECT_EQ(player.mode(), mode) << view;
        EXPECT_EQ(player.position(), position) << view;
    }
}

TEST_F(MainWindowTest, KeepsTheFocusAwayFromClearWhenLoudnessIsDisabled) {
    for (const bool isActive : {true, false}) {
        isActive ? driven.window->activateWindow() : driven.window->hide();
        ASSERT_TRUE(QTest::qWaitFor([&] { return driven.window->isActiveWindow() == isActive; }));
        driven.view("loudnessButton").setFocus();
        driven.controller->playPause();
        EXPECT_FALSE(driven.view("loudnessButton").isEnabled());
        EXPECT_EQ(driven.window->focusWidget(), &driven.view("playPauseButton"));
        driven.controller->stop();
    }
}

TEST_F(MainWindowTest, SaysOnceWhatASightedUserSees) {
    QCoreApplication::processEvents(); // The load before is over.
    QSignalSpy said(&driven.view<Announcer>("announcer"), &Announcer::said);
    const auto end = [this] {
        script.position = script.duration;
        script.playing = false;
        return QTest::qWaitFor([this] { return driven.title("playPauseButton") == "Play"; });
    };
    const auto play = [this] { return driven.click("playPauseButton"), true; };
    const std::pair<std::string, std::function<bool()>> rows[] = {
        {"Loaded: a.mid", [this] { return driven.load(files.path("a.mid")); }},
        {"Playing", play},
        {"Paused", play},
        {"Playing", play},
        {"End of the song", end},
        {"Playing", play},
        {"Stopped", [this] { return driven.click("stopButton"), true; }},
        {"Loaded: a.mid. Playing",
         [this] {
             driven.controller->load(files.path("a.mid"), AfterLoad::play);
             return driven.waitForLoads(driven.finished.size() + 1);
         }},
        {"Cleared", [this] { return driven.click("clearButton"), true; }},
        {"Unreadable File: Could not read none.mid: No such file or directory",
         [this] { return driven.load(files.path("none.mid")); }},
    };
    for (const auto& [text, act] : rows) {
        said.clear();
        ASSERT_TRUE(act()) << text;
        QCoreApplication::processEvents();
        ASSERT_EQ(said.size(), 1) << text;
        EXPECT_EQ(said[0][0].toString().toStdString(), text);
    }
}

TEST_F(MainWindowTest, TellsWhyTheLoudnessSwitchIsDisabledAndWhatTheChartLeavesOut) {
    auto& button = driven.view("loudnessButton");
    EXPECT_EQ(button.toolTip(), "Raises drums and bass to full velocity");
    driven.click("playPauseButton");
    EXPECT_EQ(button.toolTip(), "Raises drums and bass to full velocity. Pause or stop the song first");
    EXPECT_EQ(driven.view("rtzButton").toolTip(), "Return to Zero (Ctrl+R)");
    ASSERT_TRUE(driven.load(
        files.write("many.mid", testing::smfBytes(1, 480, std::vector<testing::TrackBuilder>(99)))));
    EXPECT_EQ(driven.view("trackBarsView").toolTip(), driven.view("trackBarsView").accessibleDescription());
    EXPECT_TRUE(driven.view("trackBarsView").toolTip().endsWith(" of 99 tracks"));
}

TEST_F(MainWindowTest, ExplainsAFailureWhereItNamesIt) {
    ASSERT_TRUE(driven.load(files.path("<b>&.mid")));
    const auto description = [&] {
        return QAccessible::queryAccessibleInterface(&driven.view("statusLabel"))
            ->text(QAccessible::Description)
            .toStdString();
    };
    EXPECT_EQ(description(), "Could not read <b>&.mid: No such file or directory");
    EXPECT_EQ(driven.label("explanationLabel"), description());
    EXPECT_TRUE(driven.view("statusLabel").toolTip().contains(">Could not read &lt;b&gt;&amp;.mid: No such"));
    driven.click("loudnessButton");
    EXPECT_EQ(description(), "") << "as soon as it says something else";
    EXPECT_FALSE(driven.view("explanationLabel").isVisible());
    driven.controller->playbackPreparationFailed("no device");
    EXPECT_EQ(driven.label("explanationLabel"), "no device") << "the file's label says the rest";

    driven.controller->showOutputLoss(true);
    EXPECT_EQ(driven.label("explanationLabel"), "no device") << "while there is something worse to say";
    for (int song = 1; song <= 2; ++song) {
        ASSERT_TRUE(driven.load(files.write("song.mid", smallSong())));
        EXPECT_EQ(driven.label("explanationLabel"), "Sound output lost; waiting for it to come back");
        EXPECT_TRUE(driven.view("explanationLabel").isVisible());
    }
    driven.controller->showOutputLoss(false);
    EXPECT_FALSE(driven.view("explanationLabel").isVisible());
}

TEST_F(MainWindowTest, RepaintsOnlyWhatATickChanges) {
    driven.click("playPauseButton");
    ShownView painting(driven.controller->view());
    const auto showAt = [&](double seconds) {
        script.position = seconds;
        return QTest::qWaitFor(
            [&] { return driven.view<RetroTimelineView>("timeline").position() == seconds; }, 60'000);
    };
    ASSERT_TRUE(showAt(5));
    static_cast<void>(painting.taken());
    ASSERT_TRUE(showAt(5.05));
    QRegion elsewhere = painting.taken();
    EXPECT_FALSE(elsewhere.isEmpty());
    for (const char* name : {"progressLabel", "activityView"})
        elsewhere -= driven.view(name).geometry();
    const QRect counter = driven.view("counterView").geometry();
    EXPECT_LE((elsewhere & counter).boundingRect().width(), 32) << "only the last digit differs";
    elsewhere -= counter;
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

/// Of the Web Content Accessibility Guidelines.
double contrast(const QColor& one, const QColor& other) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [&](const QColor& color) {
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

TEST(RetroStyle, HasNoTextThatIsHardToRead) {
    const QPalette& palette = RetroTheme::palette();
    for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        for (const auto& [back, text] : {std::pair(QPalette::Window, QPalette::WindowText),
                                         {QPalette::Base, QPalette::Text},
                                         {QPalette::Base, QPalette::PlaceholderText},
                                         {QPalette::Button, QPalette::ButtonText},
                                         {QPalette::Highlight, QPalette::HighlightedText},
                                         {QPalette::Base, QPalette::Link},
                                         {QPalette::ToolTipBase, QPalette::ToolTipText}})
            EXPECT_GE(contrast(palette.color(group, back), palette.color(group, text)), 4.5)
                << group << ", " << text;
}

TEST(RetroStyle, DrawsQtsOwnControlsInTheThemesColoursWhateverPaletteTheDesktopHas) {
    QApplication::setStyle(new RetroStyle);
    for (const char* name :
         {"QMenuBar", "QMenu", "QMessageBox", "QPlainTextEdit", "QPushButton", "QTipLabel"}) {
        QApplication::setPalette(QPalette(Qt::white, Qt::black, Qt::black, Qt::black, Qt::gray, Qt::white,
                                          Qt::white, Qt::black, Qt::black),
                                 name);
        const QPalette seen = QApplication::palette(name);
        for (const auto& [back, text] : {std::pair(QPalette::Window, QPalette::WindowText),
                                         {QPalette::Base, QPalette::Text},
                                         {QPalette::Button, QPalette::ButtonText},
                                         {QPalette::ToolTipBase, QPalette::ToolTipText}}) {
            const QColor color = seen.color(back);
            EXPECT_TRUE(color == RetroTheme::paper() || color == RetroTheme::panel()) << name;
            EXPECT_EQ(seen.color(text), RetroTheme::ink()) << name;
        }
    }
}

} // namespace
} // namespace tambrel
