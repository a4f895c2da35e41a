#pragma once

#include "SessionBus.h"

#include <cstdint>
#include <utility>

namespace tambrel {

/// Asks that one of this program's threads, by the kernel's number, goes before those of other programs: the
/// portal (`org.freedesktop.portal.Realtime`), and where there is none or it refuses, RealtimeKit on the
/// system bus. Returns at once; where nothing grants it, the thread stays as it is. Main thread only.
///
/// It asks for a high priority, not for real time: the kernel ends a program of which such a thread works for
/// 200 ms without a pause, and a song may ask for that much.
class ThreadPriority {
public:
    explicit ThreadPriority(QDBusConnection session = sessionBus(),
                            QDBusConnection (*system)() = QDBusConnection::systemBus)
        : session_(std::move(session)), system_(system) {}

    void raise(std::uint64_t thread) const;

private:
    QDBusConnection session_;
    QDBusConnection (*system_)(); // Connects to it when it is called first.
};

} // namespace tambrel
