#pragma once

#include <string>

namespace tambrel {

/// The shortest decimal number that reads back as the same double, never with an exponent and always with at
/// least one fractional digit: "93.4", "100000.0", "-0.0". Infinite values and not-a-number are "inf", "-inf"
/// and "nan". Any thread, whatever the locale.
[[nodiscard]] std::string decimalText(double value);

} // namespace tambrel
