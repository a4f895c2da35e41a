#pragma once

#include <QLineF>
#include <QRectF>

#include <array>

namespace tambrel {

/// Where the timeline paints what and which time it means by a place. Unflipped coordinates; times in
/// seconds. Pure, any thread.
struct RetroTimelineGeometry {
    static constexpr int tickCount = 9; ///< One at each eighth of the track, its ends included.

    QRectF track;
    QRectF played; ///< Empty at the start.
    QRectF handle;
    std::array<QLineF, tickCount> ticks; ///< From left to right, each upwards.

    /// `fraction` of the track, 0 to 1, has been played.
    [[nodiscard]] static RetroTimelineGeometry of(QSizeF size, double fraction);

    /// The length of the track in a view so wide; 0 or less when there is no room for one.
    [[nodiscard]] static double trackLength(double width);

    /// The time at `x` in a view so wide. The margins mean the ends.
    [[nodiscard]] static double time(double x, double width, double duration);
};

} // namespace tambrel
