#pragma once

#include <QString>

#include <string_view>

namespace tambrel {

/// UTF-8 text for Qt. Any thread.
[[nodiscard]] inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace tambrel
