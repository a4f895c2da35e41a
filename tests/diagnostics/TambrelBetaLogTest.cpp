#include "BetaLogTesting.h"
#include "ExpectedText.h"

#include <barrier>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class TambrelBetaLogTest : public BetaLogTest {
protected:
    /// Starts a run whose window is open, which is not in the file.
    void startRunWithWindow() {
        allowFile(false);
        startRun();
        log.showDebugWindow();
        window.clear();
        allowFile();
    }

    [[nodiscard]] std::string content(const QString& file) const {
        return tambrel::content(file.toStdString());
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

    [[nodiscard]] qsizetype markers() const { return QDir(folder).entryList({"*.marker"}).size(); }

    const QString marker = folder + "/Tambrel-session-active.marker";
};

const auto crashQuestion =
    "Tambrel may not have closed normally last time./Would you like to email the beta log to Kestrune "
    "Software?/Email Report/Not Now";
const auto crashEntry = "Possible previous crash or forced quit detected | TambrelBetaLog.startSession";
const auto startEntry = "Application Session Started | TambrelBetaLog.startSession";
const auto endEntry = "Application Session Ended Normally | TambrelBetaLog.finishSession";

TEST_F(TambrelBetaLogTest, WritesOneLineForEachKindOfEntryToWindowAndFile) {
    info = {.displayName = "First",
            .name = "Second",
            .shortVersion = "1.2",
            .build = "34",
            .identifier = "tambrel.beta"};
    startRunWithWindow();
    log.procedure("A.b");
    log.procedure("A.b", "Detail");
    log.function("A.c", "");
    log.function("A.c", std::string("two\nlines"));
    log.userAction("Clicked Play", "A.d(_:)");
    log.userAction([] { return std::string("Opened ☃.mid"); }, "A.d(_:)");
    log.error(std::runtime_error("out of tune"), "A.e");
    log.close();
    EXPECT_EQ(content(logFile).substr(content(logFile).find('[')), window);
    const auto text = QString::fromStdString(content(logFile)).replace(stamp.c_str(), "(time)");
    EXPECT_TRUE(isExpected(text.toStdString(), "diagnostics/log.txt"));
}

TEST_F(TambrelBetaLogTest, DoesNothingAtAllWhileDiagnosticsAreOff) {
    settings.setValue("TambrelBetaLogFileEnabled", true);
    info.diagnosticsSwitch = std::string("on");
    const auto useless = []() -> std::string { throw std::logic_error("composed although off"); };
    log.procedure("A.b", useless); // Not even configured.
    startRun();
    EXPECT_EQ(log.startSession(), TambrelBetaLog::Launch::goesOn);
    log.procedure("A.b", useless);
    log.function("A.b", useless);
    log.userAction(useless, "A.b");
    log.error(std::runtime_error("ignored"), "A.b");
    log.showDebugWindow();
    log.emailDebugWindowText("text");
    log.revealBetaLogFile();
    log.finishSession();
    log.close();
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_EQ(window, "");
    EXPECT_FALSE(QFile::exists(folder));
}

TEST_F(TambrelBetaLogTest, ObeysTheSettingAndRecreatesADeletedFileAtEachEntry) {
    info.name = "Second";
    startRunWithWindow();
    log.procedure("A.b", "first");
    allowFile(false);
    log.procedure("A.b", "second");
    allowFile();
    log.procedure("A.b", "third");
    log.waitUntilWritten();
    EXPECT_THAT(entries(), ElementsAre("first | A.b", "third | A.b"));
    EXPECT_EQ(window, line("first | A.b") + line("second | A.b") + line("third | A.b"));
    ASSERT_TRUE(QFile::remove(logFile));
    log.procedure("A.b", "fourth");
    log.close();
    EXPECT_THAT(content(logFile), StartsWith("Tambrel betaLOG\nCreated: "));
    EXPECT_THAT(content(logFile), HasSubstr("\nApp Name: Second\nVersion: Unknown\n"));
    EXPECT_THAT(entries(), ElementsAre("fourth | A.b"));
}

