#include "BugReportTexts.h"
#include "CharacterCount.h"
#include "SystemProfiler.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace tambrel {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string repeated(std::string_view text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

const std::string family = "👨‍👩‍👧‍👦";
const std::string flag = "🇩🇪";

TEST(CharacterCount, CountsWhatAReaderCountsAndCutsNothingInTwo) {
    const struct {
        const char* name;
        std::string character;
    } rows[] = {
        {"ASCII", "a"},
        {"two bytes", "é"},
        {"letter and combining accent", "e\u0301"},
        {"three bytes", "☃"},
        {"outside the basic plane", "🎹"},
        {"family of four, joined", family},
        {"flag of two letters", flag},
        {"thumb with a skin tone", "👍🏽"},
        {"Hangul of three letters", "\u1112\u1161\u11ab"},
        {"Windows' newline", "\r\n"},
        {"newline", "\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto text = repeated(row.character, 10);
        EXPECT_EQ(characterCount(text), 10);
        EXPECT_TRUE(hasMoreCharactersThan(text, 9));
        EXPECT_FALSE(hasMoreCharactersThan(text, 10));
        EXPECT_FALSE(hasMoreCharactersThan(text, 11));
        EXPECT_EQ(lastCharacters("xy" + text, 10), text);
        EXPECT_EQ(lastCharacters("xy" + text, 11), "y" + text);
        EXPECT_EQ(lastCharacters(text, 10), text);
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

const std::string noticesOfReport =
    "[Earlier report entries were truncated for reliable email body delivery.]\n\n";
const std::string noticesOfWindow =
    "[Earlier debug console entries were truncated for reliable email body delivery.]\n\n";
const std::string leadOfTambrel =
    "TYPE YOUR NOTES HERE:\n\nThe full Tambrel beta report is attached as a text file and copied to the "
    "Clipboard. The latest report text is included below.\n";
const std::string header = "TYPE YOUR NOTES HERE:\n\nDo not enter any text below this line!\n\n"
                           "___________________________________________________________________________\n\n";
const std::string endOfWindow =
    "\n[The full Tambrel beta report was copied to the Clipboard before this email opened. If anything "
    "important is missing here, paste the Clipboard contents into this message.]";

TEST(BugReportTexts, KeepTheEndOfAReportThatIsTooLong) {
    ASSERT_EQ(characterCount(leadOfTambrel), 150);
    const struct {
        const char* name;
        int limit;
        int characters;
        int kept; // 0: everything.
    } rows[] = {
        {"fits", 3500, 3350, 0},
        {"one too many", 3500, 3351, 3350},
        {"the limit at which the floor begins", 950, 801, 800},
        {"below the floor", 949, 801, 800},
        {"no room at all, but as long as the floor", 0, 800, 0},
        {"no room at all", 0, 5000, 800},
    };
    for (const auto& row : rows) {
        for (const std::string& character : {std::string("a"), std::string("☃"), family}) {
            SCOPED_TRACE(std::string(row.name) + " of " + character);
            const auto report = repeated(character, row.characters);
            const auto rest = row.kept ? noticesOfReport + repeated(character, row.kept) : report;
            EXPECT_EQ(tailEmailBodyForOversizedReport(report, "Tambrel", row.limit), leadOfTambrel + rest);
        }
    }
    EXPECT_THAT(tailEmailBodyForOversizedReport("r", "Ümbrel", 3500),
                StartsWith("TYPE YOUR NOTES HERE:\n\nThe full Ümbrel beta report is attached"));
}

TEST(BugReportTexts, KeepTheEndOfAWindowThatIsTooLong) {
    ASSERT_EQ(header.size(), 140u);
    const std::string appInfo = "App ☃";
    const std::string compact = "Mac ☃";
    const auto head = header + "App ☃\n\nMac ☃\n\nDebug Console Text:";
    const int fixed = 140 + 5 + 2 + 5 + 21 + static_cast<int>(endOfWindow.size());
    const struct {
        const char* name;
        int budget;
        int characters;
        int kept;
    } rows[] = {
        {"fits", 2000, 2000, 0},
        {"one too many", 2000, 2001, 2000},
        {"below the floor", 799, 801, 800},
        {"no room, but as long as the floor", -100, 800, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto report = repeated("é", row.characters);
        const auto rest = row.kept ? noticesOfWindow + repeated("é", row.kept) : report;
        EXPECT_EQ(debugWindowEmailBody(report, appInfo, compact, fixed + row.budget),
                  head + rest + endOfWindow);
    }
}

TEST(BugReportTexts, SayWhenThereIsNothingToReport) {
    for (const char* blank : {"", " ", "\n\n", " \t\r\n\u00a0\u2003\u2028"})
        EXPECT_EQ(normalizedDebugReportText(blank), "No debug entries recorded yet.") << '"' << blank << '"';
    EXPECT_EQ(normalizedDebugReportText(" x\n"), " x\n");
}

const ComputerFacts computer{.systemVersion = "GNU ☃ 12",
                             .computerName = "studio",
                             .processorCount = 8,
                             .physicalMemory = std::int64_t{16} << 30};

TEST(BugReportTexts, DescribeTheComputerInBrief) {
    EXPECT_EQ(compactMacintoshInfoReport(computer, "today"),
              "Macintosh Info:\nCollected: today\nmacOS: GNU ☃ 12\nComputer Name: studio\n"
              "Processor Count: 8\nPhysical Memory: 16 GB");
    EXPECT_THAT(compactMacintoshInfoReport({.systemVersion = "12"}, "today"),
                HasSubstr("\nComputer Name: Unknown\n"));
    const auto here = ComputerFacts::current();
    EXPECT_FALSE(here.systemVersion.empty());
    EXPECT_GT(here.processorCount, 0);
    EXPECT_GT(here.physicalMemory, 0);
}

TEST(BugReportTexts, WriteMemoryInItsUnit) {
    constexpr std::int64_t kilo = 1024;
    const struct {
        std::int64_t bytes;
        const char* text;
    } rows[] = {
        {0, "0 bytes"},
        {1023, "1023 bytes"},
        {kilo, "1 KB"},
        {kilo * kilo - 1, "1 MB"},
        {kilo * kilo * 15 / 2, "7.5 MB"},
        {kilo * kilo * kilo * 100 / 64, "1.56 GB"},
        {kilo * kilo * kilo * 1024 - 1, "1 TB"},
        {kilo * kilo * kilo * kilo * 3, "3 TB"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(memoryText(row.bytes), row.text);
}

TEST(SystemProfiler, PrintsWhatItsToolsPrintOrSaysWhyThatIsNothing) {
    const std::string facts =
        "\nmacOS: GNU ☃ 12\nComputer Name: studio\nProcessor Count: 8\nPhysical Memory: 16 GB";
    const std::string nothing = "system_profiler unavailable: system_profiler returned no text." + facts;
    const auto shell = [](const char* script) { return ProfilerTool{"sh", {"-c", script}}; };
    const ProfilerTool missing{"no-such-tool-of-tambrel"};
    const struct {
        const char* name;
        std::vector<ProfilerTool> tools;
        std::string expected;
    } rows[] = {
        {"output and errors, untrimmed", {shell("printf ' out\\n'; echo err >&2")}, " out\nerr\n"},
        {"one after another", {shell("echo first"), shell("echo second ☃")}, "first\nsecond ☃\n"},
        {"lines left out", {{"printf", {"a: 1\\nb: 2\\na: 3"}, {"a:"}}}, "b: 2\n"},
        {"a status that tells of failure", {shell("echo half; exit 3")}, "half\n"},
        {"some are missing", {missing, shell("echo there")}, "there\n"},
        {"blanks only", {shell("echo; echo ' '")}, nothing},
        {"not UTF-8", {shell("printf '\\377'")}, nothing},
        {"one is missing, one prints nothing", {missing, shell("")}, nothing},
        {"no tools", {}, nothing},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const SystemProfiler profiler{
            .tools = row.tools, .limit = std::chrono::minutes(1), .computer = [] { return computer; }};
        EXPECT_EQ(profiler.report(), row.expected);
    }

    // A slow machine may not even get to the first word.
    const SystemProfiler hanging{.tools = {shell("echo begun; exec sleep 1000"), shell("echo too late")},
                                 .limit = std::chrono::milliseconds(500),
                                 .computer = [] { return computer; }};
    EXPECT_THAT(hanging.report(), AnyOf("begun\n", nothing));

    const SystemProfiler unavailable{.tools = {missing}, .computer = [] { return computer; }};
    const auto text = unavailable.report();
    EXPECT_THAT(text, StartsWith("system_profiler unavailable: "));
    EXPECT_THAT(text, HasSubstr("No such file or directory" + facts));
}

TEST(SystemProfiler, KnowsThisComputer) {
    const auto text = SystemProfiler().report();
    for (const char* fact : {"Model name:", "Mem:", "Linux ", "PRETTY_NAME="})
        EXPECT_THAT(text, HasSubstr(fact));
    EXPECT_THAT(text, Not(HasSubstr("Flags:")));
}

} // namespace
} // namespace tambrel
