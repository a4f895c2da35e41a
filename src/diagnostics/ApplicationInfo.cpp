#include "ApplicationInfo.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tambrel {
namespace {

char lowerCased(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool meansYes(std::string_view text) {
    constexpr std::array<std::string_view, 3> affirmations{"yes", "true", "1"};
    return std::ranges::any_of(affirmations, [&](std::string_view affirmation) {
        return std::ranges::equal(affirmation, text, {}, {}, lowerCased);
    });
}

} // namespace

bool ApplicationInfo::diagnosticsEnabled() const {
    if (identifier && identifier->ends_with(".beta"))
        return true;
    if (const auto* text = std::get_if<std::string>(&diagnosticsSwitch))
        return meansYes(*text);
    const auto* flag = std::get_if<bool>(&diagnosticsSwitch);
    return flag && *flag;
}

} // namespace tambrel
