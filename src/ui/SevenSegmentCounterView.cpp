#include "SevenSegmentCounterView.h"

#include "RetroTheme.h"
#include "SevenSegmentGeometry.h"
#include "UnflippedPainter.h"
#include "ViewAccessibility.h"

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
    makeAccessible<SevenSegmentCounterView, AccessibleCounter>();
    setAccessibleDescription("Playback position");
}

void SevenSegmentCounterView::setText(const QString& text) {
    if (text == text_)
        return;
    text_ = text;
    update();
    if (onTextChange)
        onTextChange();
}

void SevenSegmentCounterView::paintEvent(QPaintEvent*) {
    UnflippedPainter painter(*this);
    painter.fill(unflippedBounds(*this), RetroTheme::paper());
    for (const SevenSegmentGeometry::Cell& cell : SevenSegmentGeometry::cells(size(), text_)) {
        if (SevenSegmentGeometry::isDigit(cell.character))
            fillDigit(painter, cell);
        else
            fillDots(painter, cell);
    }
}

} // namespace tambrel
