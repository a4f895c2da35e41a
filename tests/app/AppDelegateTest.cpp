#include "AppDelegate.h"
#include "DrivenWindow.h"

#include <QAccessible>
#include <QFileOpenEvent>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScreen>
#include <QSettings>
#include <QTemporaryDir>

namespace tambrel {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;
using Lines = std::vector<std::string>;

constexpr const char* launched = "Application launch procedure started | "
                                 "AppDelegate.applicationDidFinishLaunching";

std::string evaluating(int count) {
    return "Evaluating " + std::to_string(count) + " incoming URL(s) | AppDelegate.openMIDIURLs";
}
/// Counts the events of one type that a widget gets.
class EventCounter : public QObject {
public:
    EventCounter(QObject& watched, QEvent::Type type, int& count) : type_(type), count_(count) {
        watched.installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override {
        count_ += event->type() == type_;
        return false;
    }

private:
    QEvent::Type type_;
    int& count_;
};

const std::string queued = "Main window not ready; queued MIDI URLs | AppDelegate.openMIDIURLs";
const std::string unsupported = "No supported MIDI URLs found | AppDelegate.openMIDIURLs";
const std::string openingQueued = "Opening queued MIDI URL(s) | AppDelegate.openPendingMIDIURLs";

class AppDelegateTest : public ::testing::TestWithParam<bool> {
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
    /// What the delegate has logged since the last call.
    Lines lines() {
        Lines all = recorded.settled();
        std::erase_if(all, [](const std::string& line) {
            return line.find("| AppDelegate.") == std::string::npos &&
                   line.find("| TambrelMenuBuilder.") == std::string::npos &&
                   line.find("| TambrelBetaLog.") == std::string::npos;
        });
        return all;
    }
    template<class View>
    [[nodiscard]] View& child(const char* name) const {
        return *delegate.window()->findChild<View*>(name);
    }
    [[nodiscard]] PlaybackMode mode() const { return view->player().mode(); }

