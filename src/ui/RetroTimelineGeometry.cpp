#include "RetroTimelineGeometry.h"

#include "PlayheadFraction.h"

namespace tambrel {
namespace {

constexpr double margin = 12; // On both sides of the track.
constexpr double trackHeight = 6;
constexpr double handleWidth = 10;
constexpr double handleHeight = 24;
constexpr double tickBottom = 4; // Above the top of the track.
constexpr double tickTop = 14;

} // namespace

RetroTimelineGeometry RetroTimelineGeometry::of(QSizeF size, double fraction) {
    const double middle = size.height() / 2;
    const double length = trackLength(size.width());
    const double playedLength = fraction * length;
    const double trackBottom = middle - trackHeight / 2;
    const double trackTop = middle + trackHeight / 2;

    RetroTimelineGeometry geometry;
    geometry.track = QRectF(margin, trackBottom, length, trackHeight);
    geometry.played = QRectF(margin, trackBottom, playedLength, trackHeight);
    geometry.handle =
        QRectF(margin + playedLength - handleWidth / 2, middle - handleHeight / 2, handleWidth, handleHeight);
    double x = margin;
    for (QLineF& tick : geometry.ticks) {
        tick = QLineF(x, trackTop + tickBottom, x, trackTop + tickTop);
        x += length / (tickCount - 1);
    }
    return geometry;
}

double RetroTimelineGeometry::trackLength(double width) {
    return width - 2 * margin;
}

double RetroTimelineGeometry::time(double x, double width, double duration) {
    return limitedFraction((x - margin) / trackLength(width)) * duration;
}

} // namespace tambrel
