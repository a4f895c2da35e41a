#include "DecimalText.h"
#include "MediumDateTime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <limits>
#include <map>

namespace tambrel {
namespace {

TEST(DecimalText, IsTheShortestFormThatReadsBackWithAFractionalDigit) {
    const struct {
        double value;
        const char* text;
    } rows[] = {
        {93.4, "93.4"},
        {12.5, "12.5"},
        {0.1 + 0.2, "0.30000000000000004"},
        {0, "0.0"},
        {-0.0, "-0.0"},
        {-3, "-3.0"},
        {100000, "100000.0"},
        {0.00001, "0.00001"},
        {1e22, "10000000000000000000000.0"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
        {-std::numeric_limits<double>::quiet_NaN(), "nan"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(decimalText(row.value), row.text);
    for (const double value : {std::numeric_limits<double>::denorm_min(), -std::numeric_limits<double>::max(),
                               -std::numeric_limits<double>::min()})
        EXPECT_EQ(std::strtod(decimalText(value).c_str(), nullptr), value);
}

TEST(MediumDateTime, TakesTheLocaleFromTheFirstVariableThatSaysSomething) {
    using Environment = std::map<std::string, std::string>;
    const struct {
        const char* name;
        Environment environment;
        const char* locale;
    } rows[] = {
        {"nothing set", {}, "C"},
        {"language only", {{"LANG", "de_DE.UTF-8"}}, "de_DE.UTF-8"},
        {"time before language", {{"LANG", "de_DE.UTF-8"}, {"LC_TIME", "fr_FR.UTF-8"}}, "fr_FR.UTF-8"},
        {"all before time", {{"LC_TIME", "fr_FR.UTF-8"}, {"LC_ALL", "en_US.UTF-8"}}, "en_US.UTF-8"},
        {"empty counts as unset", {{"LC_ALL", ""}, {"LC_TIME", ""}, {"LANG", "it_IT"}}, "it_IT"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(timeLocale([&](const char* name) {
                      const auto found = row.environment.find(name);
                      return found == row.environment.end() ? std::nullopt : std::optional(found->second);
                  }),
                  row.locale);
    }
}

TEST(MediumDateTime, WritesLocalTimeInTheStylesOfTheLocale) {
    std::tm local{};
    local.tm_year = 2026 - 1900;
    local.tm_mon = 2;
    local.tm_mday = 9;
    local.tm_hour = 15;
    local.tm_min = 4;
    local.tm_sec = 5;
    local.tm_isdst = -1;
    const auto moment = std::chrono::system_clock::from_time_t(std::mktime(&local));
    const struct {
        const char* locale;
        const char* text;
    } rows[] = {
        {"en_US.UTF-8", "Mar 9, 2026, 3:04:05 PM"},   {"en_GB.UTF-8", "9 Mar 2026, 15:04:05"},
        {"de_DE.UTF-8@euro", "09.03.2026, 15:04:05"}, {"C.UTF-8", "Mar 9, 2026, 15:04:05"},
        {"POSIX", "Mar 9, 2026, 15:04:05"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.locale);
        const auto format = makeMediumDateTimeFormatter(row.locale);
        auto text = format(moment);
        // Newer locale data separates the half of the day with a narrow no-break space.
        if (const auto narrow = text.find("\u202f"); narrow != std::string::npos)
            text.replace(narrow, std::string("\u202f").size(), " ");
        EXPECT_EQ(text, row.text);
    }
}

} // namespace
} // namespace tambrel
