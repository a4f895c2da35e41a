#include "TimeText.h"

#include <gtest/gtest.h>

#include <limits>

namespace tambrel {
namespace {

TEST(TimeText, GivesHoursMinutesSecondsAndHundredths) {
    const struct {
        const char* name;
        double seconds;
        const char* text;
    } rows[] = {
        {"every field", 3723.04, "01:02:03.04"},
        {"rounding carries into the hours", 3599.995, "01:00:00.00"},
        {"rounding stays below the minute", 59.994, "00:00:59.99"},
        {"halves away from zero", 0.005, "00:00:00.01"},
        {"just below a half", 0.0049, "00:00:00.00"},
        {"100 hours", 360'000, "100:00:00.00"},
        {"hours beyond 32 bits", 1.8e13, "5000000000:00:00.00"},
        {"negative", -1, "00:00:00.00"},
        {"infinite", std::numeric_limits<double>::infinity(), "00:00:00.00"},
        {"no number", std::numeric_limits<double>::quiet_NaN(), "00:00:00.00"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(timeText(row.seconds), row.text) << row.name;
}

} // namespace
} // namespace tambrel
