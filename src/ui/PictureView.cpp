#include "PictureView.h"

#include <QPainter>

#include <utility>

namespace tambrel {

PictureView::PictureView(QString resource, QWidget* parent)
    : QWidget(parent), resource_(std::move(resource)) {}

void PictureView::paintEvent(QPaintEvent*) {
    if (picture_.isNull())
        picture_ = QIcon(resource_);
    QPainter painter(this);
    picture_.paint(&painter, rect());
}

} // namespace tambrel
