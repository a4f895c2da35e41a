#pragma once

#include "BusDaemon.h"
#include "PrivateHome.h"
#include "SMFBuilder.h"
#include "TestFiles.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tambrel {

/// A user's session with folders and a session bus of its own, in which the program runs, with the betaLOG
/// on, without a display and without sound.
class DesktopSession {
public:
    using Program = std::unique_ptr<QProcess>;

    static constexpr const char* identifier = "software.kestrune.tambrel.beta";
    static constexpr const char* objectPath = "/software/kestrune/tambrel/beta";
    /// In the home.
    static constexpr const char* logFolder = ".local/share/Kestrune Software/Tambrel/Beta Logs/";

    DesktopSession() {
        environment_.insert("PATH", qEnvironmentVariable("PATH"));
        environment_.insert("LC_ALL", "C.UTF-8");
        for (const char* kept : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"})
            if (qEnvironmentVariableIsSet(kept))
                environment_.insert(kept, qEnvironmentVariable(kept));
        environment_.insert("QT_QPA_PLATFORM", "offscreen");
        environment_.insert("TAMBREL_AUDIO_DRIVER", "silent");
        environment_.insert("TAMBREL_SOUNDFONT", "/usr/share/sounds/sf2/TimGM6mb.sf2");
        setHome(environment_, home().path());
        for (const char* folder : {".config", "services", "songs"})
            home().mkdir(folder);
        setDefaults("");
    }

    /// Where its programs keep everything.
    [[nodiscard]] QDir home() const { return QDir(files_.path("")); }

    void startBus() {
        bus_.emplace(environment_, home().filePath("services"));
        environment_.insert("DBUS_SESSION_BUS_ADDRESS", bus_->address());
    }
    void endBus() { bus_->end(); }
    /// Lets the bus start the program when something is asked of it.
    void makeActivatable() const {
        QFile service(home().filePath("services/" + QString(identifier) + ".service"));
        ASSERT_TRUE(service.open(QIODevice::WriteOnly));
        service.write(QByteArray("[D-BUS Service]\nName=") + identifier + "\nExec=" + TAMBREL_PROGRAM + "\n");
    }
    [[nodiscard]] QString busAddress() const { return environment_.value("DBUS_SESSION_BUS_ADDRESS"); }

    void set(const QString& variable, const QString& value) { environment_.insert(variable, value); }

    /// The program's settings, with these lines besides the consent to the log.
    void setDefaults(const QString& lines) const {
        home().mkdir(".config/Kestrune Software");
        QFile file(defaultsFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("[General]\nTambrelBetaLogConsentAsked=true\nTambrelBetaLogFileEnabled=true\n");
        file.write(lines.toUtf8());
    }
    [[nodiscard]] QString defaultsFile() const {
        return home().filePath(".config/Kestrune Software/Tambrel.conf");
    }

    /// The folder in which programs are started.
    [[nodiscard]] std::filesystem::path songs() const { return files_.path("songs"); }
    void writeSong(const std::string& name, int seconds = 60) const {
        const auto ticks = static_cast<unsigned>(960 * seconds);
        files_.write("songs/" + name,
                     testing::smfBytes(0, 480, {testing::TrackBuilder().noteOn(0, 0, 60).endOfTrack(ticks)}));
    }

    /// Starts a program, Tambrel unless `command` names another.
    [[nodiscard]] Program start(const QStringList& arguments,
                                const QString& command = TAMBREL_PROGRAM) const {
        auto program = std::make_unique<QProcess>();
        program->setProcessEnvironment(environment_);
        program->setWorkingDirectory(home().filePath("songs"));
        program->start(command, arguments);
        EXPECT_TRUE(program->waitForStarted(30'000)) << command.toStdString();
        return program;
    }
    /// Starts a program that ends by itself; its exit status.
    int run(const QStringList& arguments, const QString& command = TAMBREL_PROGRAM) const {
        return statusOf(*start(arguments, command));
    }
    static int statusOf(QProcess& program) {
        EXPECT_TRUE(program.state() == QProcess::NotRunning || program.waitForFinished(60'000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        return program.exitCode();
    }
    /// What it has said on the standard error stream; the platform without a display says what it cannot do.
    static std::string errorsOf(QProcess& program) {
        QStringList lines = QString::fromUtf8(program.readAllStandardError()).split('\n');
        lines.removeIf([](const QString& line) { return line.startsWith("This plugin does not support "); });
        return lines.join('\n').toStdString();
    }
    /// Ends the program as a session does.
    static int end(QProcess& program) {
        program.terminate();
        return statusOf(program);
    }

    /// All that the programs have logged, without the time stamps.
    [[nodiscard]] std::vector<std::string> log() const {
        std::ifstream file(files_.path(std::string(logFolder) + "Tambrel-beta-log.txt"));
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);)
            if (const auto start = line.find("] "); start != std::string::npos)
                lines.push_back(line.substr(start + 2));
        return lines;
    }
    [[nodiscard]] int count(const std::string& beginning) const {
        const auto lines = log();
        return static_cast<int>(std::ranges::count_if(
            lines, [&](const std::string& line) { return line.starts_with(beginning); }));
    }
    /// Waits until so many lines have begun like this.
    [[nodiscard]] bool logs(const std::string& beginning, int times = 1) const {
        return QTest::qWaitFor([&] { return count(beginning) >= times; }, 60'000);
    }
    /// True from a normal start of a session to its normal end.
    [[nodiscard]] bool hasMarker() const {
        return std::filesystem::exists(files_.path(std::string(logFolder) + "Tambrel-session-active.marker"));
    }

private:
    TestFiles files_;
    QProcessEnvironment environment_;
    std::optional<BusDaemon> bus_;
};

class DesktopSessionTest : public ::testing::Test {
protected:
    int argumentCount = 1;
    char argument[6] = "tests";
    char* arguments[2] = {argument, nullptr};
    QCoreApplication application{argumentCount, arguments};
    DesktopSession session;
};

} // namespace tambrel
