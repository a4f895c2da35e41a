#include "ApplicationInfo.h"

#include <QLatin1String>

#include <algorithm>
#include <array>
#include <string_view>

namespace tambrel {
namespace {

bool meansYes(std::string_view text) {
    const QLatin1String said(text.data(), static_cast<qsizetype>(text.size()));
    constexpr std::array affirmations{QLatin1String("yes"), QLatin1String("true"), QLatin1String("1")};
    return std::ranges::any_of(affirmations, [said](QLatin1String affirmation) {
        return said.compare(affirmation, Qt::CaseInsensitive) == 0;
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
