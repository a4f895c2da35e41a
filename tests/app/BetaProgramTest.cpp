#include "ApplicationInfo.h"
#include "PrivateHome.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <cstring>
#include <optional>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// The whole program in a home of its own, with a mail program that only takes notes.
class BetaProgramTest : public ::testing::Test {
protected:
    BetaProgramTest() {
        EXPECT_TRUE(QDir(home.path()).mkpath("bin"));
        QFile mailProgram(home.filePath("bin/xdg-email"));
        EXPECT_TRUE(mailProgram.open(QIODevice::WriteOnly));
        mailProgram.write("#!/bin/sh\nprintf '%s\\0' \"$@\" >\"$HOME/writing\" && mv \"$HOME/writing\" "
                          "\"$HOME/mail\"\n");
        mailProgram.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        environment.insert("PATH", home.filePath("bin") + ':' + environment.value("PATH"));
        setHome(environment, home.path());
        environment.insert("DBUS_SESSION_BUS_ADDRESS", "disabled:");
        environment.insert("TAMBREL_TEST_QUESTIONS", home.filePath("questions"));
        environment.remove("XCTestConfigurationFilePath");
    }

    /// Starts the player on the demo song, with the answer that its questions will get.
    void playAnswering(const char* answer) {
        environment.insert("TAMBREL_TEST_ANSWER", answer);
        play(TAMBREL_BETA_PROGRAM);
    }

    void play(const char* program, const QStringList& options = {}) {
        run.emplace();
        run->setProcessEnvironment(environment);
        run->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        const QStringList playing{"--play",      "--audio-driver", "silent",
                                  "--soundfont", soundBank,        TAMBREL_DEMO_SONG};
        run->start(program, options + playing);
        ASSERT_TRUE(run->waitForStarted());
    }

    void end(int signal) {
        ::kill(static_cast<pid_t>(run->processId()), signal);
        waitForEnd(signal == SIGKILL ? QProcess::CrashExit : QProcess::NormalExit);
    }

