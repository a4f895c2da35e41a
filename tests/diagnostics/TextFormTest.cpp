#include "DecimalText.h"
#include "MediumDateTime.h"

#include <gtest/gtest.h>

#include <QDateTime>

#include <cstdlib>
#include <limits>
#include <map>

namespace tambrel {
namespace {

TEST(DecimalText, IsTheShortestFormThatReadsBackWithAFractionalDigit) {
    using Limits = std::numeric_limits<double>;
    const std::pair<double, const char*> rows[] = {
        {93.4, "93.4"}, {0.1 + 0.2, "0.30000000000000004"}, {100000, "100000.0"},
        {-0.0, "-0.0"}, {-Limits::infinity(), "-inf"},      {-Limits::quiet_NaN(), "nan"},
    };
    for (const auto& [value, text] : rows)
        EXPECT_EQ(decimalText(value), text);
    EXPECT_EQ(std::strtod(decimalText(-Limits::denorm_min()).c_str(), nullptr), -Limits::denorm_min());
}

TEST(MediumDateTime, TakesTheLocaleFromTheFirstVariableThatSaysSomething) {
    const std::pair<std::map<std::string, std::string>, const char*> rows[] = {
        {{}, "C"},
        {{{"LANG", "de_DE.UTF-8"}, {"LC_TIME", "fr_FR.UTF-8"}}, "fr_FR.UTF-8"},
        {{{"LC_TIME", "fr_FR.UTF-8"}, {"LC_ALL", "en_US.UTF-8"}}, "en_US.UTF-8"},
        {{{"LC_ALL", ""}, {"LC_TIME", ""}, {"LANG", "it_IT"}}, "it_IT"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(timeLocale([&](const char* name) {
                      const auto found = row.first.find(name);
                      return found == row.first.end() ? std::nullopt : std::optional(found->second);
                  }),
                  row.second);
}

TEST(MediumDateTime, WritesLocalTimeInTheStylesOfTheLocale) {
    const auto seconds = QDateTime({2026, 3, 9}, {15, 4, 5}).toSecsSinceEpoch();
    for (const auto& [locale, expected] : {std::pair("en_US.UTF-8", "Mar 9, 2026, 3:04:05 PM"),
                                           {"de_DE.UTF-8@euro", "09.03.2026, 15:04:05"},
                                           {"POSIX", "Mar 9, 2026, 15:04:05"}}) {
        SCOPED_TRACE(locale);
        auto text = makeMediumDateTimeFormatter(locale)(std::chrono::system_clock::from_time_t(seconds));
        // Newer locale data separates the half of the day with a narrow no-break space.
        if (const auto narrow = text.find("\u202f"); narrow != std::string::npos)
            text.replace(narrow, std::string("\u202f").size(), " ");
        EXPECT_EQ(text, expected);
    }
}

} // namespace
} // namespace tambrel
