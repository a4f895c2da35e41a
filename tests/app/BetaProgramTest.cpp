#include "ApplicationInfo.h"
#include "DesktopSession.h"
#include "PrivateSessionBus.h"

#include <gmock/gmock.h>

#include <QDirIterator>
#include <QUrl>

#include <cstring>

namespace tambrel {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

/// The whole program in a home of its own, with a mail program that only takes notes.
class BetaProgramTest : public DesktopSessionTest {
protected:
    BetaProgramTest() {
        QFile::remove(session.defaultsFile());
        home.mkdir("bin");
        QFile mailProgram(home.filePath("bin/xdg-email"));
        EXPECT_TRUE(mailProgram.open(QIODevice::WriteOnly));
        mailProgram.write("#!/bin/sh\nprintf '%s\\0' \"$@\" >\"$HOME/writing\" && mv \"$HOME/writing\" "
                          "\"$HOME/mail\"\n");
        mailProgram.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        session.set("PATH", home.filePath("bin") + ':' + qEnvironmentVariable("PATH"));
        session.set("TAMBREL_TEST_QUESTIONS", home.filePath("questions"));
    }

    /// Starts the player on the demo song, with the answer that its questions will get.
    void playAnswering(const char* answer) {
        session.set("TAMBREL_TEST_ANSWER", answer);
        play(TAMBREL_BETA_PROGRAM);
    }

    void play(const char* program, const QStringList& options = {}) {
        run = session.start(options + QStringList{"--play", TAMBREL_DEMO_SONG}, program);
    }

