#pragma once

#include "BusDaemon.h"

#include <QDBusConnection>
#include <QProcessEnvironment>
#include <QStringList>

namespace tambrel {

/// A session bus of the test's own, on which no service starts by itself.
class PrivateSessionBus {
public:
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

private:
    BusDaemon daemon_{QProcessEnvironment::systemEnvironment()};
    QStringList connections_;
};

} // namespace tambrel
