#pragma once

#include <QPolygonF>
#include <QString>

#include <array>
#include <vector>

namespace tambrel {

/// Where a counter paints what: pure functions of its size and text, in unflipped coordinates. Any thread.
namespace SevenSegmentGeometry {

enum class Segment { top, upperLeft, upperRight, middle, lowerLeft, lowerRight, bottom };

inline constexpr std::array allSegments = {Segment::top,    Segment::upperLeft, Segment::upperRight,
                                           Segment::middle, Segment::lowerLeft, Segment::lowerRight,
                                           Segment::bottom};

/// True for "0" to "9"; every other character counts as punctuation.
[[nodiscard]] bool isDigit(QChar character);

/// Whether a digit lights a segment; no other character lights any.
[[nodiscard]] bool isLit(QChar character, Segment segment);

struct Cell {
    QChar character;
    QRectF rect;
};

/// The cells of a text from left to right, centred as a row. A text too long for the size runs over on both
/// sides.
[[nodiscard]] std::vector<Cell> cells(QSizeF size, const QString& text);

/// The hexagon of one segment of a digit.
[[nodiscard]] QPolygonF hexagon(Segment segment, const QRectF& cell);

/// The boxes of the round dots of ':' and '.'; none for other characters.
[[nodiscard]] std::vector<QRectF> dots(const Cell& cell);

} // namespace SevenSegmentGeometry
} // namespace tambrel
