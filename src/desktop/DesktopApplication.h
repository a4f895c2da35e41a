#pragma once

#include "SessionBus.h"

#include <QDBusContext>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>

namespace tambrel {

/// What a launcher hands over so that the window it starts may come to the front; either may be empty.
struct LaunchContext {
    QString activationToken; ///< Of the xdg-activation protocol.
    QString startupId;       ///< Of the startup notification protocol.
    bool play = false;       ///< The user wants what is opened to play at once.

    /// From the environment, before the QApplication is made, which removes it.
    [[nodiscard]] static LaunchContext fromEnvironment();
};

/// The program as the desktop sees it: `org.freedesktop.Application` (freedesktop.org, desktop entries 1.5,
/// D-Bus activation) on the session bus, under the application's identifier. The first program to claim the
/// name keeps it until it ends; those started later hand over to it.
///
/// May be made before the application object. Calls that arrive wait for the event loop, and are made on the
/// main thread. Without the session bus the program is on its own, and nothing fails.
class DesktopApplication : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit DesktopApplication(QString identifier, QDBusConnection bus = sessionBus());

    enum class Standing {
        first,   ///< Has the name now, and will be called.
        another, ///< Another program has it.
        alone,   ///< There is no session bus.
    };
    /// Takes a millisecond.
    [[nodiscard]] Standing claim();

    enum class Answer {
        taken,
        refused, ///< The other program has ended meanwhile, or is about to.
        none,    ///< It is stuck, and carries the request out if it ever goes on; or it has ended.
    };
    /// Has the first program open these addresses, or only come to the front when there are none. Waits two
    /// seconds for the answer.
    [[nodiscard]] Answer handOver(const QStringList& uris, const LaunchContext& context) const;

    /// Gives the name up before the program ends. From now on every call fails, so that the caller can turn
    /// to the next program, or become it. Does nothing without the name.
    void release();

    // What to do when called.
    std::function<void(const LaunchContext&)> onActivate;
    std::function<void(const QStringList& uris, const LaunchContext&)> onOpen;
    std::function<void(const QString& action, const LaunchContext&)> onAction;

    // Called over D-Bus; the names are the interface's.
    Q_SCRIPTABLE Q_INVOKABLE void Activate(const QVariantMap& platformData) const;
    Q_SCRIPTABLE Q_INVOKABLE void Open(const QStringList& uris, const QVariantMap& platformData) const;
    Q_SCRIPTABLE Q_INVOKABLE void ActivateAction(const QString& name, const QVariantList& parameters,
                                                 const QVariantMap& platformData) const;

private:
    [[nodiscard]] bool refuses() const;

    QString identifier_;
    QString path_;
    QDBusConnection bus_;
    bool isFirst_ = false;
};

} // namespace tambrel
