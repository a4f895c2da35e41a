#pragma once

#include <QDBusConnection>

namespace tambrel {

/// This program's connection to the D-Bus session bus, made at the first call. Not connected where there is
/// no bus; none is started. First called before there is a QCoreApplication or another thread; main thread.
[[nodiscard]] QDBusConnection sessionBus();

} // namespace tambrel
