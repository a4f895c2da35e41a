#pragma once

#include "MainViewController.h"

#include <QMainWindow>

#include <functional>
#include <memory>

namespace tambrel {

/// The one window: the main view under a menu bar, of a fixed size. Closing it ends the program, whatever
/// other windows there are. Main thread.
class MainWindow : public QMainWindow {
public:
    /// Takes the controller and its view over.
    explicit MainWindow(MainViewController* controller);

    [[nodiscard]] MainViewController& controller() const { return *controller_; }

    std::function<void()> onMove;  ///< Called when the window has moved. May be empty.
    std::function<void()> onClose; ///< Called when the window closes, before the program ends. May be empty.

protected:
    void moveEvent(QMoveEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    std::unique_ptr<MainViewController> controller_; // Ends before the view, which is a child of the window.
};

} // namespace tambrel
