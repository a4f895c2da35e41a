#pragma once

#include "EmailComposer.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

#include <functional>

namespace tambrel {

/// Lets the desktop's portal (org.freedesktop.portal.Email) compose the e-mail, attachment included. A draft
/// that the user then discards counts as taken; one whose attachment cannot be read does not, nor one whose
/// portal ends before it has answered.
[[nodiscard]] EmailWay portalEmailWay(const QDBusConnection& bus);

/// A draft in the portal's hands. Deletes itself when the portal has answered, or cannot any more.
class PortalEmail : public QObject {
    Q_OBJECT

public:
    PortalEmail(QDBusConnection bus, std::function<void(bool isTaken)> answer);
    void send(const EmailDraft& draft);

private:
    /// The portal's last word: 0 when done, 1 when the user has cancelled, else a failure.
    Q_SLOT void respond(uint response, const QVariantMap& results);
    Q_SLOT void fail() { end(false); }
    void watchForItsEnd();
    void end(bool isTaken);

    QDBusConnection bus_;
    std::function<void(bool isTaken)> answer_;
};

} // namespace tambrel
