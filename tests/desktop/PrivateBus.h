#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryFile>
#include <QTest>

#include <gtest/gtest.h>

namespace tambrel {

/// A session bus of the test's own, which ends with it and starts no services by itself.
class PrivateBus {
public:
    PrivateBus() {
        EXPECT_TRUE(configuration_.open());
        configuration_.write(
            "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><policy context='default'>"
            "<allow send_destination='*'/><allow eavesdrop='true'/><allow own='*'/></policy></busconfig>");
        configuration_.close();
        daemon_.start("dbus-daemon",
                      {"--config-file", configuration_.fileName(), "--nofork", "--print-address"});
        EXPECT_TRUE(QTest::qWaitFor([this] { return daemon_.canReadLine(); }, 30'000))
            << daemon_.errorString().toStdString();
        address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
    }
    ~PrivateBus() {
        for (const QString& name : names_)
            QDBusConnection::disconnectFromBus(name);
        daemon_.kill();
        daemon_.waitForFinished();
    }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// A connection to it, as of a program of this name.
    [[nodiscard]] QDBusConnection connection(const QString& name) {
        names_ << name;
        return QDBusConnection::connectToBus(address_, name);
    }

private:
    QTemporaryFile configuration_;
    QProcess daemon_;
    QString address_;
    QStringList names_;
};

} // namespace tambrel
