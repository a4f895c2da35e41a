#pragma once

#include <QRectF>

#include <optional>
#include <string>
#include <string_view>

namespace tambrel {

/// A rectangle as "{{x, y}, {width, height}}", with the shortest numbers that read back as the same ones,
/// whatever the locale. Pure, any thread.
[[nodiscard]] std::string rectangleText(const QRectF& rectangle);

/// Its inverse, which allows blanks anywhere between the marks and numbers; nothing for any other text.
/// Infinities and NaN are numbers.
[[nodiscard]] std::optional<QRectF> rectangleFromText(std::string_view text);

} // namespace tambrel