    void waitForEnd(QProcess::ExitStatus expected = QProcess::NormalExit) {
        ASSERT_TRUE(run->waitForFinished(60'000));
        EXPECT_EQ(run->exitStatus(), expected);
        EXPECT_TRUE(expected == QProcess::CrashExit || run->exitCode() == 0);
    }

    /// Whether the program is so far as to end normally at a SIGTERM.
    [[nodiscard]] bool catchesTermination() const {
        QFile status(QString("/proc/%1/status").arg(run->processId()));
        if (!status.open(QIODevice::ReadOnly))
            return false;
        const auto text = status.readAll();
        const auto caught = text.mid(text.indexOf("SigCgt:") + 8, 16).toULongLong(nullptr, 16);
        return (caught & (1ull << (SIGTERM - 1))) != 0;
    }

    template<class Condition>
    static void waitUntil(Condition isTrue) {
        for (const QDeadlineTimer deadline(60'000); !isTrue() && !deadline.hasExpired();)
            QThread::msleep(10);
        ASSERT_TRUE(isTrue());
    }

    [[nodiscard]] std::string content(const QString& name) const {
        QFile file(home.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "";
    }

    /// Times that the text stands in the log.
    [[nodiscard]] int logged(const char* text) const {
        return static_cast<int>(QByteArray::fromStdString(content(log)).count(text));
    }

    void waitUntilPlaying(int time) {
        waitUntil([&] { return logged(startOfPlaying) == time; });
    }

    [[nodiscard]] bool hasMarker() const { return QFile::exists(home.filePath(marker)); }

    static constexpr auto folder = ".local/share/Kestrune Software/Tambrel/Beta Logs/";
    static constexpr auto soundBank = "/usr/share/sounds/sf2/TimGM6mb.sf2";
    static constexpr auto startOfPlaying = " | MIDIPlayerController.play\n";
    const QString log = QString(folder) + "Tambrel-beta-log.txt";
    const QString marker = QString(folder) + "Tambrel-session-active.marker";
    QTemporaryDir home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    std::optional<QProcess> run;
};

std::string codePoints(const std::string& text, qsizetype last) {
    const auto all = QString::fromStdString(text).toUcs4();
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(all.data()) + all.size() - last, last)
        .toStdString();
}

TEST_F(BetaProgramTest, MailsTheReportOfACrashCompleteAndLetterByLetter) {
    playAnswering("Allow");
    waitUntilPlaying(1);
    EXPECT_TRUE(hasMarker());
    end(SIGKILL);
    QFile earlierLog(home.filePath(log));
    ASSERT_TRUE(earlierLog.open(QIODevice::Append));
    for (int i = 0; i < 200; ++i)
        earlierLog.write("[earlier] Etwas Längeres, das schon ☃ dastand | Früher.früher\n");
    earlierLog.close();

    playAnswering("Email Report");
    waitUntil([&] { return QFile::exists(home.filePath("mail")); });
    waitUntilPlaying(2);
    end(SIGTERM);
    EXPECT_FALSE(hasMarker());
    EXPECT_EQ(content("questions"), "Allow Tambrel to create a beta log file?\n"
                                    "Tambrel may not have closed normally last time.\n");

    const auto attached = QDir(home.filePath(folder)).entryInfoList({"Tambrel-beta-report-*.txt"});
    ASSERT_EQ(attached.size(), 1);
    const auto report = content(folder + attached[0].fileName());
    const auto mail = QByteArray::fromStdString(content("mail")).split('\0');
    ASSERT_EQ(mail.size(), 9);
    const auto body = mail[4].toStdString();
    EXPECT_THAT(mail, ElementsAre("--utf8", "--subject", "Tambrel Bug Report!", "--body", mail[4], "--attach",
                                  attached[0].absoluteFilePath().toUtf8(), "support@kestrune.example", ""));
    EXPECT_EQ(
        body,
        "TYPE YOUR NOTES HERE:\n\nThe full Tambrel beta report is attached as a text file and copied to "
        "the Clipboard. The latest report text is included below.\n"
        "[Earlier report entries were truncated for reliable email body delivery.]\n\n" +
            codePoints(report, 3350));

    EXPECT_THAT(report,
                StartsWith("TYPE YOUR NOTES HERE:\n\nDo not enter any text below this line!\n\n" +
                           std::string(75, '_') + "\n\nTambrel App Info:\nApp Name: Tambrel\nVersion: "));
    EXPECT_THAT(report, HasSubstr("\nBundle Identifier: software.kestrune.tambrel.beta\nDiagnostics Enabled: "
                                  "YES\nCollected: "));
    EXPECT_THAT(report, HasSubstr("\n\nMacintosh Info:\nCollected: "));
    const auto logText = report.substr(std::min(report.find("Tambrel betaLOG\nCreated: "), report.size()));
    EXPECT_THAT(logText, HasSubstr("] Possible previous crash or forced quit detected | "
                                   "TambrelBetaLog.startSession\n"));
    EXPECT_TRUE(content(log).starts_with(logText));
}

TEST_F(BetaProgramTest, AsksNothingAfterANormalEnd) {
    playAnswering("Allow");
    const int endings[] = {SIGTERM, SIGHUP, SIGINT, SIGTERM};
    for (int i = 0; i < 4; ++i) {
        SCOPED_TRACE(strsignal(endings[i]));
        waitUntilPlaying(i + 1);
        EXPECT_TRUE(hasMarker());
        end(endings[i]);
        EXPECT_FALSE(hasMarker());
        EXPECT_EQ(logged(" | TambrelBetaLog.finishSession\n"), i + 1);
        playAnswering("Not Now");
    }
    waitUntilPlaying(5);
    end(SIGTERM);
    EXPECT_EQ(content("questions"), "Allow Tambrel to create a beta log file?\n");
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
        EXPECT_FALSE(hasMarker());
    }
}

TEST_F(BetaProgramTest, LeavesNothingButSettingsWithoutDiagnostics) {
    if (ApplicationInfo::current().diagnosticsEnabled())
        GTEST_SKIP() << "this build has diagnostics";
    play(TAMBREL_PROGRAM, {"--screenshot", home.filePath("picture.png")});
    waitForEnd();
    play(TAMBREL_PROGRAM);
    waitUntil([&] { return catchesTermination(); });
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
