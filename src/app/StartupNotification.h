#pragma once

#include <QString>

class QWidget;

namespace tambrel {

/// Tells the desktop that what a launcher has started under this id has come up in `window`, so that it ends
/// its busy cursor (Startup Notification Protocol 0.1). Qt does so for the first window of a program, not for
/// what comes to a window that was there. Does nothing for an empty id, and where there is no X server. Main
/// thread.
void endStartupNotification(const QWidget& window, const QString& id);

} // namespace tambrel
