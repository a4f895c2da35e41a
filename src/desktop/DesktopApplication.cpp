#include "DesktopApplication.h"

#include <QDBusMessage>
#include <QDBusReply>

#include <utility>

namespace tambrel {
namespace {

constexpr const char* interfaceName = "org.freedesktop.Application";
constexpr const char* tokenKey = "activation-token";
constexpr const char* startupKey = "desktop-startup-id";
constexpr const char* playKey = "play";

// The D-Bus daemon answers at once. Another program may be busy, but the user is waiting.
constexpr int busTimeout = 5'000;   // Milliseconds.
constexpr int otherTimeout = 2'000; // Milliseconds.

QDBusMessage busCall(const char* method) {
    return QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                          "org.freedesktop.DBus", method);
}

QVariantMap platformData(const LaunchContext& context) {
    QVariantMap data;
    if (!context.activationToken.isEmpty())
        data[tokenKey] = context.activationToken;
    if (!context.startupId.isEmpty())
        data[startupKey] = context.startupId;
    if (context.play)
        data[playKey] = true;
    return data;
}

LaunchContext launchContext(const QVariantMap& data) {
    return {data[tokenKey].toString(), data[startupKey].toString(), data[playKey].toBool()};
}

// As desktop entries name it for D-Bus activation.
QString objectPath(QString identifier) {
    return '/' + identifier.replace('.', '/').replace('-', '_');
}

} // namespace

LaunchContext LaunchContext::fromEnvironment() {
    return {qEnvironmentVariable("XDG_ACTIVATION_TOKEN"), qEnvironmentVariable("DESKTOP_STARTUP_ID")};
}

DesktopApplication::DesktopApplication(QString identifier, QDBusConnection bus)
    : identifier_(std::move(identifier)), path_(objectPath(identifier_)), bus_(std::move(bus)) {}

// Registers the object before it claims the name, so that no call is lost.
DesktopApplication::Standing DesktopApplication::claim() {
    if (!bus_.isConnected() || !bus_.registerObject(path_, this, QDBusConnection::ExportScriptableInvokables))
        return Standing::alone;
    constexpr uint doNotQueue = 4;
    constexpr uint isOwner = 1;
    constexpr uint isOwnedByAnother = 3;
    const auto request = busCall("RequestName") << identifier_ << doNotQueue;
    const QDBusReply<uint> reply = bus_.call(request, QDBus::Block, busTimeout);
    isFirst_ = reply.isValid() && reply.value() == isOwner;
    if (isFirst_)
        return Standing::first;
    bus_.unregisterObject(path_);
    return reply.isValid() && reply.value() == isOwnedByAnother ? Standing::another : Standing::alone;
}

DesktopApplication::Answer DesktopApplication::handOver(const QStringList& uris,
                                                        const LaunchContext& context) const {
    auto call = QDBusMessage::createMethodCall(identifier_, path_, interfaceName,
                                               uris.isEmpty() ? "Activate" : "Open");
    call.setAutoStartService(false); // If the other one has just ended, this one takes its place.
    if (!uris.isEmpty())
        call << uris;
    call << platformData(context);
    const QDBusMessage reply = bus_.call(call, QDBus::Block, otherTimeout);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return Answer::taken;
    return QDBusError(reply).type() == QDBusError::NoReply ? Answer::none : Answer::refused;
}

void DesktopApplication::release() {
    if (std::exchange(isFirst_, false))
        bus_.send(busCall("ReleaseName") << identifier_);
}

// D-Bus keeps the order: the name is free before the caller gets this error.
bool DesktopApplication::refuses() const {
    if (!isFirst_)
        sendErrorReply(QDBusError::Failed, "Tambrel is about to end.");
    return !isFirst_;
}

void DesktopApplication::Activate(const QVariantMap& platformData) const {
    if (!refuses() && onActivate)
        onActivate(launchContext(platformData));
}

void DesktopApplication::Open(const QStringList& uris, const QVariantMap& platformData) const {
    if (!refuses() && onOpen)
        onOpen(uris, launchContext(platformData));
}

void DesktopApplication::ActivateAction(const QString& name, const QVariantList&,
                                        const QVariantMap& platformData) const {
    if (!refuses() && onAction)
        onAction(name, launchContext(platformData));
}

} // namespace tambrel
