#include "LoadedBlueRectangleView.h"

#include "RetroTheme.h"
#include "UnflippedPainter.h"
#include "ViewAccessibility.h"

namespace tambrel {

LoadedBlueRectangleView::LoadedBlueRectangleView(QWidget* parent) : QWidget(parent) {
    makeAccessible<LoadedBlueRectangleView, AccessibleView<QAccessible::Graphic>>();
    setAccessibleName("Sound module");
}

void LoadedBlueRectangleView::setLoaded(bool loaded) {
    if (loaded == isLoaded_)
        return;
    isLoaded_ = loaded;
    update();
}

void LoadedBlueRectangleView::paintEvent(QPaintEvent*) {
    if (!isLoaded_)
        return;
    UnflippedPainter painter(*this);
    painter.fill(unflippedBounds(*this).adjusted(1, 1, -1, -1), RetroTheme::darkBlueFill());
}

} // namespace tambrel
