#pragma once

#include <QDBusConnection>
#include <QProcessEnvironment>

namespace tambrel {

/// This program's connection to the session bus, made at the first call. Not connected where there is no bus;
/// the program then does without what the bus would have offered, and starts none. May be called before there
/// is an application object; main thread.
[[nodiscard]] QDBusConnection sessionBus();

/// For programs that are started from here: what this one was started with. They may start a bus of their
/// own.
[[nodiscard]] QProcessEnvironment environmentOfOthers();

} // namespace tambrel
