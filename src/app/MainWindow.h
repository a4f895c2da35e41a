#pragma once

#include "MainViewController.h"

#include <QMainWindow>

#include <functional>

namespace tambrel {

/// The one window: the main view controller under a menu bar, of a fixed size. Closing it ends the program,
/// whatever other windows there are.
class MainWindow : public QMainWindow {
public:
    /// Takes the view controller over.
    explicit MainWindow(MainViewController* controller);

    std::function<void()> onMove;  ///< Called when the window has moved. May be empty.
    std::function<void()> onClose; ///< Called when the window closes, before the program ends. May be empty.

protected:
    void moveEvent(QMoveEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
};

} // namespace tambrel
