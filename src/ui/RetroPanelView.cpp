#include "RetroPanelView.h"

#include "RetroTheme.h"
#include "UnflippedPainter.h"

namespace tambrel {

RetroPanelView::RetroPanelView(QWidget* parent) : QWidget(parent) {}

void RetroPanelView::paintEvent(QPaintEvent*) {
    UnflippedPainter painter(*this);
    painter.fill(unflippedBounds(*this), RetroTheme::panel());
    painter.frame(unflippedBounds(*this), RetroTheme::ink());
}

} // namespace tambrel
