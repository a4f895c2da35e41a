#include "UTF8.h"

#include <gtest/gtest.h>

#include <tuple>

namespace tambrel {
namespace {

TEST(UTF8, replacesEveryByteThatBelongsToNoCharacter) {
    const std::tuple<const char*, std::string, std::string> rows[] = {
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
    for (const auto& [name, text, repaired] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(UTF8::repaired(text), repaired);
        EXPECT_EQ(UTF8::isValid(text), text == repaired);
    }
}

} // namespace
} // namespace tambrel
