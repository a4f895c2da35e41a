#include "ApplicationInfo.h"
#include "DesktopSession.h"
#include "PrivateSessionBus.h"

#include <gmock/gmock.h>

#include <QDirIterator>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>

#include <cstring>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

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
        if (signal != SIGKILL)
            return waitForEnd();
        EXPECT_TRUE(run->waitForFinished(60'000));
    }

    void waitForEnd() { EXPECT_EQ(DesktopSession::statusOf(*run), 0); }

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
    static constexpr auto crashEntry =
        "] Possible previous crash or forced quit detected | TambrelBetaLog.startSession\n";
    const QString log = QString(folder) + "Tambrel-beta-log.txt";
    const QDir home = session.home();
    DesktopSession::Program run;
};

std::string codePoints(const std::string& text, qsizetype last) {
    const auto all = QString::fromStdString(text).toUcs4();
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(all.data()) + all.size() - last, last)
        .toStdString();
}

/// As a client of the desktop sees it.
std::string playbackStatus(const PrivateSessionBus& bus) {
    return bus
        .callPlayer("org.freedesktop.DBus.Properties.Get",
                    {"org.mpris.MediaPlayer2.Player", "PlaybackStatus"})
        .output;
}

/// The log at the end of a report that is letter by letter what it has to be; empty for any other.
std::string capturedLog(const std::string& report) {
    const auto& info = ApplicationInfo::current();
    const auto fixed = [](const std::string& text) {
        return QRegularExpression::escape(QString::fromStdString(text));
    };
    const QString stamp = "[^\n]+";
    const auto pattern =
        fixed("TYPE YOUR NOTES HERE:\n\nDo not enter any text below this line!\n\n" + std::string(75, '_') +
              "\n\nTambrel App Info:\nApp Name: " + info.displayName.value_or(info.name.value_or("Tambrel")) +
              "\nVersion: " + info.shortVersion.value_or("Unknown") +
              "\nBuild: " + info.build.value_or("Unknown") +
              "\nBundle Identifier: software.kestrune.tambrel.beta\nDiagnostics Enabled: YES\nCollected: ") +
        stamp + "\n\nMacintosh Info:\nCollected: " + stamp + "\n\n" + "(?:[^\n]*\n)+?" + // The profiler's.
        "\n(Tambrel betaLOG\nCreated: .*)";
    const QRegularExpression whole(QRegularExpression::anchoredPattern(pattern),
                                   QRegularExpression::DotMatchesEverythingOption);
    const auto match = whole.match(QString::fromStdString(report));
    EXPECT_TRUE(match.hasMatch()) << report;
    return match.captured(1).toStdString();
}

TEST_F(BetaProgramTest, MailsTheReportOfACrashCompleteAndLetterByLetter) {
    playAnswering("Allow");
    waitUntilPlaying(1);
    EXPECT_TRUE(session.hasMarker());
    end(SIGKILL);
    QFile earlierLog(home.filePath(log));
    ASSERT_TRUE(earlierLog.open(QIODevice::Append));
    for (int i = 0; i < 200; ++i)
        earlierLog.write("[earlier] Etwas Längeres, das schon ☃ dastand | Früher.früher\n");
    earlierLog.close();

    playAnswering("Email Report");
    ASSERT_TRUE(comes([&] { return QFile::exists(home.filePath("mail")); }));
    waitUntilPlaying(2);
    end(SIGTERM);
    EXPECT_FALSE(session.hasMarker());
    EXPECT_EQ(content("questions"), std::string(consentQuestion) + crashQuestion);

    const auto attached = QDir(home.filePath(folder)).entryInfoList({"Tambrel-beta-report-*.txt"});
    ASSERT_EQ(attached.size(), 1);
    const auto report = content(folder + attached[0].fileName());
    const auto mail = QByteArray::fromStdString(content("mail")).split('\0');
    ASSERT_EQ(mail.size(), 5);
    EXPECT_THAT(mail,
                ElementsAre("--utf8", "--attach", attached[0].absoluteFilePath().toUtf8(), mail[3], ""));
    const auto link = QString::fromUtf8(mail[3]);
    const QString start = "mailto:support@kestrune.example?subject=Tambrel%20Bug%20Report%21&body=";
    EXPECT_TRUE(link.startsWith(start)) << mail[3].toStdString();
    EXPECT_EQ(
        QUrl::fromPercentEncoding(mail[3].mid(start.size())).replace("\r\n", "\n").toStdString(),
        "TYPE YOUR NOTES HERE:\n\nThe full Tambrel beta report is attached as a text file and copied to "
        "the Clipboard. The latest report text is included below.\n"
        "[Earlier report entries were truncated for reliable email body delivery.]\n\n" +
            codePoints(report, 3350));

    const auto logText = capturedLog(report);
    EXPECT_THAT(logText, HasSubstr(crashEntry));
    EXPECT_EQ(content(log).substr(0, logText.size()), logText);
}

