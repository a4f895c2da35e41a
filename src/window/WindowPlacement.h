#pragma once

#include "TambrelWindowPlacementStore.h"

#include <QTimer>

class QSettings;

namespace tambrel {

class MainWindow;

/// Puts the window where it was in the run before, on screen in any case, and keeps its place for the next.
/// Does nothing on Wayland, where a compositor neither tells where a window is nor lets it choose. Main
/// thread only.
class WindowPlacement {
public:
    /// Both outlive the placement. The window is not shown yet, and gets its place.
    WindowPlacement(MainWindow& window, QSettings& settings);

    /// Once the window shows and the height of its title bar is known: moves that on screen, and follows the
    /// window from then on.
    void follow();
    /// Keeps the place at once, but that of a minimized window.
    void keep() const;

private:
    void place() const;
    void keepTitleBarOnScreen() const;

    MainWindow& window_;
    TambrelWindowPlacementStore store_;
    QTimer restTimer_; // Runs until the window has come to rest.
};

} // namespace tambrel
