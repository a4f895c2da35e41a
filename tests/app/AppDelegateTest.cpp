#include "AppDelegate.h"
#include "DrivenWindow.h"
#include "ExpectedText.h"

#include <QAccessible>
#include <QComboBox>
#include <QFileOpenEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSettings>
#include <QSlider>
#include <QTabWidget>
#include <QTemporaryDir>

namespace tambrel {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using Lines = std::vector<std::string>;

struct RaiseCounter : QObject {
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::ZOrderChange;
        return false;
    }
    int count = 0;
};

class AppDelegateTest : public ::testing::Test {
protected:
    explicit AppDelegateTest(bool diagnosticsEnabled = true) : recorded(diagnosticsEnabled) {}

    void launch() {
        delegate.applicationDidFinishLaunching();
        ASSERT_TRUE(QTest::qWaitFor([this] { return view != nullptr; }));
    }
    void activate() {
        delegate.window()->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(delegate.window()));
    }
    [[nodiscard]] bool waitForLoad() {
        const bool came = QTest::qWaitFor([this] { return loads > 0; }, 30'000);
        loads = 0;
        return came;
    }
    [[nodiscard]] QAction* item(const QString& title) const {
        const auto all = delegate.window()->findChildren<QAction*>();
        const auto found = std::ranges::find(all, title, &QAction::text);
        return found == all.end() ? nullptr : *found;
    }
    [[nodiscard]] QDialog* aboutPanel() const { return delegate.window()->findChild<QDialog*>("aboutPanel"); }
    [[nodiscard]] PlaybackMode mode() const { return view->player().mode(); }

    [[nodiscard]] SoundPageFacts soundFacts() {
        return {.banks = {{"System's default", ""}, {"small", "/banks/small.sf2"}},
                .bankInUse = [this] { return bank; },
                .output = [this] { return output; },
                .volume = [this] { return volume; },
                .chooseBank = [this](const std::string& path) { bank = path; },
                .setVolume = [this](double value) { volume = value; }};
    }

    TestFiles files;
    PlayerScript script;
    RecordedLog recorded;
    std::string bank = "/banks/default.sf2";
    double volume = 0.8;
    std::string output = "silent";
    QTemporaryDir home;
    QSettings settings{home.filePath("settings.ini"), QSettings::IniFormat};
    int beeps = 0;
    int loads = 0;
    int debuggingWindows = 0;
    bool loops = false;
    MainViewController* view = nullptr;
    AppDelegate delegate{
        {.view = {.makePlayer = script.factory(),
                  .buildTimeline = Timeline::build,
                  .beep = [this] { ++beeps; },
                  .chooseFile = [](const auto&) { return std::nullopt; },
                  .loadFinished = [this](const std::string&) { ++loads; }},
         .settings = settings,
         .about =
             [this] {
                 return AboutFacts{{.shortVersion = "1.2", .build = "34"}, "Qt", soundFacts()};
             },
         .showDebuggingWindow = [this] { ++debuggingWindows; },
         .isLooping = [this] { return loops; },
         .setLooping = [this](bool value) { loops = value; },
         .didFinishLaunching = [this](MainViewController& shown) { view = &shown; }},
        recorded.log};
};

