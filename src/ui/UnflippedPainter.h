#pragma once

#include <QPainter>

namespace tambrel {

/// A painter on a view in unflipped coordinates: logical pixels, origin at the view's bottom left corner, y
/// upwards. A rectangle's y is therefore its lower edge. Fills, frames and lines land on whole device pixels,
/// so that they are crisp at every scale; paths are smoothed. Made in paintEvent and nowhere else, on the
/// main thread.
class UnflippedPainter : public QPainter {
public:
    explicit UnflippedPainter(QWidget& view);

    /// Fills an area; an empty one paints nothing.
    void fill(const QRectF& area, const QColor& color);
    void fill(const QPainterPath& path, const QColor& color);

    /// Fills a convex polygon, moved and stretched by less than a device pixel so that its box is crisp.
    void fill(const QPolygonF& convex, const QColor& color);

    /// Draws the outline of an area along the inside of its edges.
    void frame(const QRectF& area, const QColor& color, double lineWidth = 1);

    /// Draws an upright line centred on `x`, at least one device pixel wide and as wide wherever it stands.
    void verticalLine(double x, double bottom, double top, const QColor& color, double lineWidth = 1);

    /// Draws one line of text aligned in a box, and past its edges if it is longer.
    void text(const QRectF& box, const QString& text, const QFont& font, const QColor& color,
              Qt::Alignment alignment = Qt::AlignCenter);

    /// Marks the view inside `area` when it has the keyboard focus and the user is steering by keyboard.
    void focusMark(const QRectF& area);

    /// The area whose edges are the nearest whole device pixels.
    [[nodiscard]] QRectF snapped(const QRectF& area) const;

    /// The same height, and a width that lies evenly around the whole device pixel nearest to the middle:
    /// what has one middle stays in one line, however wide.
    [[nodiscard]] QRectF centred(const QRectF& area) const;

    /// The length of the nearest number of whole device pixels, at least one.
    [[nodiscard]] double snapped(double length) const;

private:
    QWidget& view_;
};

/// The view's bounds in unflipped coordinates: origin 0, 0.
[[nodiscard]] QRectF unflippedBounds(const QWidget& view);

} // namespace tambrel
