#include "BlackLEDActivityView.h"

#include "RetroTheme.h"
#include "UnflippedPainter.h"
#include "ViewAccessibility.h"

#include <QTimerEvent>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tambrel {
namespace {

constexpr std::chrono::milliseconds stepTime{80};
constexpr std::array<int, BlackLEDBar::phaseCount> levels = {2, 5, 8, 4, 7, 3, 6}; // In eighths.
constexpr double restingLevel = 0.18;
constexpr double restingAlpha = 0.12;

double level(int bar, int phase) {
    return levels[static_cast<std::size_t>((bar + phase) % BlackLEDBar::phaseCount)] / 8.0;
}

// From bar to bar in whole device pixels, where that moves no bar by more than one: the eye sees an uneven
// gap.
double evenPitch(const UnflippedPainter& painter, double pitch) {
    const double even = painter.snapped(pitch);
    const double farthest = std::abs(even - pitch) * (BlackLEDBar::count - 1);
    return farthest <= painter.snapped(0.0) ? even : pitch;
}

} // namespace

std::array<BlackLEDBar, BlackLEDBar::count> BlackLEDBar::row(QSizeF size, std::optional<int> phase) {
    const double gap = std::clamp(size.width() / 60, 1.0, 3.0);
    const double width = std::max((size.width() - (count - 1) * gap) / count, 1.5);
    const double usableHeight = std::max(size.height() - 4, 4.0);

    std::array<BlackLEDBar, count> bars;
    for (int i = 0; i < count; ++i) {
        const double height = usableHeight * (phase ? level(i, *phase) : restingLevel);
        const double alpha = phase ? std::max(level(i, *phase), 0.35) : restingAlpha;
        bars[static_cast<std::size_t>(i)] = {{(gap + width) * i, 2, width, std::max(height, 4.0)}, alpha};
    }
    return bars;
}

BlackLEDActivityView::BlackLEDActivityView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent); // Or each step would repaint the window below.
    makeAccessible<BlackLEDActivityView, AccessibleView<QAccessible::Graphic>>();
    setAccessibleName("Activity");
}

void BlackLEDActivityView::setAnimating(bool animating) {
    if (animating == isAnimating())
        return;
    if (animating) {
        timer_.start(static_cast<int>(stepTime.count()), this);
        return;
    }
    timer_.stop();
    phase_ = 0;
    update();
}

void BlackLEDActivityView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != timer_.timerId())
        return QWidget::timerEvent(event);
    phase_ = (phase_ + 1) % BlackLEDBar::phaseCount;
    update();
}

void BlackLEDActivityView::paintEvent(QPaintEvent*) {
    const auto phase = isAnimating() ? std::optional(phase_) : std::nullopt;
    UnflippedPainter painter(*this);
    painter.fill(unflippedBounds(*this), RetroTheme::paper());
    const auto bars = BlackLEDBar::row(size(), phase);
    const double pitch = evenPitch(painter, bars[1].rect.x() - bars[0].rect.x());
    for (int i = 0; i < BlackLEDBar::count; ++i) {
        const auto& [rect, alpha] = bars[static_cast<std::size_t>(i)];
        QRectF crisp = painter.snapped(QRectF(pitch * i, rect.y(), rect.width(), rect.height()));
        crisp.setWidth(painter.snapped(rect.width())); // Every bar equally wide, wherever it lands.
        painter.fill(crisp, RetroTheme::ink(alpha));
    }
}

} // namespace tambrel
