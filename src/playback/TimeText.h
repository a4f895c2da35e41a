#pragma once

#include <string>

namespace tambrel {

/// Hours, minutes, seconds and hundredths as "01:02:03.04", rounded to the nearest hundredth; hours take as
/// many digits as they need. A negative, infinite or undefined time is "00:00:00.00". Pure, any thread.
[[nodiscard]] std::string timeText(double seconds);

} // namespace tambrel