    void end(int signal) {
        ASSERT_EQ(run->state(), QProcess::Running);
        ::kill(static_cast<pid_t>(run->processId()), signal);
        EXPECT_TRUE(run->waitForFinished(60'000));
        EXPECT_EQ(run->exitStatus(), signal == SIGKILL ? QProcess::CrashExit : QProcess::NormalExit);
    }

    [[nodiscard]] static bool comes(const std::function<bool()>& condition) {
        return QTest::qWaitFor(condition, 60'000);
    }

    [[nodiscard]] std::string content(const QString& name) const {
        return tambrel::content(home.filePath(name).toStdString());
    }

    void waitUntilPlaying(int time) { ASSERT_TRUE(session.logs("Starting playback | ", time)); }

    static constexpr auto folder = DesktopSession::logFolder;
    static constexpr auto consentQuestion =
        "Allow Tambrel to create a beta log file?/The beta log is used only for crashes and freezes. You can "
        "still use the Debugging Window if you choose not to create a file./Allow\n";
    static constexpr auto crashQuestion = "Tambrel may not have closed normally last time./Would you like to "
                                          "email the beta log to Kestrune Software?/Email Report\n";
    static constexpr auto settings = ".config/Kestrune Software/Tambrel.conf";
    const QString log = QString(folder) + "Tambrel-beta-log.txt";
    const QDir home = session.home();
    DesktopSession::Program run;
};

TEST_F(BetaProgramTest, AsksOnlyAfterACrashAndMailsTheReport) {
    std::string questions;
    const auto endAt = [&](const char* question) {
        playAnswering("nothing");
        questions += question;
        ASSERT_TRUE(comes([&] { return content("questions") == questions; }));
        end(SIGTERM);
    };
    endAt(consentQuestion);
    EXPECT_FALSE(QDir(home.filePath(folder)).exists());
    EXPECT_THAT(content(settings), Not(HasSubstr("BetaLog")));

    playAnswering("Allow");
    questions += consentQuestion;
    int times = 0;
    for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
        SCOPED_TRACE(strsignal(signal));
        waitUntilPlaying(++times);
        EXPECT_TRUE(session.hasMarker());
        end(signal);
        EXPECT_FALSE(session.hasMarker());
        EXPECT_EQ(session.count("Application Session Ended Normally | "), times);
        playAnswering("Not Now");
    }
    waitUntilPlaying(++times);
    end(SIGKILL);
    const auto earlier = content(log);
    QFile earlierLog(home.filePath(log));
    ASSERT_TRUE(earlierLog.open(QIODevice::Append));
    for (int i = 0; i < 200; ++i)
        earlierLog.write("[earlier] Etwas Längeres, das schon ☃ dastand | Früher.früher\n");
    earlierLog.close();
    endAt(crashQuestion);
    EXPECT_TRUE(session.hasMarker());
    EXPECT_EQ(content("mail"), "");

    playAnswering("Email Report");
    ASSERT_TRUE(comes([&] { return QFile::exists(home.filePath("mail")); }));
    waitUntilPlaying(++times);
    end(SIGTERM);
    EXPECT_EQ(content("questions"), questions + crashQuestion);

    const auto attached = QDir(home.filePath(folder)).entryInfoList({"Tambrel-beta-report-*.txt"});
    ASSERT_EQ(attached.size(), 1);
    const auto report = content(folder + attached[0].fileName());
    EXPECT_THAT(report, HasSubstr("\nBundle Identifier: software.kestrune.tambrel.beta\n"));
    const auto logText = report.substr(report.find("Tambrel betaLOG\nCreated: "));
    EXPECT_THAT(logText, AllOf(StartsWith(earlier), HasSubstr("Possible previous crash or forced quit")));
    EXPECT_THAT(content(log), StartsWith(logText));

    const auto mail = QByteArray::fromStdString(content("mail")).split('\0');
    ASSERT_EQ(mail.size(), 5);
    EXPECT_THAT(mail,
                ElementsAre("--utf8", "--attach", attached[0].absoluteFilePath().toUtf8(), mail[3], ""));
    const QByteArray start = "mailto:support@kestrune.example?subject=Tambrel%20Bug%20Report%21&body=";
    EXPECT_TRUE(mail[3].startsWith(start)) << mail[3].toStdString();
    const auto body = QUrl::fromPercentEncoding(mail[3].mid(start.size())).replace("\r\n", "\n");
    EXPECT_TRUE(body.startsWith("TYPE YOUR NOTES HERE:\n\nThe full Tambrel beta report is attached"));
    EXPECT_THAT(report, EndsWith(body.last(3000).toStdString()));
}

TEST_F(BetaProgramTest, AsksAndKeepsNothingForAPicture) {
    session.setDefaults("TambrelMainWindowFrame=\"{{30, 20}, {480, 500}}\"\n");
    const auto before = content(settings);
    for (const bool isFirstStart : {false, true}) {
        if (isFirstStart)
            QFile::remove(session.defaultsFile());
        play(TAMBREL_BETA_PROGRAM, {"--screenshot", home.filePath("picture.png")});
        EXPECT_EQ(DesktopSession::statusOf(*run), 0);
        EXPECT_TRUE(QFile::remove(home.filePath("picture.png")));
        EXPECT_EQ(content(settings), isFirstStart ? "" : before);
        EXPECT_EQ(content("questions"), "");
        EXPECT_FALSE(session.hasMarker());
    }
}

TEST_F(BetaProgramTest, LeavesNothingButSettingsWithoutDiagnostics) {
    if (ApplicationInfo::current().diagnosticsEnabled())
        GTEST_SKIP() << "this build has diagnostics";
    const PrivateSessionBus bus;
    session.set("DBUS_SESSION_BUS_ADDRESS", bus.environment().value("DBUS_SESSION_BUS_ADDRESS"));
    play(TAMBREL_PROGRAM);
    ASSERT_TRUE(comes([&] { return bus.run({"playerctl", "status"}).output == "Playing"; }));
    end(SIGTERM);
    std::vector<std::string> files;
    for (QDirIterator all(home.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
         all.hasNext();)
        files.push_back(QDir(home.path()).relativeFilePath(all.next()).toStdString());
    EXPECT_THAT(files, UnorderedElementsAre("bin/xdg-email", settings));
    EXPECT_THAT(content(settings), Not(HasSubstr("BetaLog")));
}

} // namespace
} // namespace tambrel