TEST_F(TambrelBetaLogTest, BeginsAnotherSessionWhenTheUserGoesOnAfterTheEnd) {
    startRunWithWindow();
    const auto marked = [&] {
        log.waitUntilWritten();
        return content(marker);
    };
    log.startSession();
    EXPECT_EQ(marked(), "Session active since " + stamp + '\n');
    EXPECT_EQ(window, "") << "the start line is for the file only";
    for (const QString& path : {folder, logFile, marker})
        EXPECT_EQ((QFile::permissions(path) & 0x77).toInt(), 0) << path.toStdString() << " is open to others";
    log.finishSession();
    log.procedure("A.b");
    EXPECT_EQ(marked(), "");
    log.userAction("Clicked Play", "A.b");
    EXPECT_NE(marked(), "");
    log.finishSession();
    log.finishSession();
    EXPECT_EQ(marked(), "");
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_THAT(entries(), ElementsAre(startEntry, endEntry, "Procedure Ran | A.b", startEntry,
                                       "User Action: Clicked Play | A.b", endEntry));
}

TEST_F(TambrelBetaLogTest, FindsTheCrashOfEveryOneOfTheRunsThatGoOnBesideEachOther) {
    allowFile();
    for (const char* crashed : {"first", "second", "both"}) {
        SCOPED_TRACE(crashed);
        asked.clear();
        startRun();
        log.startSession();
        settle(log);
        TambrelBetaLog second;
        second.configure(services());
        second.startSession();
        settle(second);
        EXPECT_EQ(markers(), 2);
        EXPECT_THAT(asked, IsEmpty());
        if (crashed == std::string_view("first"))
            second.finishSession();
        if (crashed == std::string_view("second"))
            log.finishSession();
        log.close();
        second.close();
        startRun(false);
        log.startSession();
        settle(log);
        EXPECT_THAT(asked, ElementsAre(crashQuestion));
        EXPECT_EQ(markers(), 1);
        log.finishSession();
        log.close();
        EXPECT_EQ(markers(), 0);
    }
}

TEST_F(TambrelBetaLogTest, TakesAwayTheMarkerOfAnotherUserInAFolderOfItsOwn) {
    allowFile();
    settings.sync();
    ASSERT_TRUE(QDir().mkpath(folder) && QFile(marker).open(QIODevice::WriteOnly));
    ASSERT_TRUE(QFile::setPermissions(marker, QFile::ReadOther));
    constexpr uid_t anotherUser = 65534;
    const bool isRoot = geteuid() == 0; // Root may write everywhere.
    if (isRoot) {
        for (const auto& path : {home.path(), folder, settings.fileName()})
            ASSERT_EQ(chown(path.toLocal8Bit().constData(), anotherUser, static_cast<gid_t>(-1)), 0);
        ASSERT_EQ(seteuid(anotherUser), 0);
    }
    startRun(false);
    log.startSession();
    settle(log);
    EXPECT_EQ(content(marker), "Session active since " + stamp + '\n');
    log.finishSession();
    log.close();
    ASSERT_TRUE(!isRoot || seteuid(0) == 0);
    EXPECT_THAT(asked, ElementsAre(crashQuestion));
    EXPECT_EQ(markers(), 0);
}

TEST(TambrelBetaLogStore, LosesNoLineOfRunsThatStartAtOnce) {
    constexpr int runs = 8;
    for (int round = 0; round < 10; ++round) {
        const QTemporaryDir home;
        std::barrier start(runs);
        std::vector<std::jthread> all;
        all.reserve(runs);
        for (int run = 0; run < runs; ++run)
            all.emplace_back([&] {
                const TambrelBetaLogStore store(home.path() + "/logs");
                start.arrive_and_wait();
                EXPECT_EQ(store.writeEntry("header\n", "line\n"), std::nullopt);
            });
        all.clear();
        std::string expected = "header\n";
        for (int run = 0; run < runs; ++run)
            expected += "line\n";
        ASSERT_EQ(content((home.path() + "/logs/Tambrel-beta-log.txt").toStdString()), expected);
    }
}

TEST_F(TambrelBetaLogTest, OffersAReportAgainThatTheProgramsEndInterrupted) {
    allowFile();
    startRun();
    log.startSession();
    profiler = {.tools = {{.program = "sleep", .arguments = {"600"}}}, .limit = std::chrono::minutes(10)};
    startRun();
    log.startSession();
    settle(log);
    log.finishSession();
    log.close();
    EXPECT_THAT(drafts, IsEmpty());
    EXPECT_TRUE(QFile::exists(marker));

    profiler = {.tools = {}};
    startRun();
    log.startSession();
    settle(log); // The question.
    settle(log); // The report.
    log.finishSession();
    log.close();
    EXPECT_EQ(drafts.size(), 1u);
    EXPECT_THAT(asked, ElementsAre(crashQuestion, crashQuestion));
    EXPECT_FALSE(QFile::exists(marker));
}

