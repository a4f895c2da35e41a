#include "ThreadPriority.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

namespace tambrel {
namespace {

constexpr int niceness = -11;

void askRealtimeKit(const QDBusConnection& bus, quint64 thread) {
    constexpr const char* name = "org.freedesktop.RealtimeKit1";
    auto question =
        QDBusMessage::createMethodCall(name, "/org/freedesktop/RealtimeKit1", name, "MakeThreadHighPriority");
    question << thread << niceness;
    bus.send(question);
}

} // namespace

void ThreadPriority::raise(std::uint64_t thread) const {
    const auto number = static_cast<quint64>(thread);
    auto question =
        QDBusMessage::createMethodCall("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                                       "org.freedesktop.portal.Realtime", "MakeThreadHighPriorityWithPID");
    question << static_cast<quint64>(QCoreApplication::applicationPid()) << number << niceness;
    auto* watcher = new QDBusPendingCallWatcher(session_.asyncCall(question), QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [watcher, system = system_, number] {
                         if (watcher->isError())
                             askRealtimeKit(system(), number);
                         watcher->deleteLater();
                     });
}

} // namespace tambrel
