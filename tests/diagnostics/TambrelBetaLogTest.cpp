#include "RecordingWindow.h"
#include "TestFiles.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <system_error>
#include <unistd.h>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr auto logFile = "Tambrel-beta-log.txt";
constexpr auto marker = "Tambrel-session-active.marker";

/// Makes writes beyond this size of a file fail, after a part, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::size_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
        const rlimit limit{bytes, before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
};

/// One program run after another on the same settings and folder.
class TambrelBetaLogTest : public ::testing::Test {
protected:
    /// A program run up to its start, with the answers it will get.
    TambrelBetaLog& startRun(std::optional<bool> answer = true) {
        endRun();
        run_ = newRun(answer);
        return *run_;
    }

    /// Another program run, besides the one that `startRun` started.
    std::unique_ptr<TambrelBetaLog> newRun(std::optional<bool> answer = true) {
        auto log = std::make_unique<TambrelBetaLog>();
        log->configure(TambrelBetaLogServices{
            .info = info,
            .settings = settings,
            .ask =
                [this, answer](const ModalQuestion& question) {
                    asked.push_back(question.message + '/' + question.informative + '/' +
                                    question.firstButton + '/' + question.secondButton);
                    return answer;
                },
            .composeEmail = [this](const EmailDraft&, const std::function<void()>&) { ++emails; },
            .makeDebugWindow = RecordingWindow::maker([this](const auto& line) { window.push_back(line); }),
            .profiler = profiler,
            .folder = folder,
            .environment =
                [this](const char* name) {
                    return underTest && std::string(name) == "XCTestConfigurationFilePath"
                               ? std::optional<std::string>("")
                               : std::nullopt;
                },
            .now = [] { return std::chrono::system_clock::from_time_t(1'700'000'000); },
        });
        // So that the opening of the window is not in the file.
        const auto allowed = settings.value("TambrelBetaLogFileEnabled");
        settings.remove("TambrelBetaLogFileEnabled");
        log->showDebugWindow();
        if (allowed.isValid())
            settings.setValue("TambrelBetaLogFileEnabled", allowed);
        window.clear();
        return log;
    }

    /// Ends the run without a word, as a crash would, but with everything written.
    void endRun() {
        if (run_)
            run_->close();
    }

    /// Returns when everything submitted so far has been done and reported back.
    void settle() { settle(*run_); }
    static void settle(TambrelBetaLog& log) {
        bool settled = false;
        log.inStore([](const TambrelBetaLogStore&) { return true; }, [&](bool done) { settled = done; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return settled; }, 10'000));
    }

    void allowFile(bool allowed = true) {
        settings.setValue("TambrelBetaLogConsentAsked", true);
        settings.setValue("TambrelBetaLogFileEnabled", allowed);
    }

    [[nodiscard]] bool exists(const char* name) const { return QFile::exists(folder + '/' + name); }

    [[nodiscard]] std::string content(const char* name) const {
        return tambrel::content((folder + '/' + name).toStdString());
    }

    /// The lines after the header, without their time stamps.
    [[nodiscard]] std::vector<std::string> entries() const {
        std::vector<std::string> lines;
        std::istringstream text(content(logFile));
        for (std::string line; std::getline(text, line);)
            if (line.starts_with("[" + stamp + "] "))
                lines.push_back(line.substr(stamp.size() + 3));
        return lines;
    }

    int argumentCount = 1;
    char argument[6] = "tests";
    char* arguments[2] = {argument, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QTemporaryDir home;
    QSettings settings{home.filePath("settings.ini"), QSettings::IniFormat};

    ApplicationInfo info{.diagnosticsSwitch = true};
    QString folder = home.filePath("data/Beta Logs");
    SystemProfiler profiler{.tools = {}};
    bool underTest = false;
    int emails = 0;
    std::vector<std::string> asked;
    std::vector<std::string> window;
    const std::string stamp =
        makeMediumDateTimeFormatter("C")(std::chrono::system_clock::from_time_t(1'700'000'000));

private:
    std::unique_ptr<TambrelBetaLog> run_;
};

const auto consentQuestion = "Allow Tambrel to create a beta log file?/The beta log is used only for crashes "
                             "and freezes. You can still "
                             "use the Debugging Window if you choose not to create a file./Allow/Not Now";
const auto crashQuestion =
    "Tambrel may not have closed normally last time./Would you like to email the beta log to Kestrune "
    "Software?/Email Report/Not Now";
const auto crashEntry = "Possible previous crash or forced quit detected | TambrelBetaLog.startSession";
const auto startEntry = "Application Session Started | TambrelBetaLog.startSession";
const auto endEntry = "Application Session Ended Normally | TambrelBetaLog.finishSession";

TEST_F(TambrelBetaLogTest, WritesOneLineForEachKindOfEntryToWindowAndFile) {
    allowFile();
    auto& log = startRun();
    log.procedure("A.b");
    log.procedure("A.b", "Detail");
    log.procedure("A.b", [] { return std::string("Composed"); });
    log.function("A.c", "");
    log.function("A.c", std::string("two\nlines"));
    log.userAction("Clicked Play", "A.d(_:)");
    log.userAction([] { return std::string("Opened ☃.mid"); }, "A.d(_:)");
    log.error(std::runtime_error("out of tune"), "A.e");
    endRun();

    std::string expected;
    for (const char* line :
         {"Procedure Ran | A.b", "Detail | A.b", "Composed | A.b", "Function Entered | A.c",
          "two\nlines | A.c", "User Action: Clicked Play | A.d(_:)", "User Action: Opened ☃.mid | A.d(_:)",
          "Error: out of tune | A.e"})
        expected += '[' + stamp + "] " + line + '\n';
    std::string shown;
    for (const auto& line : window)
        shown += line;
    EXPECT_EQ(shown, expected);
    EXPECT_EQ(content(logFile),
              "Tambrel betaLOG\nCreated: " + stamp +
                  "\nPurpose: crash and freeze reports for Kestrune Software beta testing.\n\n"
                  "Tambrel App Info:\nApp Name: Tambrel\nVersion: Unknown\nBuild: Unknown\n"
                  "Bundle Identifier: Unknown\nDiagnostics Enabled: YES\nCollected: " +
                  stamp + '\n' + expected);
}

TEST_F(TambrelBetaLogTest, ReportsTheApplicationsInformationUnderItsDisplayNameIfThereIsOne) {
    info = {.name = "Second", .shortVersion = "1.2", .build = "34", .identifier = "tambrel.beta"};
    for (const std::string name : {"Second", "First"}) {
        EXPECT_EQ(startRun().applicationInfoReport(),
                  "Tambrel App Info:\nApp Name: " + name +
                      "\nVersion: 1.2\nBuild: 34\nBundle Identifier: tambrel.beta\n"
                      "Diagnostics Enabled: YES\nCollected: " +
                      stamp);
        info.displayName = "First";
    }
}

TEST_F(TambrelBetaLogTest, DoesNothingAtAllWhileDiagnosticsAreOff) {
    allowFile();
    settings.remove("TambrelBetaLogConsentAsked");
    info.diagnosticsSwitch = std::string("on");
    TambrelBetaLog unconfigured;
    const auto useless = []() -> std::string { throw std::logic_error("composed although off"); };
    for (TambrelBetaLog* log : {&startRun(), &unconfigured}) {
        EXPECT_EQ(log->startSession(), TambrelBetaLog::Launch::goesOn);
        log->procedure("A.b", useless);
        log->function("A.b", useless);
        log->userAction(useless, "A.b");
        log->error(std::runtime_error("ignored"), "A.b");
        log->showDebugWindow();
        log->emailDebugWindowText("text");
        log->revealBetaLogFile();
        log->finishSession();
        log->close();
    }
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_THAT(window, IsEmpty());
    EXPECT_FALSE(QFile::exists(folder));
}

TEST_F(TambrelBetaLogTest, AsksForConsentOnceAndKeepsTheAnswer) {
    for (const bool allowed : {true, false}) {
        SCOPED_TRACE(allowed ? "Allow" : "Not Now");
        settings.clear();
        asked.clear();
        for (int run = 0; run < 2; ++run) {
            auto& log = startRun(run == 0 ? allowed : !allowed);
            log.startSession();
            log.finishSession();
        }
        endRun();
        EXPECT_THAT(asked, ElementsAre(consentQuestion));
        QSettings stored(settings.fileName(), QSettings::IniFormat);
        EXPECT_TRUE(stored.value("TambrelBetaLogConsentAsked").toBool());
        EXPECT_EQ(stored.value("TambrelBetaLogFileEnabled").toBool(), allowed);
        EXPECT_EQ(exists(logFile), allowed);
        QDir(folder).removeRecursively();
    }
}

TEST_F(TambrelBetaLogTest, ObeysTheSettingAtEachEntry) {
    allowFile();
    auto& log = startRun();
    log.procedure("A.b", "first");
    allowFile(false);
    log.procedure("A.b", "second");
    allowFile();
    log.procedure("A.b", "third");
    endRun();
    EXPECT_THAT(entries(), ElementsAre("first | A.b", "third | A.b"));
    EXPECT_EQ(window.size(), 3u);
}

TEST_F(TambrelBetaLogTest, KeepsAMarkerFromTheStartOfASessionToItsNormalEnd) {
    allowFile();
    auto& log = startRun();
    log.startSession();
    settle();
    EXPECT_EQ(content(marker), "Session active since " + stamp + '\n');
    EXPECT_THAT(window, IsEmpty()) << "the start line is for the file only";
    log.finishSession();
    endRun();
    EXPECT_FALSE(exists(marker));
    EXPECT_THAT(entries(), ElementsAre(startEntry, endEntry));
}

TEST_F(TambrelBetaLogTest, OffersABugReportAfterARunThatDidNotEnd) {
    const struct {
        const char* name;
        bool crashed;
        bool accepts;
        std::vector<std::string> questions;
        int emails;
    } rows[] = {
        {"ended normally", false, true, {}, 0},
        {"crashed, user accepts", true, true, {crashQuestion}, 1},
        {"crashed, user declines", true, false, {crashQuestion}, 0},
    };
    allowFile();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QDir(folder).removeRecursively();
        asked.clear();
        window.clear();
        emails = 0;
        auto& first = startRun();
        first.startSession();
        if (!row.crashed)
            first.finishSession();
        startRun(row.accepts).startSession();
        settle(); // The question.
        settle(); // The report.
        endRun();
        EXPECT_EQ(asked, row.questions);
        EXPECT_EQ(emails, row.emails);
        EXPECT_EQ(entries().back(), row.crashed ? crashEntry : startEntry);
        EXPECT_TRUE(exists(marker));
    }
}

TEST_F(TambrelBetaLogTest, LeavesTheMarkerToTheRunThatHasIt) {
    allowFile();
    startRun().startSession();
    settle();
    for (const bool firstCrashes : {false, true}) {
        SCOPED_TRACE(firstCrashes ? "the first one crashes" : "both go on");
        const auto second = newRun();
        second->startSession();
        settle(*second);
        if (firstCrashes)
            endRun();
        second->finishSession();
        second->close();
        EXPECT_TRUE(exists(marker));
        EXPECT_THAT(asked, IsEmpty());
    }
    startRun().startSession();
    settle();
    EXPECT_THAT(asked, ElementsAre(crashQuestion));
}

TEST_F(TambrelBetaLogTest, AsksAgainWhatTheProgramsEndLeftUnanswered) {
    auto& first = startRun(std::nullopt);
    EXPECT_EQ(first.startSession(), TambrelBetaLog::Launch::isOver);
    first.finishSession();
    endRun();
    EXPECT_FALSE(settings.contains("TambrelBetaLogConsentAsked"));
    EXPECT_FALSE(QFile::exists(folder));
    startRun(true).startSession(); // And crashes.
    for (const auto answer : {std::optional<bool>(), std::optional(false), std::optional(false)}) {
        auto& next = startRun(answer);
        next.startSession();
        settle();
        next.finishSession();
    }
    endRun();
    EXPECT_THAT(asked, ElementsAre(consentQuestion, consentQuestion, crashQuestion, crashQuestion));
}

TEST_F(TambrelBetaLogTest, OffersAReportAgainThatTheProgramsEndInterrupted) {
    allowFile();
    startRun().startSession();
    profiler = {.tools = {{.program = "sleep", .arguments = {"600"}}}, .limit = std::chrono::minutes(10)};
    auto& interrupted = startRun();
    interrupted.startSession();
    settle();
    interrupted.finishSession();
    endRun();
    EXPECT_EQ(emails, 0);
    EXPECT_TRUE(exists(marker));

    profiler = {.tools = {}};
    auto& last = startRun();
    last.startSession();
    settle(); // The question.
    settle(); // The report.
    last.finishSession();
    endRun();
    EXPECT_EQ(emails, 1);
    EXPECT_THAT(asked, ElementsAre(crashQuestion, crashQuestion));
    EXPECT_FALSE(exists(marker));
}

TEST_F(TambrelBetaLogTest, BeginsAnotherSessionWhenTheUserGoesOnAfterTheEnd) {
    allowFile();
    auto& log = startRun();
    const auto marked = [&] {
        log.waitUntilWritten();
        return exists(marker);
    };
    log.startSession();
    log.finishSession();
    log.procedure("A.b");
    EXPECT_FALSE(marked());
    log.userAction("Clicked Play", "A.b");
    EXPECT_TRUE(marked());
    log.finishSession();
    log.finishSession();
    EXPECT_FALSE(marked());
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_THAT(entries(), ElementsAre(startEntry, endEntry, "Procedure Ran | A.b", startEntry,
                                       "User Action: Clicked Play | A.b", endEntry));
}

TEST_F(TambrelBetaLogTest, StartsNoSessionUnderAUnitTestRunnerButStillWritesEntries) {
    underTest = true;
    startRun().startSession();
    endRun();
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_FALSE(QFile::exists(folder));

    allowFile();
    auto& log = startRun();
    log.startSession();
    log.procedure("A.b", "later");
    endRun();
    EXPECT_FALSE(exists(marker));
    EXPECT_THAT(entries(), ElementsAre("later | A.b"));
}

TEST_F(TambrelBetaLogTest, ReportsFileFailuresInTheWindowOnly) {
    const QString plainFile = home.filePath("plain");
    ASSERT_TRUE(QFile(plainFile).open(QIODevice::WriteOnly));
    folder = plainFile + "/sub";
    allowFile();
    auto& log = startRun();
    log.startSession();
    settle();
    log.procedure("A.b", "Detail");
    settle();
    log.finishSession();
    endRun();
    const auto reason = std::generic_category().message(ENOTDIR) + '\n';
    ASSERT_EQ(window.size(), 4u);
    EXPECT_EQ(window[0], '[' + stamp + "] betaLOG file setup failed: " + reason);
    EXPECT_EQ(window[2], '[' + stamp + "] betaLOG write failed: " + reason);
    EXPECT_THAT(asked, IsEmpty());
}

TEST_F(TambrelBetaLogTest, WritesWholeLinesOnlyToADiskThatIsFull) {
    allowFile();
    auto& log = startRun();
    log.procedure("A.b", "before");
    settle();
    const auto whole = content(logFile);
    const std::string first = '[' + stamp + "] ☃";
    {
        const FileSizeLimit limit(whole.size() + first.size() - 1); // Inside the first letter.
        log.procedure("A.b", "☃");
        settle();
    }
    EXPECT_EQ(content(logFile), whole);
    EXPECT_EQ(window.back(),
              '[' + stamp + "] betaLOG write failed: " + std::generic_category().message(EFBIG) + '\n');
    log.procedure("A.b", "after");
    endRun();
    EXPECT_THAT(entries(), ElementsAre("before | A.b", "after | A.b"));
}

TEST_F(TambrelBetaLogTest, DetectsACrashEvenWhenTheLogFileCannotBeWritten) {
    allowFile();
    startRun().startSession();
    endRun();
    ASSERT_TRUE(QFile::remove(folder + '/' + logFile));
    ASSERT_TRUE(QDir().mkpath(folder + '/' + logFile));
    startRun().startSession();
    settle();
    endRun();
    EXPECT_THAT(asked, ElementsAre(crashQuestion));
    ASSERT_FALSE(window.empty());
    EXPECT_THAT(window[0], StartsWith('[' + stamp + "] betaLOG file setup failed: "));
}

TEST_F(TambrelBetaLogTest, RecreatesADeletedFileWithItsHeader) {
    allowFile();
    auto& log = startRun();
    log.procedure("A.b", "first");
    settle();
    ASSERT_TRUE(QFile::remove(folder + '/' + logFile));
    log.procedure("A.b", "second");
    endRun();
    EXPECT_THAT(content(logFile), StartsWith("Tambrel betaLOG\nCreated: "));
    EXPECT_THAT(entries(), ElementsAre("second | A.b"));
}

TEST_F(TambrelBetaLogTest, WritesEverythingInOrderBeforeItCloses) {
    allowFile();
    auto& log = startRun();
    std::vector<std::string> expected;
    for (int i = 0; i < 300; ++i) {
        log.procedure("A.b", std::to_string(i));
        expected.push_back(std::to_string(i) + " | A.b");
    }
    log.procedure("A.b", "not UTF-8: \xff");
    endRun();
    EXPECT_EQ(entries(), expected);
    EXPECT_FALSE(log.diagnosticsEnabled());
}

TEST_F(TambrelBetaLogTest, KeepsItsWindowWhenALostDisplayEndsTheProgram) {
    class LastingWindow : public RecordingWindow {
    public:
        using RecordingWindow::RecordingWindow;
        ~LastingWindow() override { _exit(2); }
    };
    const auto loseDisplay = [this] {
        auto& log = TambrelBetaLog::shared();
        log.configure({.info = info, .settings = settings, .ask = {}, .makeDebugWindow = [](TambrelBetaLog&) {
                           return std::make_unique<LastingWindow>([](const std::string&) {});
                       }});
        log.showDebugWindow();
        std::exit(1); // What the toolkit does then.
    };
    EXPECT_EXIT(loseDisplay(), ::testing::ExitedWithCode(1), "");
}

TEST_F(TambrelBetaLogTest, FormsFileTimeStampsAndFolders) {
    const auto expected = QDateTime::fromSecsSinceEpoch(1'700'000'000);
    const auto text = startRun().fileTimestamp();
    EXPECT_EQ(QDateTime::fromString(QString::fromStdString(text), "yyyyMMdd-HHmmss"), expected);
    EXPECT_EQ(betaLogFolder("/home/a/.local/share"),
              "/home/a/.local/share/Kestrune Software/Tambrel/Beta Logs");
    EXPECT_EQ(betaLogFolder(""), QDir::tempPath() + "/Kestrune Software/Tambrel/Beta Logs");
}

} // namespace
} // namespace tambrel
