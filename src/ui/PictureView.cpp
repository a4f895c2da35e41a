#include "PictureView.h"

#include <QPainter>
#include <QSvgRenderer>

#include <utility>

namespace tambrel {

PictureView::PictureView(QString resource, QWidget* parent)
    : QWidget(parent), resource_(std::move(resource)) {}

PictureView::~PictureView() = default;

QIcon PictureView::icon(const QString& resource) {
    constexpr int pixels = 256;
    QPixmap picture(pixels, pixels);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    QSvgRenderer(resource).render(&painter);
    painter.end();
    return picture;
}

void PictureView::paintEvent(QPaintEvent*) {
    if (!picture_) {
        picture_ = std::make_unique<QSvgRenderer>(resource_);
        picture_->setAspectRatioMode(Qt::KeepAspectRatio);
    }
    QPainter painter(this);
    const double scale = painter.device()->devicePixelRatioF();
    QPixmap pixels((QSizeF(size()) * scale).toSize()); // On whole pixels, wherever the view is.
    pixels.setDevicePixelRatio(scale);
    pixels.fill(Qt::transparent);
    QPainter drawing(&pixels);
    picture_->render(&drawing, rect());
    drawing.end();
    painter.drawPixmap(QPoint(), pixels);
}

} // namespace tambrel
