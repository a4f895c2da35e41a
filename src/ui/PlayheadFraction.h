#pragma once

#include <algorithm>
#include <cmath>

namespace tambrel {

/// A fraction limited to 0 to 1. What is not a number, such as 0 / 0, counts as 0. Pure, any thread.
[[nodiscard]] inline double limitedFraction(double fraction) {
    return std::max(0.0, std::min(fraction, 1.0)); // In this order: std::clamp would let a NaN through.
}

/// The fraction of `length` logical pixels that is nearest to `fraction` and ends on a whole device pixel: a
/// playhead that stands there keeps its width while it moves, and moves only when that can be seen.
[[nodiscard]] inline double wholePixelFraction(double fraction, double length, double devicePixelRatio) {
    const double devicePixels = std::round(length * devicePixelRatio);
    return devicePixels > 0 ? std::round(fraction * devicePixels) / devicePixels : fraction;
}

} // namespace tambrel
