#include "SevenSegmentGeometry.h"

#include <algorithm>
#include <cstdint>

namespace tambrel::SevenSegmentGeometry {
namespace {

constexpr double punctuationUnits = 0.36; // Of a digit's width.

// Bit n stands for the segment numbered n: bottom first, top last.
constexpr std::array<std::uint8_t, 10> litSegments = {0b1110111, 0b0100100, 0b1011101, 0b1101101, 0b0101110,
                                                      0b1101011, 0b1111011, 0b0100101, 0b1111111, 0b1101111};

struct CellSize {
    double digitWidth;
    double punctuationWidth;
    double height;
    double spacing;

    double widthOf(QChar character) const { return isDigit(character) ? digitWidth : punctuationWidth; }
};

CellSize cellSize(QSizeF size, const QString& text) {
    const double spacing = std::clamp(size.width() / 110, 3.0, 6.0);
    double units = 0;
    for (const QChar character : text)
        units += isDigit(character) ? 1 : punctuationUnits;
    const double available = size.width() - spacing * static_cast<double>(text.size() - 1) - 12;
    const double digitWidth = std::clamp(std::max(available, 1.0) / std::max(units, 1.0), 14.0, 36.0);
    return {digitWidth, std::max(digitWidth * punctuationUnits, 6.0),
            std::min(digitWidth * 1.95, size.height() - 8), spacing};
}

QPolygonF horizontalHexagon(double x, double y, double width, double thickness) {
    const double half = thickness / 2;
    return QList<QPointF>{{x + half, y},
                          {x + width - half, y},
                          {x + width, y + half},
                          {x + width - half, y + thickness},
                          {x + half, y + thickness},
                          {x, y + half}};
}

QPolygonF verticalHexagon(double x, double y, double thickness, double height) {
    const double half = thickness / 2;
    return QList<QPointF>{{x, y + half},
                          {x + half, y},
                          {x + thickness, y + half},
                          {x + thickness, y + height - half},
                          {x + half, y + height},
                          {x, y + height - half}};
}

} // namespace

bool isDigit(QChar character) {
    return character >= u'0' && character <= u'9';
}

bool isLit(QChar character, Segment segment) {
    if (!isDigit(character))
        return false;
    const std::size_t digit = static_cast<std::size_t>(character.unicode() - u'0');
    return (litSegments[digit] >> static_cast<unsigned>(segment) & 1) != 0;
}

std::vector<Cell> cells(QSizeF size, const QString& text) {
    if (text.isEmpty())
        return {};
    const CellSize cell = cellSize(size, text);
    double advance = 0;
    for (const QChar character : text)
        advance += cell.widthOf(character) + cell.spacing;

    std::vector<Cell> row;
    double x = size.width() / 2 - (advance - cell.spacing) / 2;
    const double y = size.height() / 2 - cell.height / 2;
    for (const QChar character : text) {
        const double width = cell.widthOf(character);
        row.push_back({character, {x, y, width, cell.height}});
        x += width + cell.spacing;
    }
    return row;
}

QPolygonF hexagon(Segment segment, const QRectF& cell) {
    const double thickness = std::max(cell.width() * 0.16, 4.0);
    const double half = thickness / 2;
    const double left = cell.left(), right = cell.right() - thickness;
    const double bottom = cell.top(), middle = cell.center().y(), top = cell.bottom(); // Unflipped.
    const double width = cell.width() - thickness, height = cell.height() / 2 - thickness;
    // The upper pair floats a quarter thickness above the middle line, on which the lower pair ends: the look
    // of the original tube.
    const double upper = middle + thickness / 4, lower = bottom + thickness;
    switch (segment) {
    case Segment::top:
        return horizontalHexagon(left + half, top - thickness, width, thickness);
    case Segment::upperLeft:
        return verticalHexagon(left, upper, thickness, height);
    case Segment::upperRight:
        return verticalHexagon(right, upper, thickness, height);
    case Segment::middle:
        return horizontalHexagon(left + half, middle - half, width, thickness);
    case Segment::lowerLeft:
        return verticalHexagon(left, lower, thickness, height);
    case Segment::lowerRight:
        return verticalHexagon(right, lower, thickness, height);
    case Segment::bottom:
        return horizontalHexagon(left + half, bottom, width, thickness);
    }
    return {};
}

std::vector<QRectF> dots(const Cell& cell) {
    const QRectF& rect = cell.rect;
    const double diameter = std::max(rect.width() * 0.28, 4.0);
    const double x = rect.center().x() - diameter / 2;
    const auto dotAt = [&](double y) { return QRectF(x, y, diameter, diameter); };
    if (cell.character == u':')
        return {dotAt(rect.center().y() + rect.height() * 0.18),
                dotAt(rect.center().y() - rect.height() * 0.24)};
    if (cell.character == u'.')
        return {dotAt(rect.top() + 1)};
    return {};
}

} // namespace tambrel::SevenSegmentGeometry
