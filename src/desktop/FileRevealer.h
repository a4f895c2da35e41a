#pragma once

#include <QDBusConnection>
#include <QUrl>

#include <functional>

namespace tambrel {

/// Shows a file, selected, in the desktop's file manager (org.freedesktop.FileManager1). Where none answers,
/// the folder is opened with `openLink`, which may come after the call. Does not block; main thread.
void revealFile(const QDBusConnection& bus, const QUrl& file, std::function<void(const QUrl&)> openLink);

} // namespace tambrel
