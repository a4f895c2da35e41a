#include "SuspendInhibitor.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QVariantMap>

#include <limits>
#include <utility>

namespace tambrel {
namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr uint suspend = 4; // Of 1 logout, 2 user switch, 4 suspend, 8 idle.

// D-Bus itself answers for a portal that does not start or has ended.
constexpr int unlimited = std::numeric_limits<int>::max();

} // namespace

SuspendInhibitor::SuspendInhibitor(QString window, QString reason, QDBusConnection bus)
    : bus_(std::move(bus)), window_(std::move(window)), reason_(std::move(reason)) {}

SuspendInhibitor::~SuspendInhibitor() {
    close();
}

void SuspendInhibitor::setInhibiting(bool isInhibiting) {
    if (isInhibiting == std::exchange(isWanted_, isInhibiting) || isAsking_)
        return; // `takeAnswer` sees what is wanted then.
    if (isWanted_)
        ask();
    else
        close();
}

void SuspendInhibitor::ask() {
    auto question = QDBusMessage::createMethodCall(portal, "/org/freedesktop/portal/desktop",
                                                   "org.freedesktop.portal.Inhibit", "Inhibit");
    question << window_ << suspend << QVariantMap{{"reason", reason_}};
    isAsking_ = true;
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(question, unlimited), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        takeAnswer(watcher->reply());
    });
}

void SuspendInhibitor::takeAnswer(const QDBusMessage& answer) {
    isAsking_ = false;
    if (answer.type() == QDBusMessage::ReplyMessage)
        request_ = answer.arguments().value(0).value<QDBusObjectPath>();
    if (!isWanted_)
        close();
}

void SuspendInhibitor::close() {
    const QString path = std::exchange(request_, {}).path();
    if (path.isEmpty())
        return;
    auto order = QDBusMessage::createMethodCall(portal, path, "org.freedesktop.portal.Request", "Close");
    order.setAutoStartService(false); // A portal that has ended inhibits nothing.
    bus_.send(order);
}

} // namespace tambrel
