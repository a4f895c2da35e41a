#include "PortalEmail.h"

#include "QtText.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QList>

#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace tambrel {
namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";

using Descriptors = QList<QDBusUnixFileDescriptor>;

QString uniqueToken() {
    static int requests = 0;
    return QStringLiteral("tambrel_%1").arg(++requests);
}

// Where the portal will answer. Known before the call, so that no answer is missed.
QString requestPath(const QDBusConnection& bus, const QString& token) {
    return "/org/freedesktop/portal/desktop/request/" + bus.baseService().mid(1).replace('.', '_') + '/' +
           token;
}

// Empty when the file cannot be opened.
Descriptors descriptors(const QUrl& file) {
    const int opened = open(QFile::encodeName(file.toLocalFile()).constData(), O_RDONLY | O_CLOEXEC);
    if (opened < 0)
        return {};
    Descriptors list{QDBusUnixFileDescriptor(opened)}; // A duplicate.
    close(opened);
    return list;
}

QVariantMap options(const EmailDraft& draft, const Descriptors& attachment, const QString& token) {
    // "address" and not "addresses", which the portals of older desktops do not know.
    QVariantMap map{{"handle_token", token},
                    {"address", toQString(draft.recipient)},
                    {"subject", toQString(draft.subject)},
                    {"body", toQString(draft.body)}};
    if (draft.attachment) {
        qDBusRegisterMetaType<Descriptors>();
        map.insert("attachment_fds", QVariant::fromValue(attachment));
    }
    return map;
}

} // namespace

EmailSender emailByPortal(const QDBusConnection& bus) {
    return [bus](const EmailDraft& draft, std::function<void(bool)> answer) {
        if (bus.isConnected())
            (new PortalEmail(bus, std::move(answer)))->send(draft);
        else
            answer(false); // Qt would never finish a call.
    };
}

PortalEmail::PortalEmail(QDBusConnection bus, std::function<void(bool isTaken)> answer)
    : QObject(QCoreApplication::instance()), bus_(std::move(bus)), answer_(std::move(answer)) {}

void PortalEmail::send(const EmailDraft& draft) {
    const Descriptors attachment = draft.attachment ? descriptors(*draft.attachment) : Descriptors();
    if (draft.attachment && attachment.isEmpty())
        return fail();
    const QString token = uniqueToken();
    // From any sender: to ask who owns the portal's name would block.
    bus_.connect({}, requestPath(bus_, token), "org.freedesktop.portal.Request", "Response", this,
                 SLOT(respond(uint, QVariantMap)));
    watchForItsEnd();
    auto call = QDBusMessage::createMethodCall(portal, "/org/freedesktop/portal/desktop",
                                               "org.freedesktop.portal.Email", "ComposeEmail");
    call << QString() << options(draft, attachment, token);
    const auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        if (finished->isError())
            fail();
    });
}

// Fails when the portal ends, or the session bus.
void PortalEmail::watchForItsEnd() {
    const auto* watcher =
        new QDBusServiceWatcher(portal, bus_, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, &PortalEmail::fail);
    bus_.connect({}, "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local", "Disconnected", this,
                 SLOT(fail()));
}

void PortalEmail::respond(uint response, const QVariantMap&) {
    constexpr uint failed = 2;
    end(response < failed);
}

void PortalEmail::end(bool isTaken) {
    if (const auto answer = std::exchange(answer_, nullptr))
        answer(isTaken);
    deleteLater();
}

} // namespace tambrel
