#include "FirstPaint.h"

#include <QEvent>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <utility>

namespace tambrel {

FirstPaint::FirstPaint(QWidget& window, std::function<void()> then) : then_(std::move(then)) {
    using namespace std::chrono_literals;
    window.installEventFilter(this);
    QTimer::singleShot(250ms, this, [this] { happen(); });
}

bool FirstPaint::eventFilter(QObject*, QEvent* event) {
    if (then_ && event->type() == QEvent::Paint) // Not painted yet: the call comes after this event.
        QTimer::singleShot(0, this, [this] { happen(); });
    return false;
}

void FirstPaint::happen() {
    if (const auto then = std::exchange(then_, nullptr))
        then();
}

} // namespace tambrel