TEST_F(TambrelBetaLogTest, ReportsFileFailuresInTheWindowAndStillDetectsACrash) {
    allowFile();
    startRun();
    log.startSession();
    log.close();
    ASSERT_TRUE(QFile::remove(logFile) && QDir().mkpath(logFile));
    startRunWithWindow();
    log.startSession();
    settle(log); // The question.
    settle(log); // The report.
    EXPECT_THAT(asked, ElementsAre(crashQuestion));
    const auto reason = std::generic_category().message(EISDIR);
    EXPECT_EQ(window, line("betaLOG file setup failed: " + reason) + line(crashEntry) +
                          line("betaLOG write failed: " + reason));
}

/// A disk on which no file grows larger than this.
class FullDisk {
public:
    explicit FullDisk(rlim_t room) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit full{room, before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    }
    ~FullDisk() { EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before_), 0); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
};

TEST_F(TambrelBetaLogTest, WritesNothingByHalvesToADiskThatIsFull) {
    startRunWithWindow();
    const auto why = std::generic_category().message(EFBIG);
    std::optional<FullDisk> disk(std::in_place, 100);
    log.procedure("A.b", "no room for the header");
    settle(log);
    EXPECT_FALSE(QFile::exists(logFile));
    log.procedure("A.b", std::string(7000, 'x'));
    log.emailCompleteBugReport();
    settle(log); // The texts.
    settle(log); // The attachment.
    ASSERT_EQ(drafts.size(), 1u);
    EXPECT_EQ(drafts[0].attachment, std::nullopt);
    EXPECT_THAT(clipboard, EndsWith(line(std::string(7000, 'x') + " | A.b")));
    EXPECT_THAT(window, EndsWith(line("betaLOG email attachment write failed: " + why)));
    EXPECT_THAT(QDir(folder).entryList(QDir::Files), IsEmpty());

    disk.reset();
    log.procedure("A.b", "before");
    settle(log);
    disk.emplace(content(logFile).size() + stamp.size() + 4); // "[stamp] " and a third of the letter.
    log.procedure("A.b", "☃");
    settle(log);
    disk.reset();
    EXPECT_THAT(window, EndsWith(line("☃ | A.b") + line("betaLOG write failed: " + why)));
    EXPECT_THAT(content(logFile), EndsWith("before | A.b\n"));
    log.procedure("A.b", "after");
    log.close();
    EXPECT_THAT(entries(), ElementsAre("before | A.b", "after | A.b"));
}

TEST_F(TambrelBetaLogTest, WritesEverythingInOrderButNoSessionUnderAUnitTestRunner) {
    environment = [](const char* name) {
        return std::string_view(name) == "XCTestConfigurationFilePath" ? std::optional<std::string>("")
                                                                       : std::nullopt;
    };
    settings.setValue("TambrelBetaLogFileEnabled", true);
    startRun();
    log.startSession();
    std::vector<std::string> expected;
    for (int i = 0; i < 300; ++i) {
        log.procedure("A.b", std::to_string(i));
        expected.push_back(std::to_string(i) + " | A.b");
    }
    log.procedure("A.b", "not UTF-8: \xff");
    log.close();
    EXPECT_EQ(entries(), expected);
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_FALSE(QFile::exists(marker));
    EXPECT_FALSE(log.diagnosticsEnabled());
}

TEST_F(TambrelBetaLogTest, FormsFolders) {
    EXPECT_EQ(betaLogFolder("/home/a/.local/share"),
              "/home/a/.local/share/Kestrune Software/Tambrel/Beta Logs");
    EXPECT_EQ(betaLogFolder(""), QDir::tempPath() + "/Kestrune Software/Tambrel/Beta Logs");
}

TEST_F(TambrelBetaLogTest, KeepsItsWindowWhenALostDisplayEndsTheProgram) {
    const auto loseDisplay = [this] {
        auto world = services();
        world.makeDebugWindow = RecordingWindow::maker(
            [alarm = std::shared_ptr<void>(nullptr, [](void*) { _exit(2); })](const std::string&) {});
        TambrelBetaLog::shared().configure(std::move(world));
        TambrelBetaLog::shared().showDebugWindow();
        std::exit(1); // What Qt does then.
    };
    EXPECT_EXIT(loseDisplay(), ::testing::ExitedWithCode(1), "");
}

} // namespace
} // namespace tambrel
