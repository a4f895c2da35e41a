#pragma once

#include "BusDaemon.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QProcess>
#include <QTest>

#include <string>
#include <vector>

namespace tambrel {

/// A session bus of the test's own, on which no service starts by itself, and programs that are its clients.
class PrivateSessionBus {
public:
    struct Outcome {
        int status;
        std::string output;
        std::string errors;
    };

    PrivateSessionBus() = default;
    ~PrivateSessionBus() {
        end();
        for (const QString& name : connections_)
            QDBusConnection::disconnectFromBus(name);
    }
    PrivateSessionBus(const PrivateSessionBus&) = delete;
    PrivateSessionBus& operator=(const PrivateSessionBus&) = delete;

    /// Makes the bus go away.
    void end() { daemon_.end(); }

    /// Another connection of this process.
    [[nodiscard]] QDBusConnection connect() {
        connections_.append(QString("%1 %2").arg(daemon_.address()).arg(connections_.size()));
        return QDBusConnection::connectToBus(daemon_.address(), connections_.last());
    }

    [[nodiscard]] QProcessEnvironment environment() const {
        auto variables = QProcessEnvironment::systemEnvironment();
        variables.insert("DBUS_SESSION_BUS_ADDRESS", daemon_.address());
        return variables;
    }

    /// Runs a client to its end, while the services of this process go on.
    [[nodiscard]] Outcome run(const QStringList& words) const {
        QProcess client;
        client.setProcessEnvironment(environment());
        client.start(words.first(), words.mid(1));
        EXPECT_TRUE(QTest::qWaitFor([&] { return client.state() == QProcess::NotRunning; }, 30'000));
        return {client.exitStatus() == QProcess::NormalExit ? client.exitCode() : -1,
                client.readAllStandardOutput().trimmed().toStdString(),
                client.readAllStandardError().trimmed().toStdString()};
    }
    /// Has a client call a method of the player, by its whole name.
    [[nodiscard]] Outcome callPlayer(const QString& method, const QStringList& words = {}) const {
        return run(QStringList{"gdbus", "call", "--session", "--dest", "org.mpris.MediaPlayer2.tambrel",
                               "--object-path", "/org/mpris/MediaPlayer2", "--method", method} +
                   words);
    }

private:
    BusDaemon daemon_{QProcessEnvironment::systemEnvironment()};
    QStringList connections_;
};

/// What a program on the bus makes known, as `gdbus monitor` prints it.
class BusMonitor {
public:
    BusMonitor(const PrivateSessionBus& bus, const QString& name) {
        monitor_.setProcessEnvironment(bus.environment());
        monitor_.start("gdbus", {"monitor", "--session", "--dest", name});
        EXPECT_FALSE(until("is owned by").empty());
    }
    ~BusMonitor() {
        monitor_.kill();
        monitor_.waitForFinished();
    }
    BusMonitor(const BusMonitor&) = delete;
    BusMonitor& operator=(const BusMonitor&) = delete;

    /// The lines up to the first one with this text, that one included; none when it does not come.
    [[nodiscard]] std::vector<std::string> until(const std::string& text) {
        std::vector<std::string> lines;
        while (QTest::qWaitFor([&] { return monitor_.canReadLine(); }, 30'000)) {
            lines.push_back(monitor_.readLine().trimmed().toStdString());
            if (lines.back().find(text) != std::string::npos)
                return lines;
        }
        ADD_FAILURE() << text << " has not been said";
        return {};
    }

private:
    QProcess monitor_;
};

} // namespace tambrel
