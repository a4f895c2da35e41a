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

#include <memory>
#include <optional>
#include <sstream>
#include <string>

namespace tambrel {

/// A user's session with folders and a session bus of its own, in which the program runs, with the betaLOG
/// on, without a display and without sound.
class DesktopSession {
public:
    using Program = std::unique_ptr<QProcess>;

    static constexpr const char* identifier = "software.kestrune.tambrel.beta";
    static constexpr const char* objectPath = "/software/kestrune/tambrel/beta";
    /// In the home.
    static constexpr const char* logFolder = ".local/share/Kestrune Software/Tambrel/Beta Logs";

    DesktopSession() {
        environment_.insert("PATH", home().filePath("bin") + ':' + qEnvironmentVariable("PATH"));
        environment_.insert("LC_ALL", "C.UTF-8");
        for (const char* kept : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"})
            if (qEnvironmentVariableIsSet(kept))
                environment_.insert(kept, qEnvironmentVariable(kept));
        environment_.insert("QT_QPA_PLATFORM", "offscreen");
        environment_.insert("TAMBREL_AUDIO_DRIVER", "silent");
        environment_.insert("TAMBREL_SOUNDFONT", "/usr/share/sounds/sf2/TimGM6mb.sf2");
        setHome(environment_, home().path());
        for (const char* folder : {"bin", ".config/Kestrune Software", "services", "songs"})
            home().mkpath(folder);
        setDefaults("");
        bus_.emplace(environment_, home().filePath("services"));
        environment_.insert("DBUS_SESSION_BUS_ADDRESS", bus_->address());
    }

    /// Where its programs keep everything.
    [[nodiscard]] QDir home() const { return QDir(files_.path("")); }
    [[nodiscard]] std::string content(const QString& file) const {
        return tambrel::content(home().filePath(file).toStdString());
    }
    void write(const QString& file, const QByteArray& text) const {
        QFile out(home().filePath(file));
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(text);
    }
    /// A program on the PATH, before all others of its name.
    void writeProgram(const QString& name, const QByteArray& script) const {
        write("bin/" + name, "#!/bin/sh\n" + script);
        QFile::setPermissions(home().filePath("bin/" + name), QFile::ReadOwner | QFile::ExeOwner);
    }

    [[nodiscard]] QString busAddress() const { return bus_->address(); }
    void endBus() { bus_->end(); }
    /// Lets the bus start the program when something is asked of it.
    void makeActivatable() const {
        write("services/tambrel.service",
              QByteArray("[D-BUS Service]\nName=") + identifier + "\nExec=" + TAMBREL_PROGRAM + "\n");
    }

    void set(const QString& variable, const QString& value) { environment_.insert(variable, value); }

    /// The program's settings, with these lines besides the consent to the log.
    void setDefaults(const QByteArray& lines) const {
        write(defaultsFile,
              "[General]\nTambrelBetaLogConsentAsked=true\nTambrelBetaLogFileEnabled=true\n" + lines);
    }
    static constexpr const char* defaultsFile = ".config/Kestrune Software/Tambrel.conf";

    /// In the folder in which programs are started.
    [[nodiscard]] std::filesystem::path song(const std::string& name) const {
        return files_.path("songs/" + name);
    }
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
    struct Outcome {
        int status;
        std::string output;
        std::string errors;
    };
    /// Starts a program that ends by itself.
    Outcome run(const QStringList& arguments, const QString& command = TAMBREL_PROGRAM) const {
        const auto program = start(arguments, command);
        const int status = statusOf(*program);
        return {status, program->readAllStandardOutput().toStdString(), errorsOf(*program)};
    }
    static int statusOf(QProcess& program) {
        EXPECT_TRUE(QTest::qWaitFor([&] { return program.state() == QProcess::NotRunning; }, 60'000));
        return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
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

    /// What a client of the desktop calls: the answer, or why there is none.
    Outcome call(const QString& name, const QString& path, const QString& method,
                 const QStringList& words = {}) const {
        return run(
            QStringList{"call", "--session", "--dest", name, "--object-path", path, "--method", method} +
                words,
            "gdbus");
    }
    Outcome callApplication(const QString& method, const QStringList& words) const {
        return call(identifier, objectPath, "org.freedesktop.Application." + method, words);
    }
    Outcome callPlayer(const QString& method, const QStringList& words = {}) const {
        return call("org.mpris.MediaPlayer2.tambrel", "/org/mpris/MediaPlayer2", method, words);
    }

    /// All that the programs have logged.
    [[nodiscard]] std::string log() const { return content(QString(logFolder) + "/Tambrel-beta-log.txt"); }
    [[nodiscard]] int count(const std::string& beginning) const {
        int lines = 0;
        std::istringstream all(log());
        for (std::string line; std::getline(all, line);)
            lines += line.find("] " + beginning) != std::string::npos ? 1 : 0;
        return lines;
    }
    /// Waits until so many lines have begun like this.
    [[nodiscard]] bool logs(const std::string& beginning, int times = 1) const {
        return QTest::qWaitFor([&] { return count(beginning) >= times; }, 60'000);
    }
    /// The markers of the runs that have not ended.
    [[nodiscard]] QStringList markers() const {
        return QDir(home().filePath(logFolder)).entryList({"*.marker"});
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
