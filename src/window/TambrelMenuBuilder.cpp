#include "TambrelMenuBuilder.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QToolButton>

#include <utility>

namespace tambrel {
namespace {

using Action = std::function<void()>;

QAction* add(QMenu& menu, const char* title, Action action, const QKeySequence& key = {}) {
    QAction* item = menu.addAction(title);
    item->setShortcut(key);
    item->setShortcutContext(Qt::ApplicationShortcut);
    item->setAutoRepeat(false);
    if (action)
        QObject::connect(item, &QAction::triggered, item, std::move(action));
    else
        item->setEnabled(false); // The desktop has no such service.
    return item;
}

template<class Change>
void forEachWindow(Change change) {
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible())
            change(*window);
}

void hideApplication() {
    forEachWindow([](QWidget& window) { window.showMinimized(); });
}

void bringAllToFront() {
    forEachWindow([](QWidget& window) { window.raise(); });
}

void showAll() {
    forEachWindow(
        [](QWidget& window) { window.setWindowState(window.windowState() & ~Qt::WindowMinimized); });
    bringAllToFront();
}

void minimizeKeyWindow() {
    if (QWidget* window = QApplication::activeWindow())
        window->showMinimized();
}

} // namespace

QMenu* TambrelMenuBuilder::appMenuItem(const MenuTargets& targets) {
    auto* menu = new QMenu("&Tambrel");
    add(*menu, "About Tambrel", targets.showAbout);
    add(*menu, "Get Info", targets.showInfo, Qt::CTRL | Qt::Key_I);
    menu->addSeparator();
    menu->addMenu("Services")->setEnabled(false);
    menu->addSeparator();
    add(*menu, "Hide Tambrel", hideApplication, Qt::CTRL | Qt::Key_H);
    add(*menu, "Hide Others", {}, Qt::CTRL | Qt::ALT | Qt::Key_H);
    add(*menu, "Show All", showAll);
    menu->addSeparator();
    add(
        *menu, "Quit Tambrel", [] { QApplication::quit(); }, Qt::CTRL | Qt::Key_Q);
    return menu;
}

QMenu* TambrelMenuBuilder::fileMenuItem(const MenuTargets& targets) {
    auto* menu = new QMenu("&File");
    add(*menu, "Open MIDI File...", targets.openFile, Qt::CTRL | Qt::Key_O);
    return menu;
}

QMenu* TambrelMenuBuilder::transportMenuItem(const MenuTargets& targets) {
    auto* menu = new QMenu("T&ransport");
    QAction* playPause = add(*menu, "Play/Pause", targets.playPause, Qt::Key_Space);
    playPause->setShortcutContext(Qt::WindowShortcut);
    add(*menu, "Return to Zero", targets.rtz, Qt::CTRL | Qt::Key_R);
    add(*menu, "Stop", targets.stop, Qt::CTRL | Qt::Key_Period);
    menu->addSeparator();
    QAction* loop = add(*menu, "Loop", targets.toggleLoop);
    loop->setCheckable(true);
    QObject::connect(menu, &QMenu::aboutToShow, loop,
                     [loop, isLooping = targets.isLooping] { loop->setChecked(isLooping()); });
    return menu;
}

QMenu* TambrelMenuBuilder::debugMenuItem(const MenuTargets& targets) {
    auto* menu = new QMenu("&Debug");
    add(*menu, "Debugging Window", targets.showDebuggingWindow, Qt::CTRL | Qt::Key_B);
    return menu;
}

QMenu* TambrelMenuBuilder::windowMenuItem() {
    auto* menu = new QMenu("&Window");
    add(*menu, "Minimize", minimizeKeyWindow, Qt::CTRL | Qt::Key_M);
    add(*menu, "Zoom", {}); // The window has one size.
    menu->addSeparator();
    add(*menu, "Bring All to Front", bringAllToFront);
    return menu;
}

QMenu* TambrelMenuBuilder::helpMenuItem(const MenuTargets& targets) {
    auto* menu = new QMenu("&Help");
    add(*menu, "Tambrel Help", targets.showHelp)
        ->setShortcuts({Qt::CTRL | Qt::Key_Question, QKeySequence(Qt::Key_F1)});
    return menu;
}

void TambrelMenuBuilder::install(QMenuBar& bar, const MenuTargets& targets) {
    if (auto* toTheRest = bar.findChild<QToolButton*>("qt_menubar_ext_button"))
        toTheRest->setArrowType(Qt::RightArrow); // Shown where the letters are too large for all menus.
    const auto take = [&bar](QMenu* menu) {
        menu->setParent(&bar, menu->windowFlags());
        bar.addMenu(menu);
    };
    take(appMenuItem(targets));
    take(fileMenuItem(targets));
    take(transportMenuItem(targets));
    if (targets.showDebuggingWindow)
        take(debugMenuItem(targets));
    take(windowMenuItem());
    take(helpMenuItem(targets));
}

} // namespace tambrel
