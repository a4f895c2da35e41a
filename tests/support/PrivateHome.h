#pragma once

#include <QProcessEnvironment>

namespace tambrel {

/// Has a program keep everything in this folder, which only the user may read: settings, data, caches and
/// what the session shares.
inline void setHome(QProcessEnvironment& environment, const QString& folder) {
    environment.insert("HOME", folder);
    environment.insert("XDG_RUNTIME_DIR", folder);
    for (const char* elsewhere : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        environment.remove(elsewhere);
}

} // namespace tambrel
