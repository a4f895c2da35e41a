#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace tambrel {

/// A session bus of the test's own.
class BusDaemon {
public:
    /// The programs that the service files in the folder `services` name start in `environment` when
    /// something is asked of them; without a folder none starts by itself.
    explicit BusDaemon(const QProcessEnvironment& environment, const QString& services = {}) {
        QFile configuration(folder_.filePath("bus.conf"));
        EXPECT_TRUE(configuration.open(QIODevice::WriteOnly));
        configuration.write(
            ("<busconfig><type>session</type><listen>unix:dir=" + folder_.path() + "</listen>" +
             (services.isEmpty() ? QString() : "<servicedir>" + services + "</servicedir>") +
             "<policy context='default'><allow send_destination='*'/><allow receive_sender='*'/>"
             "<allow own='*'/></policy></busconfig>")
                .toUtf8());
        configuration.close();
        daemon_.setProcessEnvironment(environment);
        daemon_.start("dbus-daemon",
                      {"--nofork", "--print-address", "--config-file=" + configuration.fileName()});
        EXPECT_TRUE(QTest::qWaitFor([&] { return daemon_.canReadLine(); }, 30'000))
            << daemon_.readAllStandardError().toStdString();
        address_ = QString::fromLatin1(daemon_.readLine()).trimmed();
    }
    ~BusDaemon() { end(); }
    BusDaemon(const BusDaemon&) = delete;
    BusDaemon& operator=(const BusDaemon&) = delete;

    /// Makes the bus go away.
    void end() {
        daemon_.kill();
        daemon_.waitForFinished();
    }
    [[nodiscard]] const QString& address() const { return address_; }

private:
    QTemporaryDir folder_;
    QProcess daemon_;
    QString address_;
};

} // namespace tambrel
