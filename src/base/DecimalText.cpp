#include "DecimalText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace tambrel {
namespace {

// Sign, "0." and 1074 places: more than any double needs.
constexpr std::size_t longestText = 1080;

} // namespace

std::string decimalText(double value) {
    if (std::isnan(value))
        return "nan";
    std::array<char, longestText> buffer{};
    // Without the format, to_chars takes an exponent as soon as that is shorter: 100000 would be 1e+05.
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed).ptr;
    std::string text(buffer.data(), end);
    if (std::isfinite(value) && text.find('.') == std::string::npos)
        text += ".0";
    return text;
}

} // namespace tambrel
