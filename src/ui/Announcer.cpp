#include "Announcer.h"

#include "ViewAccessibility.h"

namespace tambrel {

Announcer::Announcer(QWidget* parent) : QWidget(parent) {
    makeAccessible<Announcer, AccessibleView<QAccessible::Notification>>();
    hide();
}

void Announcer::say(const QString& text) {
    emit said(text);
    if (!QAccessible::isActive())
        return;
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent event(this, text);
    event.setPoliteness(QAccessible::AnnouncementPoliteness::Assertive);
    QAccessible::updateAccessibility(&event);
#else
    // Of Qt's events only the alert fits, which is not passed on everywhere. A notification that is shown is.
    setAccessibleName(text);
    for (const auto type : {QAccessible::Alert, QAccessible::ObjectShow}) {
        QAccessibleEvent event(this, type);
        QAccessible::updateAccessibility(&event);
    }
#endif
}

} // namespace tambrel
