#include "MediumDateTime.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/uversion.h>

namespace tambrel {

std::optional<std::string> processEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

std::string timeLocale(const EnvironmentLookup& environment) {
    for (const char* name : {"LC_ALL", "LC_TIME", "LANG"})
        if (auto value = environment(name); value && !value->empty())
            return *value;
    return "C";
}

DateTimeFormatter makeMediumDateTimeFormatter(const std::string& locale) {
    using icu::DateFormat;
    // Canonical, so that POSIX names are understood: "C" is en_US_POSIX, an encoding is dropped.
    const std::shared_ptr<const DateFormat> format(DateFormat::createDateTimeInstance(
        DateFormat::kMedium, DateFormat::kMedium, icu::Locale::createCanonical(locale.c_str())));
    return [format](std::chrono::system_clock::time_point moment) {
        using Milliseconds = std::chrono::duration<UDate, std::milli>;
        icu::UnicodeString text;
        std::string utf8;
        if (format)
            format->format(Milliseconds(moment.time_since_epoch()).count(), text).toUTF8String(utf8);
        return utf8;
    };
}

std::string dateFormatterVersion() {
    UVersionInfo version{};
    u_getVersion(version);
    std::array<char, U_MAX_VERSION_STRING_LENGTH> text{};
    u_versionToString(version, text.data());
    return std::string("ICU ") + text.data();
}

} // namespace tambrel