TEST_F(BetaProgramTest, AsksAgainWhatWasOpenWhenItWasToldToEnd) {
    const auto endAt = [this](const std::string& questions) {
        playAnswering("nothing");
        ASSERT_TRUE(comes([&] { return content("questions") == questions; }));
        end(SIGTERM);
    };
    const std::string consent = consentQuestion;
    endAt(consent);
    EXPECT_FALSE(QDir(home.filePath(folder)).exists());
    EXPECT_THAT(content(".config/Kestrune Software/Tambrel.conf"), Not(HasSubstr("BetaLog")));
    playAnswering("Allow");
    waitUntilPlaying(1);
    end(SIGKILL);
    endAt(consent + consent + crashQuestion);
    EXPECT_TRUE(session.hasMarker());
    EXPECT_EQ(content("mail"), "");
    playAnswering("Not Now");
    ASSERT_TRUE(
        comes([&] { return content("questions") == consent + consent + crashQuestion + crashQuestion; }));
    end(SIGTERM);
}

TEST_F(BetaProgramTest, AsksNothingAfterANormalEnd) {
    playAnswering("Allow");
    const int endings[] = {SIGTERM, SIGHUP, SIGINT, SIGTERM};
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(strsignal(endings[i]));
        waitUntilPlaying(i + 1);
        EXPECT_TRUE(session.hasMarker());
        end(endings[i]);
        EXPECT_FALSE(session.hasMarker());
        EXPECT_EQ(session.count("Application Session Ended Normally | "), i + 1);
        playAnswering("Not Now");
    }
    waitUntilPlaying(5);
    end(SIGTERM);
    EXPECT_EQ(content("questions"), consentQuestion);
    EXPECT_EQ(content("mail"), "");
}

TEST_F(BetaProgramTest, AsksAndKeepsNothingForAPicture) {
    const QString settings = ".config/Kestrune Software/Tambrel.conf";
    const std::string place = "[General]\nTambrelMainWindowFrame=\"{{30, 20}, {480, 500}}\"\n";
    for (const auto& before : {std::string(), place}) {
        SCOPED_TRACE(before.empty() ? "the first start" : "a place that is kept");
        if (!before.empty()) {
            EXPECT_TRUE(QFileInfo(home.filePath(settings)).dir().mkpath("."));
            QFile file(home.filePath(settings));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(before.c_str());
        }
        play(TAMBREL_BETA_PROGRAM, {"--screenshot", home.filePath("picture.png")});
        waitForEnd();
        EXPECT_TRUE(QFile::remove(home.filePath("picture.png")));
        EXPECT_EQ(content(settings), before);
        EXPECT_EQ(content("questions"), "");
        EXPECT_FALSE(session.hasMarker());
    }
}

TEST_F(BetaProgramTest, LeavesNothingButSettingsWithoutDiagnostics) {
    if (ApplicationInfo::current().diagnosticsEnabled())
        GTEST_SKIP() << "this build has diagnostics";
    play(TAMBREL_PROGRAM, {"--screenshot", home.filePath("picture.png")});
    waitForEnd();
    const PrivateSessionBus bus;
    session.set("DBUS_SESSION_BUS_ADDRESS", bus.environment().value("DBUS_SESSION_BUS_ADDRESS"));
    play(TAMBREL_PROGRAM);
    ASSERT_TRUE(comes([&] { return playbackStatus(bus) == "(<'Playing'>,)"; }));
    end(SIGTERM);
    std::vector<std::string> files;
    for (QDirIterator all(home.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
         all.hasNext();)
        files.push_back(QDir(home.path()).relativeFilePath(all.next()).toStdString());
    std::erase(files, "bin/xdg-email");
    EXPECT_EQ(std::erase(files, "picture.png"), 1u);
    std::erase(files, ".config/Kestrune Software/Tambrel.conf");
    EXPECT_THAT(files, IsEmpty());
    EXPECT_THAT(content(".config/Kestrune Software/Tambrel.conf"), Not(HasSubstr("BetaLog")));
}

} // namespace
} // namespace tambrel
