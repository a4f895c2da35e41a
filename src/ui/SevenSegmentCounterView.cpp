#include "SevenSegmentCounterView.h"

#include "RetroTheme.h"
#include "SevenSegmentGeometry.h"
#include "UnflippedPainter.h"
#include "ViewAccessibility.h"

#include <QPaintEvent>
#include <QPainterPath>

namespace tambrel {
namespace {

// Read like the labels: the name is the text.
class AccessibleCounter : public AccessibleView<QAccessible::StaticText> {
public:
    explicit AccessibleCounter(SevenSegmentCounterView& view) : AccessibleView(view), view_(view) {}

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Name || kind == QAccessible::Value)
            return view_.text();
        return AccessibleView::text(kind);
    }

private:
    SevenSegmentCounterView& view_;
};

void fillDigit(UnflippedPainter& painter, const SevenSegmentGeometry::Cell& cell) {
    for (const auto segment : SevenSegmentGeometry::allSegments) {
        const bool lit = SevenSegmentGeometry::isLit(cell.character, segment);
        painter.fill(SevenSegmentGeometry::hexagon(segment, cell.rect), RetroTheme::ink(lit ? 1 : 0.1));
    }
}

void fillDots(UnflippedPainter& painter, const SevenSegmentGeometry::Cell& cell) {
    for (const QRectF& dot : SevenSegmentGeometry::dots(cell)) {
        QPainterPath circle;
        circle.addEllipse(dot);
        painter.fill(circle, RetroTheme::ink());
    }
}

} // namespace

SevenSegmentCounterView::SevenSegmentCounterView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent); // Or each digit would repaint the window below.
    makeAccessible<SevenSegmentCounterView, AccessibleCounter>();
    setAccessibleDescription("Playback position");
}

void SevenSegmentCounterView::setText(const QString& text) {
    if (text == text_)
        return;
    updateWhatDiffers(SevenSegmentGeometry::cells(size(), text_), SevenSegmentGeometry::cells(size(), text));
    text_ = text;
    if (onTextChange)
        onTextChange();
}

// Cells with the same place and character need no paint.
void SevenSegmentCounterView::updateWhatDiffers(const Cells& before, const Cells& after) {
    if (before.empty() || after.empty() || before.size() != after.size() ||
        before.front().rect != after.front().rect)
        return update();
    for (std::size_t i = 0; i < after.size(); ++i)
        if (before[i].character != after[i].character)
            update(places(before[i]) + places(after[i]));
}

QRegion SevenSegmentCounterView::places(const SevenSegmentGeometry::Cell& cell) const {
    const QRectF upright(cell.rect.x(), height() - cell.rect.bottom(), cell.rect.width(), cell.rect.height());
    return upright.adjusted(-1, -1, 1, 1).toAlignedRect(); // A device pixel more, to which it is moved.
}

void SevenSegmentCounterView::paintEvent(QPaintEvent* event) {
    UnflippedPainter painter(*this);
    painter.fill(unflippedBounds(*this), RetroTheme::paper());
    for (const SevenSegmentGeometry::Cell& cell : SevenSegmentGeometry::cells(size(), text_)) {
        if (!event->region().intersects(places(cell).boundingRect()))
            continue;
        if (SevenSegmentGeometry::isDigit(cell.character))
            fillDigit(painter, cell);
        else
            fillDots(painter, cell);
    }
}

} // namespace tambrel
