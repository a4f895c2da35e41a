#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace tambrel {

/// The value of an environment variable, or nothing when it is not set.
using EnvironmentLookup = std::function<std::optional<std::string>(const char* name)>;

[[nodiscard]] std::optional<std::string> processEnvironment(const char* name);

/// The locale in which the user reads dates and times: the first of LC_ALL, LC_TIME and LANG that is not
/// empty, else "C".
[[nodiscard]] std::string timeLocale(const EnvironmentLookup& environment);

using DateTimeFormatter = std::function<std::string(std::chrono::system_clock::time_point)>;

/// A formatter for a date and time in their medium styles and the system's time zone, in UTF-8. It is costly
/// to make and cheap to call: keep it. `locale` is a name such as "de_DE.UTF-8"; the nearest known one is
/// taken. The formatter and its copies belong to one thread.
[[nodiscard]] DateTimeFormatter makeMediumDateTimeFormatter(const std::string& locale);

/// Name and version of the library that knows the locales.
[[nodiscard]] std::string dateFormatterVersion();

} // namespace tambrel
