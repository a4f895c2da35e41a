#include "RetroTimelineView.h"

#include "PlayheadFraction.h"
#include "RetroTheme.h"
#include "RetroTimelineGeometry.h"
#include "UnflippedPainter.h"
#include "ViewAccessibility.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tambrel {
namespace {

constexpr double arrowStep = 5;
constexpr double pageStep = 30;

// "1 hour 2 seconds".
QString spokenTime(double seconds) {
    const auto whole = std::lround(seconds);
    const std::pair<long, const char*> parts[] = {
        {whole / 3600, "hour"}, {whole / 60 % 60, "minute"}, {whole % 60, "second"}};
    QStringList words;
    for (const auto& [count, unit] : parts)
        if (count > 0 || (whole == 0 && *unit == 's'))
            words << QString("%1 %2%3").arg(count).arg(unit, count == 1 ? "" : "s");
    return words.join(' ');
}

// A slider whose value is the position in seconds.
class AccessibleTimeline : public AccessibleView<QAccessible::Slider>, public QAccessibleValueInterface {
public:
    explicit AccessibleTimeline(RetroTimelineView& view) : AccessibleView(view), view_(view) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface*>(this);
        return AccessibleView::interface_cast(type);
    }
    QString text(QAccessible::Text kind) const override {
        // Where a value is read as a mere number of seconds, the description has it in words.
        if (kind != QAccessible::Value && kind != QAccessible::Description)
            return AccessibleView::text(kind);
        return spokenTime(currentValue().toDouble()) + " of " + spokenTime(maximumValue().toDouble());
    }

    QVariant currentValue() const override {
        return std::clamp(view_.position(), 0.0, maximumValue().toDouble());
    }
    void setCurrentValue(const QVariant& seconds) override { view_.requestSeek(seconds.toDouble()); }
    QVariant minimumValue() const override { return 0.0; }
    QVariant maximumValue() const override { return std::max(view_.duration(), 0.0); }
    QVariant minimumStepSize() const override { return arrowStep; }

private:
    RetroTimelineView& view_;
};

std::optional<double> timeAfterKey(int key, double position, double duration) {
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        return position - arrowStep;
    case Qt::Key_Right:
    case Qt::Key_Up:
        return position + arrowStep;
    case Qt::Key_PageDown:
        return position - pageStep;
    case Qt::Key_PageUp:
        return position + pageStep;
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return duration;
    default:
        return std::nullopt;
    }
}

// The frame of the track lies inside its edges: the marks move in with it, the outermost ones in line with
// its sides.
void paintTicks(UnflippedPainter& painter, const RetroTimelineGeometry& geometry) {
    const double length = geometry.track.width();
    const double scale = (length - painter.snapped(1.0)) / length;
    const double middle = geometry.track.center().x();
    for (const QLineF& tick : geometry.ticks)
        painter.verticalLine(middle + (tick.x1() - middle) * scale, tick.y1(), tick.y2(), RetroTheme::ink());
}

} // namespace

RetroTimelineView::RetroTimelineView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent); // Or each step of the handle would repaint the window below.
    setFocusPolicy(Qt::StrongFocus);
    makeAccessible<RetroTimelineView, AccessibleTimeline>();
    setAccessibleName("Timeline");
}

void RetroTimelineView::setDuration(double seconds) {
    if (seconds == duration_)
        return;
    duration_ = seconds;
    update();
    announceValue();
}

void RetroTimelineView::setPosition(double seconds) {
    const double fractionBefore = shownFraction();
    const QRect columnBefore = handleColumn();
    position_ = seconds;
    if (!isLoaded() || shownFraction() == fractionBefore)
        return;
    update(columnBefore.united(handleColumn()));
    if (std::lround(seconds) != std::lround(announced_)) // What is said would be the same.
        announceValue();
}

void RetroTimelineView::requestSeek(double seconds) {
    if (!isLoaded())
        return;
    deferUserAction(onUserAction, *this, "Moved timeline seek handle", "RetroTimelineView.seek(from:)");
    if (onSeek)
        onSeek(std::clamp(seconds, 0.0, duration_));
}

void RetroTimelineView::paintEvent(QPaintEvent*) {
    const QRectF bounds = unflippedBounds(*this);
    const auto geometry = RetroTimelineGeometry::of(bounds.size(), shownFraction());
    UnflippedPainter painter(*this);
    painter.fill(bounds, RetroTheme::paper());
    painter.focusMark(bounds.adjusted(6, 1, -6, -1));
    painter.frame(geometry.track, RetroTheme::ink());
    if (!isLoaded())
        return;
    painter.fill(geometry.played, RetroTheme::activeFill());
    const QRectF handle = painter.centred(geometry.handle);
    painter.fill(handle, RetroTheme::panel());
    painter.frame(handle, RetroTheme::ink());
    paintTicks(painter, geometry);
}

void RetroTimelineView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        requestSeek(RetroTimelineGeometry::time(event->position().x(), width(), duration_));
}

void RetroTimelineView::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton)
        requestSeek(RetroTimelineGeometry::time(event->position().x(), width(), duration_));
}

void RetroTimelineView::keyPressEvent(QKeyEvent* event) {
    const auto time = timeAfterKey(event->key(), position_, duration_);
    if (time && isLoaded())
        requestSeek(*time);
    else
        QWidget::keyPressEvent(event);
}

double RetroTimelineView::shownFraction() const {
    return wholePixelFraction(limitedFraction(position_ / duration_),
                              RetroTimelineGeometry::trackLength(width()), devicePixelRatioF());
}

QRect RetroTimelineView::handleColumn() const {
    const QRectF handle = RetroTimelineGeometry::of(size(), shownFraction()).handle;
    return QRectF(handle.x() - 1, 0, handle.width() + 2, height()).toAlignedRect();
}

void RetroTimelineView::announceValue() {
    announced_ = position_;
    if (!QAccessible::isActive())
        return;
    QAccessibleValueChangeEvent change(this, position_);
    QAccessible::updateAccessibility(&change);
}

} // namespace tambrel
