#include "FramedZone.h"

#include "RetroTheme.h"
#include "UnflippedPainter.h"

namespace tambrel {

void FramedZone::paintEvent(QPaintEvent*) {
    UnflippedPainter painter(*this);
    painter.fill(unflippedBounds(*this), RetroTheme::paper());
    painter.frame(unflippedBounds(*this), RetroTheme::ink());
}

} // namespace tambrel
