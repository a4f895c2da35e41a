#include "SessionBus.h"

#include <QFile>

namespace tambrel {
namespace {

// Where there is none, the library would start one for this program alone, and leave it running.
bool isThere() {
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus");
}

// A connection of our own: the toolkit's default one complains when it is made before the application.
QDBusConnection connection() {
    const QString name = "tambrel";
    return isThere() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)
                     : QDBusConnection(name);
}

} // namespace

QDBusConnection sessionBus() {
    static const QDBusConnection bus = connection();
    return bus;
}

} // namespace tambrel
