#include "WindowPlacement.h"

#include "MainWindow.h"

#include <QApplication>
#include <QScreen>

#include <chrono>
#include <vector>

namespace tambrel {
namespace {

bool canPlaceWindows() {
    return !QApplication::platformName().startsWith("wayland");
}

std::vector<QRectF> visibleFrames() {
    std::vector<QRectF> frames;
    for (const QScreen* screen : QApplication::screens())
        frames.emplace_back(screen->availableGeometry());
    return frames;
}

} // namespace

WindowPlacement::WindowPlacement(MainWindow& window, QSettings& settings)
    : window_(window), store_(settings) {
    using namespace std::chrono_literals;
    restTimer_.setSingleShot(true);
    restTimer_.setInterval(200ms); // Keeping the place syncs a file, too slow for every step.
    restTimer_.callOnTimeout([this] { keep(); });
    if (canPlaceWindows())
        place();
}

// By its content, menu bar included: what the window manager puts around it is unknown before it shows. The
// place of a screen that is gone would leave the window where nobody sees it.
void WindowPlacement::place() const {
    const QSize size = window_.sizeHint();
    const auto visible = visibleFrames();
    QRectF frame = store_.launchFrame(size, visible);
    if (!TambrelWindowPlacementStore::bestVisibleFrame(frame, visible))
        frame = TambrelWindowPlacementStore::centeredFrame(size, visible);
    window_.setGeometry({frame.topLeft().toPoint(), size});
}

void WindowPlacement::follow() {
    if (!canPlaceWindows())
        return;
    keepTitleBarOnScreen();
    window_.onMove = [this] { restTimer_.start(); };
}

void WindowPlacement::keepTitleBarOnScreen() const {
    const QRectF frame = window_.frameGeometry();
    const auto screen = TambrelWindowPlacementStore::bestVisibleFrame(frame, visibleFrames());
    if (screen && frame.top() < screen->top()) // A window taller than the screen shows its upper part.
        window_.move(window_.x(), static_cast<int>(screen->top()));
}

void WindowPlacement::keep() const {
    if (canPlaceWindows() && !window_.isMinimized())
        store_.save(window_.geometry());
}

} // namespace tambrel