    TestFiles files;
    PlayerScript script;
    RecordedLog recorded;
    QTemporaryDir home;
    QSettings settings{home.filePath("settings.ini"), QSettings::IniFormat};
    int beeps = 0;
    int loads = 0;
    int debuggingWindows = 0;
    MainViewController* view = nullptr;
    AppDelegate delegate{
        {.view = {.makePlayer = script.factory(),
                  .adoptSong = [](const LoadedSong&) {},
                  .beep = [this] { ++beeps; },
                  .chooseFile = [] { return std::nullopt; },
                  .loadFinished = [this](const std::string&) { ++loads; }},
         .settings = settings,
         .about =
             [] {
                 return AboutFacts{{.shortVersion = "1.2", .build = "34"}, "Qt", "/banks/small.sf2"};
             },
         .showDebuggingWindow = [this] { ++debuggingWindows; },
         .didFinishLaunching = [this](MainViewController& shown) { view = &shown; }},
        recorded.log};
};

TEST_F(AppDelegateTest, QueuesFilesUntilTheWindowIsThereAndOpensTheFirst) {
    const auto first = files.write("first.mid", smallSong());
    delegate.applicationOpenFiles({files.path("notes.txt"), first, files.path("second.mid")});
    delegate.applicationDidFinishLaunching();
    delegate.applicationOpen({"file:///third.mid"});
    ASSERT_TRUE(waitForLoad());
    EXPECT_THAT(
        lines(),
        ElementsAre("User Action: Opened Tambrel with 3 file(s) | AppDelegate.application(_:openFiles:)",
                    evaluating(3), queued, launched,
                    "Installing runtime app icon if available | AppDelegate.installRuntimeAppIcon",
                    "Building application menus | TambrelMenuBuilder.install",
                    "User Action: Opened Tambrel from Finder with 1 URL(s) | "
                    "AppDelegate.application(_:open:)",
                    evaluating(1), queued, openingQueued, evaluating(3),
                    "Loading first.mid | AppDelegate.openMIDIURLs"));
    EXPECT_EQ(child<QLabel>("fileLabel").text(), "first.mid");
    EXPECT_EQ(beeps, 0);
}

TEST_F(AppDelegateTest, OpensTheFirstFileThatIsSupportedWhicheverWayItComes) {
    launch();
    EXPECT_THAT(lines(), Not(Contains(openingQueued)));
    const auto one = files.write("one.MID", smallSong());
    const auto openEvent = [](const std::filesystem::path& file) {
        QFileOpenEvent event(QString::fromStdString(file.string()));
        QCoreApplication::sendEvent(qApp, &event);
    };
    const std::string loading = "Loading one.MID | AppDelegate.openMIDIURLs";
    const std::string fromFinder = "User Action: Opened Tambrel from Finder with ";
    const struct {
        const char* name;
        std::function<void()> handOver;
        Lines lines;
    } rows[] = {
        {"files, a text among them",
         [&] {
             delegate.applicationOpenFiles({"a.txt", one, "/b.mid"});
         },
         {"User Action: Opened Tambrel with 3 file(s) | AppDelegate.application(_:openFiles:)", evaluating(3),
          loading}},
        {"an event of the desktop",
         [&] { openEvent(one); },
         {"User Action: Opened Tambrel with file " + one.string() + " | AppDelegate.application(_:openFile:)",
          evaluating(1), loading}},
        {"addresses, one of the web among them",
         [&] {
             delegate.applicationOpen(
                 {"https://a.example/b.mid", "file:b.mid", "file://localhost" + QString(one.c_str())});
         },
         {fromFinder + "3 URL(s) | AppDelegate.application(_:open:)", evaluating(3), loading}},
        {"an address of another host",
         [&] { delegate.applicationOpen({"file://host" + QString(one.c_str())}); },
         {fromFinder + "1 URL(s) | AppDelegate.application(_:open:)", evaluating(1), unsupported}},
        {"a text",
         [&] { EXPECT_TRUE(delegate.applicationOpenFile("/a.txt")); },
         {"User Action: Opened Tambrel with file /a.txt | AppDelegate.application(_:openFile:)",
          evaluating(1), unsupported}},
        {"nothing at all",
         [&] { delegate.applicationOpen({}); },
         {fromFinder + "0 URL(s) | AppDelegate.application(_:open:)", evaluating(0), unsupported}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        beeps = 0;
        row.handOver();
        const bool opens = row.lines.back() == loading;
        EXPECT_TRUE(!opens || waitForLoad());
        EXPECT_EQ(lines(), row.lines);
        EXPECT_EQ(beeps, opens ? 0 : 1);
    }
}

TEST_F(AppDelegateTest, PlaysOnlyWhatItWasAskedToPlay) {
    const auto song = files.write("a.mid", smallSong());
    const QString address = "file://" + QString(song.c_str());
    delegate.applicationOpenFiles({song}, AfterLoad::play);
    delegate.applicationOpenFiles({song}); // Of those that wait, the first is opened.
    launch();
    const struct {
        const char* name;
        std::function<void()> open;
        PlaybackMode mode;
    } rows[] = {
        {"before there was a window", [] {}, PlaybackMode::playing},
        {"opened only", [&] { delegate.applicationOpen({address}); }, PlaybackMode::idle},
        {"to be played", [&] { delegate.applicationOpen({address}, AfterLoad::play); },
         PlaybackMode::playing},
        {"opened only, after a text that was to be played",
         [&] {
             delegate.applicationOpen({"file:///a.txt"}, AfterLoad::play);
             delegate.applicationOpen({address});
         },
         PlaybackMode::idle},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        row.open();
        ASSERT_TRUE(waitForLoad());
        EXPECT_EQ(mode(), row.mode);
    }
}

TEST_F(AppDelegateTest, ComesToTheFrontOnceForWhatIsOpened) {
    launch();
    delegate.window()->showMinimized();
    int raised = 0;
    const EventCounter counter(*delegate.window(), QEvent::ZOrderChange, raised);
    delegate.applicationOpen({"file://" + QString(files.write("a.mid", smallSong()).c_str())},
                             AfterLoad::wait, "a token");
    EXPECT_FALSE(delegate.window()->isMinimized());
    EXPECT_EQ(raised, 1);
    EXPECT_EQ(qgetenv("XDG_ACTIVATION_TOKEN"), "a token");
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

TEST_F(AppDelegateTest, CarriesOutTheActionsOfALauncher) {
    delegate.applicationOpenFile(files.write("a.mid", smallSong()));
    launch();
    ASSERT_TRUE(waitForLoad());
    for (const auto& [action, mode] : {std::pair{"play-pause", PlaybackMode::playing},
                                       {"dance", PlaybackMode::playing},
                                       {"play-pause", PlaybackMode::paused},
                                       {"stop", PlaybackMode::idle}}) {
        delegate.performAction(action);
        EXPECT_EQ(this->mode(), mode) << action;
    }
}

TEST_F(AppDelegateTest, KeepsAnActionUntilTheWindowIsThere) {
    delegate.performAction("open");
    launch();
    EXPECT_THAT(recorded.settled(), Contains(StartsWith("Open MIDI File panel cancelled")));
}

TEST_F(AppDelegateTest, RemembersWhereTheWindowIs) {
    launch();
    const QRect available = QApplication::primaryScreen()->availableGeometry();
    auto* window = delegate.window();
    EXPECT_EQ(window->centralWidget()->size(), QSize(480, 480));
    EXPECT_EQ(window->minimumSize(), window->maximumSize());
    EXPECT_LE((window->geometry().center() - available.center()).manhattanLength(), 2);

    const TambrelWindowPlacementStore store(settings);
    window->setGeometry({QPoint(40, 50), window->size()});
    EXPECT_TRUE(QTest::qWaitFor([&] { return store.savedFrame({480, 480}) == QRectF(40, 50, 480, 480); }));
    settings.clear();
    delegate.applicationWillTerminate();
    EXPECT_EQ(store.savedFrame({480, 480}), QRectF(40, 50, 480, 480));
    EXPECT_THAT(recorded.taken(), Contains(StartsWith("Application Session Ended Normally")));
}

TEST_F(AppDelegateTest, EndsNoSessionThatHasNotBegun) {
    delegate.applicationDidFinishLaunching();
    delegate.applicationWillTerminate();
    EXPECT_THAT(recorded.taken(), Not(Contains(StartsWith("Application Session Ended Normally"))));
}

TEST_F(AppDelegateTest, HasEverythingWrittenWhenTheSessionIsAboutToEnd) {
    launch();
    settings.clear();
    static_cast<void>(recorded.taken());
    QObject manager; // Nobody asks it anything.
    QMetaObject::invokeMethod(qApp, "commitDataRequest", Qt::DirectConnection,
                              QGenericArgument("QSessionManager&", &manager));
    QFile defaults(settings.fileName());
    ASSERT_TRUE(defaults.open(QIODevice::ReadOnly));
    EXPECT_TRUE(defaults.readAll().contains("TambrelMainWindowFrame"));
    EXPECT_THAT(recorded.taken(), ElementsAre(StartsWith("Application Session Ended Normally")));
    delegate.applicationWillTerminate();
    EXPECT_THAT(recorded.taken(), IsEmpty());
}

/// With diagnostics or without.
class MenuTest : public AppDelegateTest {
protected:
    MenuTest() : AppDelegateTest(GetParam()) {
        delegate.applicationOpenFile(files.write("a.mid", smallSong()));
        launch();
        EXPECT_TRUE(waitForLoad());
        activate();
    }
    [[nodiscard]] QAction& item(const QString& title) const {
        for (QAction* action : delegate.window()->findChildren<QAction*>())
            if (action->text() == title)
                return *action;
        throw std::out_of_range(title.toStdString());
    }
};
INSTANTIATE_TEST_SUITE_P(WithAndWithoutDiagnostics, MenuTest, ::testing::Bool(), [](const auto& instance) {
    return instance.param ? "Diagnostics" : "NoDiagnostics";
});

TEST_P(MenuTest, HasTheWholeTable) {
    Lines table;
    for (const QAction* menu : delegate.window()->menuBar()->actions()) {
        table.push_back(menu->text().remove('&').toStdString());
        for (const QAction* entry : menu->menu()->actions())
            if (!entry->isSeparator())
                table.push_back("  " + entry->text().toStdString() + (entry->isEnabled() ? "" : " (off)") +
                                (entry->shortcut().isEmpty() ? "" : ": ") +
                                entry->shortcut().toString(QKeySequence::PortableText).toStdString());
    }
    Lines expected{"Tambrel",
                   "  About Tambrel",
                   "  Get Info: Ctrl+I",
                   "  Services (off)",
                   "  Hide Tambrel: Ctrl+H",
                   "  Hide Others (off): Ctrl+Alt+H",
                   "  Show All",
                   "  Quit Tambrel: Ctrl+Q",
                   "File",
                   "  Open MIDI File...: Ctrl+O",
                   "Transport",
                   "  Play/Pause: Space",
                   "  Return to Zero: Ctrl+R",
                   "  Stop: Ctrl+.",
                   "Window",
                   "  Minimize: Ctrl+M",
                   "  Zoom (off)",
                   "  Bring All to Front",
                   "Help",
                   "  Tambrel Help: Ctrl+?"};
    if (GetParam())
        expected.insert(expected.begin() + 14, {"Debug", "  Debugging Window: Ctrl+B"});
    EXPECT_EQ(table, expected);
}

TEST_P(MenuTest, IsSteeredByItsKeysWhateverHasTheFocus) {
    const struct {
        const char* name;
        int key;
        Qt::KeyboardModifiers modifiers;
        PlaybackMode mode;
        double position;
    } rows[] = {
        {"plays", Qt::Key_Space, Qt::NoModifier, PlaybackMode::playing, 4},
        {"pauses", Qt::Key_Space, Qt::NoModifier, PlaybackMode::paused, 4},
        {"returns to zero", Qt::Key_R, Qt::ControlModifier, PlaybackMode::paused, 0},
        {"stops", Qt::Key_Period, Qt::ControlModifier, PlaybackMode::idle, 0},
    };
    for (const char* focused : {"timeline", "playPauseButton", "stopButton", "clearButton"}) {
        child<QWidget>(focused).setFocus();
        view->seek(4);
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(focused) + " " + row.name);
            QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(row.key), row.modifiers);
            EXPECT_EQ(mode(), row.mode);
            EXPECT_EQ(view->player().position(), row.position);
        }
    }
    QTest::keyClick(delegate.window(), Qt::Key_B, Qt::ControlModifier);
    EXPECT_EQ(debuggingWindows, GetParam() ? 1 : 0);
}

TEST_P(MenuTest, HidesAndShowsTheWindow) {
    for (const char* hiding : {"Hide Tambrel", "Minimize"}) {
        item(hiding).trigger();
        EXPECT_TRUE(delegate.window()->isMinimized()) << hiding;
        item("Show All").trigger();
        EXPECT_FALSE(delegate.window()->isMinimized());
        activate();
    }
}

class AboutPanelTest : public AppDelegateTest {
protected:
    AboutPanelTest() { launch(); }
    [[nodiscard]] QDialog* panel() const { return delegate.window()->findChild<QDialog*>("aboutPanel"); }
};

TEST_F(AboutPanelTest, IsOnePanelThatBlocksNothing) {
    const std::pair<Qt::Key, Qt::KeyboardModifiers> ways[] = {
        {Qt::Key_I, Qt::ControlModifier},
        {Qt::Key_Question, Qt::ControlModifier},
        {Qt::Key_F1, Qt::NoModifier},
    };
    for (const auto& [key, modifiers] : ways) {
        activate();
        QTest::keyClick(delegate.window(), key, modifiers);
        ASSERT_TRUE(panel()) << key;
        EXPECT_FALSE(panel()->isModal());
        EXPECT_EQ(delegate.window()->findChildren<QDialog*>().size(), 1);
        QTest::keyClick(panel(), Qt::Key_Escape);
        EXPECT_TRUE(QTest::qWaitFor([this] { return panel() == nullptr; })) << "Escape closes it";
    }
}

TEST_F(AboutPanelTest, LetsTheKeyboardReachAllItsTexts) {
    delegate.showInfo();
    ASSERT_TRUE(QTest::qWaitFor([this] { return panel()->isAncestorOf(QApplication::focusWidget()); }));
    std::map<std::string, std::string> texts;
    for (int i = 0; i < 5; ++i) {
        QTest::keyClick(panel(), Qt::Key_Tab);
        auto* focused = QApplication::focusWidget();
        const auto* text = qobject_cast<QPlainTextEdit*>(focused);
        auto* seen = QAccessible::queryAccessibleInterface(focused);
        texts[seen->text(QAccessible::Name).toStdString()] = text ? text->toPlainText().toStdString() : "";
    }
    EXPECT_THAT(texts,
                ElementsAre(std::pair("Built on", "Qt"), std::pair("Close", ""),
                            std::pair("Licence", ""), // The tests bring none.
                            std::pair("Sound bank", "/banks/small.sf2"),
                            std::pair("Version", "Version 1.2, build 34\nKestrune Software, MIT licence")));
}

} // namespace
} // namespace tambrel
