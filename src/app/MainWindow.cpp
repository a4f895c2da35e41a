#include "MainWindow.h"

#include <QLayout>
#include <QMenuBar>

namespace tambrel {

MainWindow::MainWindow(MainViewController* controller) {
    setWindowTitle("Tambrel");
    setCentralWidget(controller);
    QMenu* file = menuBar()->addMenu("File");
    file->addAction("Open MIDI File...", controller, &MainViewController::openFile)
        ->setShortcut(QKeySequence::Open);
    file->addAction("Quit", this, &QWidget::close)->setShortcut(QKeySequence::Quit);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace tambrel
