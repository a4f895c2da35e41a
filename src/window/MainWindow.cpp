#include "MainWindow.h"

#include <QApplication>
#include <QLayout>

namespace tambrel {

MainWindow::MainWindow(MainViewController* controller) : controller_(controller) {
    setWindowTitle("Tambrel");
    setCentralWidget(&controller->view());
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

void MainWindow::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    if (onMove)
        onMove();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    if (onClose)
        onClose();
    QMetaObject::invokeMethod(qApp, &QApplication::quit, Qt::QueuedConnection);
}

} // namespace tambrel