TEST_F(AppDelegateTest, ComesUpWhateverIsOpenedAndHoweverItComes) {
    launch();
    const auto one = QString(files.write("one.MID", smallSong()).c_str());
    RaiseCounter raises;
    delegate.window()->installEventFilter(&raises);
    const std::function<void()> ways[] = {
        [&] { delegate.applicationOpen({"file://localhost" + one}, AfterLoad::play, "a token"); },
        [&] {
            EXPECT_TRUE(delegate.applicationOpenFile("/a.txt"));
            EXPECT_EQ(delegate.window()->findChild<QLabel*>("explanationLabel")->text(),
                      "a.txt: Not a file that Tambrel opens.");
        },
        [&] {
            QFileOpenEvent event(one);
            QCoreApplication::sendEvent(qApp, &event);
        }};
    for (const auto& open : ways) {
        delegate.window()->showMinimized();
        raises.count = 0;
        open();
        EXPECT_FALSE(delegate.window()->isMinimized());
        EXPECT_EQ(raises.count, 1);
    }
    EXPECT_EQ(beeps, 1) << "for the text";
    ASSERT_TRUE(waitForLoad());
    EXPECT_EQ(mode(), PlaybackMode::idle) << "as the last one wants it";
    EXPECT_EQ(qgetenv("XDG_ACTIVATION_TOKEN"), "a token");
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

TEST_F(AppDelegateTest, KeepsThePlaceOfTheWindowAndEndsTheSessionThatHasBegunOnce) {
    const auto ended = StartsWith("Application Session Ended Normally");
    delegate.applicationDidFinishLaunching();
    delegate.applicationWillTerminate();
    EXPECT_THAT(recorded.taken(), Not(Contains(ended)));
    ASSERT_TRUE(QTest::qWaitFor([this] { return view != nullptr; }));
    auto* window = delegate.window();
    EXPECT_EQ(window->centralWidget()->size(), QSize(480, 480));
    EXPECT_EQ(window->minimumSize(), window->maximumSize());

    const TambrelWindowPlacementStore store(settings);
    window->setGeometry({QPoint(40, 50), window->size()});
    EXPECT_TRUE(QTest::qWaitFor([&] { return store.savedFrame({480, 480}) == QRectF(40, 50, 480, 480); }));
    settings.clear();
    static_cast<void>(recorded.taken());
    QObject manager; // Nobody asks it anything.
    QMetaObject::invokeMethod(qApp, "commitDataRequest", Qt::DirectConnection,
                              QGenericArgument("QSessionManager&", &manager));
    EXPECT_THAT(content(settings.fileName().toStdString()), HasSubstr("TambrelMainWindowFrame=\"{{40, 50}"));
    EXPECT_THAT(recorded.taken(), ElementsAre(ended));
    delegate.applicationWillTerminate();
    EXPECT_THAT(recorded.taken(), IsEmpty());
}

TEST_F(AppDelegateTest, HasTheWholeMenu) {
    launch();
    Lines table;
    for (const QAction* menu : delegate.window()->menuBar()->actions()) {
        table.push_back(menu->text().remove('&').toStdString() + ":");
        for (const QAction* entry : menu->menu()->actions())
            if (!entry->isSeparator())
                table.back() += (entry->isEnabled() ? " [" : " [off ") + entry->text().toStdString() + "]" +
                                entry->shortcut().toString(QKeySequence::PortableText).toStdString();
    }
    EXPECT_THAT(table,
                ElementsAre("Tambrel: [About Tambrel] [Get Info]Ctrl+I [off Services] [Hide Tambrel]Ctrl+H "
                            "[off Hide Others]Ctrl+Alt+H [Show All] [Quit Tambrel]Ctrl+Q",
                            "File: [Open MIDI File...]Ctrl+O",
                            "Transport: [Play/Pause]Space [Return to Zero]Ctrl+R [Stop]Ctrl+. [Loop]",
                            "Debug: [Debugging Window]Ctrl+B",
                            "Window: [Minimize]Ctrl+M [off Zoom] [Bring All to Front]",
                            "Help: [Tambrel Help]Ctrl+?"));
    static_cast<void>(recorded.taken());
    item("Loop")->trigger();
    EXPECT_TRUE(loops);
    EXPECT_THAT(recorded.taken(), ElementsAre("User Action: Enabled Loop | AppDelegate.toggleLoop"));
}

TEST_F(AppDelegateTest, IsSteeredAndHiddenByKeysWhateverHasTheFocus) {
    delegate.applicationOpenFile(files.write("a.mid", smallSong()));
    launch();
    ASSERT_TRUE(waitForLoad());
    activate();
    const struct {
        const char* key;
        PlaybackMode mode;
        double position;
    } rows[] = {{"Space", PlaybackMode::playing, 4},
                {"Space", PlaybackMode::paused, 4},
                {"Ctrl+R", PlaybackMode::paused, 0},
                {"Ctrl+.", PlaybackMode::idle, 0}};
    for (const char* focused : {"timeline", "playPauseButton", "clearButton"}) {
        delegate.window()->findChild<QWidget*>(focused)->setFocus();
        view->seek(4);
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(focused) + " " + row.key);
            QTest::keySequence(QApplication::focusWidget(), QKeySequence(row.key));
            EXPECT_EQ(mode(), row.mode);
            EXPECT_EQ(view->player().position(), row.position);
        }
    }
    QTest::keySequence(delegate.window(), QKeySequence("Ctrl+B"));
    EXPECT_EQ(debuggingWindows, 1);
    for (const char* hiding : {"Ctrl+H", "Ctrl+M"}) {
        activate();
        QTest::keySequence(delegate.window(), QKeySequence(hiding));
        EXPECT_TRUE(delegate.window()->isMinimized()) << hiding;
        item("Show All")->trigger();
        EXPECT_FALSE(delegate.window()->isMinimized());
    }
}

