#pragma once

namespace tambrel {

/// The lower-case form of an ASCII letter; any other character unchanged, whatever the locale. Pure, any
/// thread.
[[nodiscard]] constexpr char lowerCased(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace tambrel
