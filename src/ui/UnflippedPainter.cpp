#include "UnflippedPainter.h"

#include "RetroTheme.h"

#include <QFontMetricsF>
#include <QPainterPath>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace tambrel {

UnflippedPainter::UnflippedPainter(QWidget& view) : QPainter(&view), view_(view) {
    setRenderHint(QPainter::Antialiasing);
    translate(0, view.height());
    scale(1, -1);
}

void UnflippedPainter::fill(const QRectF& area, const QColor& color) {
    if (!area.isEmpty())
        fillRect(snapped(area), color);
}

void UnflippedPainter::fill(const QPainterPath& path, const QColor& color) {
    fillPath(path, color);
}

void UnflippedPainter::fill(const QPolygonF& convex, const QColor& color) {
    const QRectF box = convex.boundingRect();
    if (box.isEmpty())
        return;
    QRectF crisp = snapped(box);
    crisp.setSize({snapped(box.width()), snapped(box.height())}); // The same size wherever it stands.
    QPolygonF fitted = convex;
    for (QPointF& point : fitted) {
        point.setX(crisp.x() + (point.x() - box.x()) * crisp.width() / box.width());
        point.setY(crisp.y() + (point.y() - box.y()) * crisp.height() / box.height());
    }
    setPen(Qt::NoPen);
    setBrush(color);
    drawConvexPolygon(fitted);
}

void UnflippedPainter::frame(const QRectF& area, const QColor& color, double lineWidth) {
    if (area.isEmpty())
        return;
    const QRectF outer = snapped(area);
    const double width = snapped(lineWidth);
    QPainterPath ring;
    ring.addRect(outer);
    if (const QRectF inner = outer.adjusted(width, width, -width, -width); !inner.isEmpty())
        ring.addRect(inner);
    fillPath(ring, color);
}

void UnflippedPainter::verticalLine(double x, double bottom, double top, const QColor& color,
                                    double lineWidth) {
    const double width = snapped(lineWidth);
    QRectF line = snapped(QRectF(x - width / 2, bottom, width, top - bottom));
    line.setWidth(width);
    fillRect(line, color);
}

void UnflippedPainter::text(const QRectF& box, const QString& text, const QFont& font, const QColor& color,
                            Qt::Alignment alignment) {
    const QFont drawn = RetroTheme::shaping(font, text);
    const QFontMetricsF metrics(drawn);
    const QSizeF size(metrics.horizontalAdvance(text), metrics.height());
    const double x = alignment & Qt::AlignLeft    ? box.x()
                     : alignment & Qt::AlignRight ? box.right() - size.width()
                                                  : box.center().x() - size.width() / 2;
    const double y = alignment & Qt::AlignTop      ? box.bottom() - size.height()
                     : alignment & Qt::AlignBottom ? box.y()
                                                   : box.center().y() - size.height() / 2;
    const QPointF start = snapped(QRectF({x, y + metrics.descent()}, QSizeF(0, 0))).topLeft();
    save();
    scale(1, -1); // Upright again, or the letters would stand on their heads.
    setFont(drawn);
    setPen(color);
    setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight); // Ends where it is read to.
    drawText(QPointF(start.x(), -start.y()), text);
    restore();
}

void UnflippedPainter::focusMark(const QRectF& area) {
    if (view_.hasFocus() && view_.window()->testAttribute(Qt::WA_KeyboardFocusChange))
        frame(area, RetroTheme::ink(0.55));
}

QRectF UnflippedPainter::snapped(const QRectF& area) const {
    const QTransform toDevice = deviceTransform();
    const QRectF device = toDevice.mapRect(area);
    const QPointF first(std::round(device.left()), std::round(device.top()));
    const QPointF last(std::round(device.right()), std::round(device.bottom()));
    return toDevice.inverted().mapRect(QRectF(first, last));
}

QRectF UnflippedPainter::centred(const QRectF& area) const {
    const QTransform toDevice = deviceTransform();
    const QRectF device = toDevice.mapRect(area);
    const double middle = std::round(device.center().x());
    const double half = std::max(std::round(device.width() / 2), 1.0);
    const QRectF even(middle - half, device.y(), 2 * half, device.height());
    return snapped(toDevice.inverted().mapRect(even));
}

double UnflippedPainter::snapped(double length) const {
    const double devicePixelsPerPoint = std::abs(deviceTransform().m11());
    return std::max(std::round(length * devicePixelsPerPoint), 1.0) / devicePixelsPerPoint;
}

QRectF unflippedBounds(const QWidget& view) {
    return {QPointF(0, 0), QSizeF(view.size())};
}

} // namespace tambrel