struct WithoutDiagnosticsTest : AppDelegateTest {
    WithoutDiagnosticsTest() : AppDelegateTest(false) {}
};

TEST_F(WithoutDiagnosticsTest, HasNoDebuggingWindow) {
    launch();
    EXPECT_TRUE(item("Stop"));
    EXPECT_FALSE(item("Debugging Window"));
}

TEST_F(AppDelegateTest, ShowsOneAboutPanelThatBlocksNothingAndThatTheKeyboardReaches) {
    launch();
    for (const char* key : {"Ctrl+I", "Ctrl+?", "F1"}) {
        activate();
        QTest::keySequence(delegate.window(), QKeySequence(key));
        ASSERT_TRUE(aboutPanel()) << key;
        EXPECT_FALSE(aboutPanel()->isModal());
        QTest::keyClick(aboutPanel(), Qt::Key_Escape);
        EXPECT_TRUE(QTest::qWaitFor([this] { return aboutPanel() == nullptr; })) << "Escape closes it";
    }
    delegate.showInfo();
    delegate.showInfo();
    EXPECT_EQ(delegate.window()->findChildren<QDialog*>().size(), 1);
    ASSERT_TRUE(QTest::qWaitFor([this] { return aboutPanel()->isAncestorOf(QApplication::focusWidget()); }));
    EXPECT_EQ(aboutPanel()->findChild<QTabWidget*>()->currentIndex(), 0);
}

TEST_F(AppDelegateTest, SaysEverythingInThePanelToTheKeyboardAlone) {
    launch();
    view->load(files.write("a.mid", smallSong()));
    ASSERT_TRUE(waitForLoad());
    delegate.showInfo();
    auto& bar = *aboutPanel()->findChild<QTabBar*>();
    auto& song = *aboutPanel()->findChild<QPlainTextEdit*>("Song");
    ASSERT_TRUE(QTest::qWaitFor([&] { return bar.hasFocus() && song.toPlainText().contains("Division"); }));
    std::string all;
    for (int page = 0; page < bar.count(); ++page) {
        all += "== " + bar.tabText(page).toStdString() + "\n";
        for (QTest::keyClick(&bar, Qt::Key_Tab); !bar.hasFocus();
             QTest::keyClick(aboutPanel(), Qt::Key_Tab)) {
            const auto* text = qobject_cast<QPlainTextEdit*>(QApplication::focusWidget());
            const auto* seen = QAccessible::queryAccessibleInterface(QApplication::focusWidget());
            all += "-- " + seen->text(QAccessible::Name).toStdString() + "\n";
            all += text ? text->toPlainText().toStdString() + "\n" : "";
        }
        QTest::keyClick(&bar, Qt::Key_Right);
    }
    const auto folder = files.path("").string();
    for (auto at = all.find(folder); at != std::string::npos; at = all.find(folder))
        all.replace(at, folder.size(), "");
    EXPECT_TRUE(isExpected(all, "window/info-panel.txt"));

    auto& slider = *aboutPanel()->findChild<QSlider*>();
    QTest::keyClick(&slider, Qt::Key_PageDown);
    EXPECT_EQ(volume, 0.7);
    volume = 0.254;
    output = "alsa";
    delegate.soundChanged();
    EXPECT_EQ(slider.value(), 25);
    EXPECT_EQ(volume, 0.254) << "as somebody else has set it";
    EXPECT_EQ(aboutPanel()->findChild<QPlainTextEdit*>("Output")->toPlainText(), "alsa");
    auto& banks = *aboutPanel()->findChild<QComboBox*>();
    QTest::keyClick(&banks, Qt::Key_Down);
    EXPECT_EQ(bank, "/banks/small.sf2");
    EXPECT_EQ(aboutPanel()->findChild<QPlainTextEdit*>("Sound bank in use")->toPlainText(),
              "/banks/small.sf2");

    view->load(files.write("b.mid", smallSong(false)));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return song.toPlainText().contains("b.mid") && song.toPlainText().contains("Division"); }));
    EXPECT_FALSE(song.toPlainText().contains("a.mid"));
    view->clearLoadedMIDI();
    EXPECT_EQ(song.toPlainText(), "No song is loaded.");
}

} // namespace
} // namespace tambrel
