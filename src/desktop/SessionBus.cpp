#include "SessionBus.h"

#include <QFile>

namespace tambrel {
namespace {

constexpr const char* addressVariable = "DBUS_SESSION_BUS_ADDRESS";
constexpr const char* noAddress = "disabled:";

bool isThere() {
    return qEnvironmentVariableIsSet(addressVariable) ||
           QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + "/bus");
}

// Under the name that the toolkit gives its own connection, which complains when it is made before the
// application: it finds this one, and need not connect a second time.
QDBusConnection connection() {
    const QString name = "qt_default_session_bus";
    if (isThere())
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
    // Or the toolkit would have one started for its own connection, wait for it and leave it running.
    qputenv(addressVariable, noAddress);
    return QDBusConnection(name);
}

} // namespace

QDBusConnection sessionBus() {
    static const QDBusConnection bus = connection();
    return bus;
}

QProcessEnvironment environmentOfOthers() {
    auto environment = QProcessEnvironment::systemEnvironment();
    if (environment.value(addressVariable) == noAddress)
        environment.remove(addressVariable);
    return environment;
}

} // namespace tambrel
