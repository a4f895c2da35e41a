#pragma once

#include <QDBusConnection>

namespace tambrel {

/// This program's connection to the session bus, made at the first call. Not connected where there is no bus;
/// the program then does without what the bus would have offered, and starts none. To be called before there
/// is an application object, and before there are threads; main thread.
[[nodiscard]] QDBusConnection sessionBus();

} // namespace tambrel
