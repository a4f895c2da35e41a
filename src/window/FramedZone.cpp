#include "FramedZone.h"

#include "RetroTheme.h"
#include "UnflippedPainter.h"

namespace tambrel {

void FramedZone::paintEvent(QPaintEvent*) {
    UnflippedPainter painter(*this);
    painter.fill(unflippedBounds(*this), RetroTheme::paper());
    painter.frame(unflippedBounds(*this), RetroTheme::ink());
    if (divider_ == 0)
        return;
    QRectF line = painter.snapped(QRectF(divider_, 0, 1, height()));
    line.setWidth(painter.snapped(1.0)); // As wide as the frame's.
    painter.fill(line, RetroTheme::ink());
}

} // namespace tambrel
