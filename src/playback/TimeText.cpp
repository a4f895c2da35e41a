#include "TimeText.h"

#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace tambrel {

std::string timeText(double seconds) {
    if (!std::isfinite(seconds) || seconds < 0)
        seconds = 0;
    const std::int64_t hundredths = std::llround(seconds * 100);
    char text[48];
    std::snprintf(text, sizeof text, "%02" PRId64 ":%02d:%02d.%02d", hundredths / 360000,
                  static_cast<int>(hundredths / 6000 % 60), static_cast<int>(hundredths / 100 % 60),
                  static_cast<int>(hundredths % 100));
    return text;
}

} // namespace tambrel
