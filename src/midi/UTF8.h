#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tambrel {

/// Checks and repairs text from files and file names. Pure, any thread.
namespace UTF8 {

/// Bytes of the well-formed character (at most U+10FFFF, shortest form, no surrogate) that the text begins
/// with; 0 when it begins with none.
[[nodiscard]] std::size_t characterLength(std::string_view text);

[[nodiscard]] bool isValid(std::string_view text);

/// The text with U+FFFD in place of every byte that belongs to no well-formed character.
[[nodiscard]] std::string repaired(std::string_view text);

} // namespace UTF8
} // namespace tambrel
