#pragma once

#include "SessionBus.h"

#include <QDBusObjectPath>
#include <QObject>
#include <QString>

namespace tambrel {

/// Keeps the computer from suspending itself, through the desktop portal (`org.freedesktop.portal.Inhibit`);
/// the screen saver is left alone. Does not wait for the portal, which may take seconds to start. Without a
/// portal or the session bus nothing happens, and the next call asks again. Main thread only.
class SuspendInhibitor : public QObject {
public:
    /// `window` is the portal's identifier of the window that the user may be pointed to, or empty; `reason`
    /// may be shown to the user.
    SuspendInhibitor(QString window, QString reason, QDBusConnection bus = sessionBus());
    ~SuspendInhibitor() override;

    void setInhibiting(bool isInhibiting);

private:
    void ask();
    void takeAnswer(const QDBusMessage& answer);
    void close();

    QDBusConnection bus_;
    QString window_;
    QString reason_;
    bool isWanted_ = false;
    bool isAsking_ = false;
    QDBusObjectPath request_; ///< Inhibits until it is closed. Empty while there is none.
};

} // namespace tambrel
