#include "UTF8.h"

#include <gtest/gtest.h>

namespace tambrel {
namespace {

TEST(UTF8, replacesEveryByteThatBelongsToNoCharacter) {
    struct Row {
        const char* name;
        std::string text;
        std::string repaired;
    };
    const Row rows[] = {
        {"one to four bytes", "aé€😀", "aé€😀"},
        {"Latin-1", "caf\xE9.mid", "caf\uFFFD.mid"},
        {"a lone continuation", "\x80z", "\uFFFDz"},
        {"cut off", "\xE2\x82", "\uFFFD\uFFFD"},
        {"long form of a slash", "\xC0\xAF", "\uFFFD\uFFFD"},
        {"long form of three bytes", "\xE0\x80\xAF", "\uFFFD\uFFFD\uFFFD"},
        {"a surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
        {"the last character", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
        {"past the last character", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"no continuation at the end", "\xE2\x82z", "\uFFFD\uFFFDz"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(UTF8::repaired(row.text), row.repaired);
        EXPECT_EQ(UTF8::isValid(row.text), row.text == row.repaired);
    }
}

} // namespace
} // namespace tambrel
