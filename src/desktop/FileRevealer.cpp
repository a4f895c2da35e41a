#include "FileRevealer.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QStringList>

#include <utility>

namespace tambrel {

void revealFile(const QDBusConnection& bus, const QUrl& file, std::function<void(const QUrl&)> openLink) {
    const QUrl folder = file.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash);
    if (!bus.isConnected()) { // Qt would never finish a call.
        openLink(folder);
        return;
    }
    const QString service = "org.freedesktop.FileManager1";
    auto call =
        QDBusMessage::createMethodCall(service, "/org/freedesktop/FileManager1", service, "ShowItems");
    call << QStringList{file.toString(QUrl::FullyEncoded)} << QString();
    auto* reply = new QDBusPendingCallWatcher(bus.asyncCall(call), QCoreApplication::instance());
    QObject::connect(reply, &QDBusPendingCallWatcher::finished, reply,
                     [reply, folder, open = std::move(openLink)] {
                         reply->deleteLater();
                         if (reply->isError())
                             open(folder);
                     });
}

} // namespace tambrel
