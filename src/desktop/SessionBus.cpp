#include "SessionBus.h"

namespace tambrel {

QDBusConnection sessionBus() {
    // A connection of our own: the toolkit's default one complains when it is made before the application.
    static const QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "tambrel");
    return bus;
}

} // namespace tambrel
