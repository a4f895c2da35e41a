#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tambrel::cli {

/// Text that is safe on a terminal: control characters and bytes that are no UTF-8 as \x and two digits.
/// Pure, any thread.
[[nodiscard]] std::string printable(std::string_view text);

/// "tambrel-midi: FILE: message" and a line break.
[[nodiscard]] std::string complaint(const std::filesystem::path& file, std::string_view message);

/// Writes to standard error. Any thread.
void complain(std::string_view text);

/// Writes to standard output, at once. A reader that is gone interrupts the program like a signal; any other
/// failure throws std::system_error. One thread at a time.
void print(std::string_view text);

} // namespace tambrel::cli
