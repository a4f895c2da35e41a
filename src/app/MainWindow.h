#pragma once

#include "MainViewController.h"

#include <QMainWindow>

namespace tambrel {

/// The one window: the main view controller under a menu bar, of a fixed size.
class MainWindow : public QMainWindow {
public:
    /// Takes the view controller over.
    explicit MainWindow(MainViewController* controller);
};

} // namespace tambrel
