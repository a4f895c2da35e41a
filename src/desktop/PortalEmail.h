#pragma once

#include "EmailComposer.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <functional>

namespace tambrel {

/// Lets the desktop's portal (org.freedesktop.portal.Email) compose the e-mail, attachment included. A draft
/// that the user then discards counts as taken. Fails when the attachment cannot be read, or the portal ends
/// before it has answered. Main thread.
[[nodiscard]] EmailSender emailByPortal(const QDBusConnection& bus);

/// A draft that the portal has. Deletes itself when the portal has answered or is gone. Main thread.
class PortalEmail : public QObject {
    Q_OBJECT

public:
    PortalEmail(QDBusConnection bus, std::function<void(bool isTaken)> answer);
    void send(const EmailDraft& draft);

private:
    /// The portal's answer: 0 done, 1 cancelled by the user, else a failure.
    Q_SLOT void respond(uint response, const QVariantMap& results);
    Q_SLOT void fail() { end(false); }
    void watchForItsEnd();
    void end(bool isTaken);

    QDBusConnection bus_;
    std::function<void(bool isTaken)> answer_;
};

} // namespace tambrel
