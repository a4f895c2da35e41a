#include "BugReportTexts.h"
#include "CharacterCount.h"
#include "SystemProfiler.h"

#include <gmock/gmock.h>

namespace tambrel {
namespace {

using ::testing::AnyOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

std::string repeated(std::string_view text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

TEST(CharacterCount, CountsWhatAReaderCountsAndCutsNothingInTwo) {
    for (const char* character :
         {"a", "e\u0301", "🎹", "👨‍👩‍👧‍👦", "🇩🇪", "\u1112\u1161\u11ab", "\r\n"}) {
        SCOPED_TRACE(character);
        const auto text = repeated(character, 10);
        EXPECT_EQ(characterCount(text), 10);
        EXPECT_TRUE(hasMoreCharactersThan(text, 9));
        EXPECT_FALSE(hasMoreCharactersThan(text, 10));
        EXPECT_FALSE(hasMoreCharactersThan(text, 11));
        EXPECT_EQ(lastCharacters("xy" + text, 10), text);
        EXPECT_EQ(lastCharacters(text, 11), text);
        EXPECT_EQ(lastCharacters(text, 0), "");
    }
}

TEST(CharacterCount, EndsWithTextThatIsNotUTF8) {
    const std::string text = repeated("\xff\xc3", 40);
    EXPECT_TRUE(hasMoreCharactersThan(text, 5));
    EXPECT_TRUE(text.ends_with(lastCharacters(text, 5)));
    EXPECT_GE(characterCount(text), 40);
}

TEST(BugReportTexts, KeepAnEndWhereThereIsNoRoom) {
    const auto mailed = [](int characters, std::int64_t room) {
        const std::int64_t lead = 150;
        return tailEmailBodyForOversizedReport(repeated("☃", characters), "Tambrel", lead + room);
    };
    EXPECT_THAT(mailed(801, 801), EndsWith("below.\n" + repeated("☃", 801)));
    EXPECT_THAT(mailed(801, 799), EndsWith("delivery.]\n\n" + repeated("☃", 800)));
    EXPECT_THAT(mailed(800, -150), EndsWith("below.\n" + repeated("☃", 800)));
}

const ComputerFacts computer{.systemVersion = "GNU ☃ 12",
                             .computerName = "studio",
                             .processorCount = 8,
                             .physicalMemory = std::int64_t{16} << 30};

TEST(BugReportTexts, WriteMemoryInItsUnit) {
    constexpr std::int64_t kilo = 1024;
    for (const auto& [bytes, text] : {std::pair(kilo - 1, "1023 bytes"),
                                      {kilo, "1 KB"},
                                      {kilo * kilo - 1, "1 MB"},
                                      {kilo * kilo * 15 / 2, "7.5 MB"},
                                      {kilo * kilo * kilo * 100 / 64, "1.56 GB"},
                                      {kilo * kilo * kilo * kilo * 2048, "2048 TB"}})
        EXPECT_EQ(memoryText(bytes), text);
}

TEST(SystemProfiler, PrintsWhatItsToolsPrintOrSaysWhyThatIsNothing) {
    const std::string facts =
        "\nmacOS: GNU ☃ 12\nComputer Name: studio\nProcessor Count: 8\nPhysical Memory: 16 GB";
    const std::string nothing = "system_profiler unavailable: system_profiler returned no text." + facts;
    const auto shell = [](const char* script) { return ProfilerTool{"sh", {"-c", script}}; };
    const ProfilerTool missing{"no-such-tool-of-tambrel"};
    SystemProfiler profiler{.limit = std::chrono::minutes(1), .computer = [] { return computer; }};
    const struct {
        const char* name;
        std::vector<ProfilerTool> tools;
        std::string expected;
    } rows[] = {
        {"output and errors, untrimmed, whatever the status, after a missing tool",
         {missing, shell("printf ' out\\n'; echo err >&2; exit 3"), shell("echo second ☃")},
         " out\nerr\nsecond ☃\n"},
        {"lines left out", {{"printf", {"a: 1\\nb: 2\\na: 3"}, {"a:"}}}, "b: 2\n"},
        {"blanks only", {shell("echo; echo ' '")}, nothing},
        {"not UTF-8", {shell("printf '\\377'")}, nothing},
        {"one is missing, one prints nothing", {missing, shell("")}, nothing},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        profiler.tools = row.tools;
        EXPECT_EQ(profiler.report(), row.expected);
    }

    profiler.tools = {missing};
    const auto text = profiler.report();
    EXPECT_THAT(text, StartsWith("system_profiler unavailable: "));
    EXPECT_THAT(text, HasSubstr("No such file or directory" + facts));

    // A slow machine may not even get to the first word.
    profiler.tools = {shell("echo begun; exec sleep 1000"), shell("echo too late")};
    profiler.limit = std::chrono::milliseconds(500);
    EXPECT_THAT(profiler.report(), AnyOf("begun\n", nothing));
}

TEST(SystemProfiler, SaysNothingOfFilesThatThisComputerDoesNotHave) {
    SystemProfiler profiler;
    for (ProfilerTool& tool : profiler.tools)
        for (QString& path : tool.arguments)
            path = path.startsWith('/') ? "/no/such/file" : path;
    EXPECT_THAT(profiler.report(), Not(HasSubstr("no/such")));
}

} // namespace
} // namespace tambrel
