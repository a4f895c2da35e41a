#include "SessionBus.h"

#include <QFile>

namespace tambrel {
namespace {

constexpr const char* addressVariable = "DBUS_SESSION_BUS_ADDRESS";
constexpr const char* folderVariable = "XDG_RUNTIME_DIR";

bool isThere() {
    return !qEnvironmentVariableIsEmpty(addressVariable) ||
           (!qEnvironmentVariableIsEmpty(folderVariable) &&
            QFile::exists(qEnvironmentVariable(folderVariable) + "/bus"));
}

// Made under the name of Qt's own connection: Qt finds it, and neither complains that there is no application
// yet nor connects a second time. Where there is no bus, libdbus would start one, wait for it and leave it
// running: "disabled:" keeps this program from that, but not those that it starts.
QDBusConnection connection() {
    const bool isMissing = !isThere();
    if (isMissing)
        qputenv(addressVariable, "disabled:");
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, "qt_default_session_bus");
    if (isMissing)
        qunsetenv(addressVariable);
    return bus;
}

} // namespace

QDBusConnection sessionBus() {
    static const QDBusConnection bus = connection();
    return bus;
}

} // namespace tambrel
