#include "TimeText.h"
#include "TransportModel.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace tambrel {
namespace {

TEST(TimeText, GivesHoursMinutesSecondsAndHundredths) {
    const std::tuple<const char*, double, const char*> rows[] = {
        {"every field", 3723.04, "01:02:03.04"},
        {"rounding carries into the hours", 3599.995, "01:00:00.00"},
        {"rounding stays below the minute", 59.994, "00:00:59.99"},
        {"halves away from zero", 0.005, "00:00:00.01"},
        {"hours beyond 32 bits", 1.8e13, "5000000000:00:00.00"},
        {"negative", -1, "00:00:00.00"},
        {"infinite", std::numeric_limits<double>::infinity(), "00:00:00.00"},
        {"no number", std::numeric_limits<double>::quiet_NaN(), "00:00:00.00"},
    };
    for (const auto& [name, seconds, text] : rows) {
        EXPECT_EQ(timeText(seconds), text) << name;
        EXPECT_EQ(clockText(seconds), text) << "in the tests: " << name;
    }
    std::minstd_rand hand;
    for (int i = 0; i < 10'000; ++i) {
        const double seconds = static_cast<double>(hand()) / static_cast<double>(1 << hand() % 32);
        EXPECT_EQ(timeText(seconds), clockText(seconds)) << seconds;
    }
}

} // namespace
} // namespace tambrel
