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

// Under the name that Qt gives its own connection, which complains when it is made before the
// application: it finds this one, and neither connects a second time nor has a bus started, waits for it and
// leaves it running, as libdbus does where there is none. The programs that this one starts may do so.
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
