#include "MIDITrackBarsGeometry.h"

#include "QtText.h"

#include <algorithm>

namespace tambrel {
namespace {

constexpr double borderInset = 2;
constexpr double labelIndent = 3; // From the border; the label's base line is `labelRise` above its bars.
constexpr double labelRise = 1;
constexpr double labelWidth = 22 + 4;
constexpr double rightMargin = 6;

constexpr double topMargin = 4;
constexpr double bottomMargin = 2;
constexpr double rowPitch = 8;
constexpr double barHeight = 4;
constexpr double narrowestPhrase = 2;

constexpr double playheadWidth = 1.5;
constexpr double dotSize = 7;
constexpr double dotDrop = 8; // The lower edge of the dot, below the top of the border.

double topOf(const QRectF& rect) {
    return rect.y() + rect.height();
}

QRectF phraseRect(const MIDIPhrase& phrase, const QRectF& strip) {
    const double start = std::clamp(phrase.start, 0.0, 1.0);
    const double end = std::clamp(phrase.end, start, 1.0);
    return {strip.x() + strip.width() * start, strip.y(),
            std::max(strip.width() * (end - start), narrowestPhrase), strip.height()};
}

MIDITrackBarsGeometry::Row row(const QString& label, const std::vector<MIDIPhrase>& phrases, double labelX,
                               const QRectF& strip) {
    MIDITrackBarsGeometry::Row row{label, {labelX, strip.y() + labelRise}, strip, {}};
    for (const MIDIPhrase& phrase : phrases) {
        const QRectF rect = phraseRect(phrase, strip);
        // Those that begin closer together would lie on one another: they become one.
        if (row.phrases.empty() || rect.x() - row.phrases.back().x() >= narrowestPhrase)
            row.phrases.push_back(rect);
        else
            row.phrases.back().setRight(std::max(row.phrases.back().right(), rect.right()));
    }
    return row;
}

} // namespace

MIDITrackBarsGeometry MIDITrackBarsGeometry::of(QSizeF size, const std::vector<MIDITrackPhraseLane>& lanes,
                                                std::int64_t trackCount) {
    MIDITrackBarsGeometry geometry;
    const QRectF& border = geometry.border =
        QRectF({0, 0}, size).adjusted(borderInset, borderInset, -borderInset, -borderInset);
    const double barsX = border.x() + labelWidth;
    const double barsWidth = std::max(border.x() + border.width() - barsX - rightMargin, 1.0);
    geometry.barArea = QRectF(barsX, border.y(), barsWidth, border.height());

    const auto rowCount = lanes.empty() ? trackCount : static_cast<std::int64_t>(lanes.size());
    double y = topOf(border) - topMargin - rowPitch;
    for (std::int64_t i = 0; i < rowCount && y >= border.y() + bottomMargin; ++i, y -= rowPitch) {
        const QRectF strip(barsX, y, barsWidth, barHeight);
        const double labelX = border.x() + labelIndent;
        if (lanes.empty()) {
            geometry.rows.push_back(row(QString::number(i + 1), {}, labelX, strip));
        } else {
            const auto& lane = lanes[static_cast<std::size_t>(i)];
            geometry.rows.push_back(row(toQString(lane.label), lane.phrases, labelX, strip));
        }
    }
    return geometry;
}

std::array<double, 9> MIDITrackBarsGeometry::gridLines() const {
    std::array<double, 9> lines{};
    int tenths = 0;
    for (double& x : lines)
        x = barArea.x() + barArea.width() * ++tenths / 10;
    return lines;
}

MIDITrackBarsGeometry::Playhead MIDITrackBarsGeometry::playhead(double fraction) const {
    const double x = barArea.x() + barArea.width() * fraction;
    return {{x - playheadWidth / 2, border.y(), playheadWidth, border.height()},
            {x - dotSize / 2, topOf(border) - dotDrop, dotSize, dotSize}};
}

} // namespace tambrel
