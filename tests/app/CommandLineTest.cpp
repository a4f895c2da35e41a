#include "CommandLine.h"

#include <gmock/gmock.h>

#include <QByteArray>

#include <string>
#include <vector>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// With the arguments as main gets them.
std::optional<CommandLine> read(std::vector<std::string> arguments, int& status) {
    arguments.insert(arguments.begin(), "tambrel");
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    return readCommandLine(static_cast<int>(pointers.size()), pointers.data(), status);
}

TEST(CommandLine, ReadsWhatToOpenAndHow) {
    int status = -1;
    const auto nothing = read({}, status);
    ASSERT_TRUE(nothing);
    EXPECT_THAT(nothing->files, IsEmpty());
    EXPECT_THAT(nothing->audioDrivers, IsEmpty());
    EXPECT_FALSE(nothing->play);
    EXPECT_FALSE(nothing->newInstance);

    const auto all = read({"--play", "--new-instance", "--soundfont", "my bank.sf2", "--audio-driver=silent",
                           "--screenshot", "a.png", "--scale", "1.5", "--at", "2.5", "a.mid",
                           "file:///m/my%20song.mid", "file:///m/%FF.mid", "file:b.mid", "file://host/c.mid"},
                          status);
    ASSERT_TRUE(all);
    EXPECT_TRUE(all->play);
    EXPECT_TRUE(all->newInstance);
    EXPECT_EQ(all->soundBank, "my bank.sf2");
    EXPECT_THAT(all->audioDrivers, ElementsAre("silent"));
    EXPECT_EQ(all->screenshot, "a.png");
    EXPECT_EQ(all->at, 2.5);
    EXPECT_THAT(all->files,
                ElementsAre("a.mid", "/m/my song.mid", "/m/\xFF.mid", "file:b.mid", "file://host/c.mid"));
    EXPECT_EQ(status, -1) << "the program goes on";
}

TEST(CommandLine, LeavesItsOwnOptionsToTheToolkit) {
    const std::vector<std::string> rows[] = {
        {"-platform", "offscreen", "a.mid"}, {"--style", "fusion", "a.mid"}, {"-stylesheet=a.qss", "a.mid"},
        {"a.mid", "-session", "12_34"},      {"-reverse", "a.mid"},          {"a.mid", "-display"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.front() + " " + row.back());
        int status = -1;
        const auto commandLine = read(row, status);
        ASSERT_TRUE(commandLine);
        EXPECT_THAT(commandLine->files, ElementsAre("a.mid"));
    }
}

TEST(CommandLine, TakesBankAndDriverFromTheEnvironmentUnlessTheyAreGiven) {
    qputenv("TAMBREL_SOUNDFONT", "other.sf2");
    qputenv("TAMBREL_AUDIO_DRIVER", "jack");
    int status = 0;
    const auto fromEnvironment = read({}, status);
    const auto given = read({"--soundfont=my.sf2", "--audio-driver=alsa"}, status);
    qunsetenv("TAMBREL_SOUNDFONT");
    qunsetenv("TAMBREL_AUDIO_DRIVER");
    ASSERT_TRUE(fromEnvironment && given);
    EXPECT_EQ(fromEnvironment->soundBank, "other.sf2");
    EXPECT_THAT(fromEnvironment->audioDrivers, ElementsAre("jack"));
    EXPECT_EQ(given->soundBank, "my.sf2");
    EXPECT_THAT(given->audioDrivers, ElementsAre("alsa"));
}

TEST(CommandLine, EndsTheProgramWhenThereIsNothingToDo) {
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        int status;
    } rows[] = {
        {"help", {"--help"}, 0},
        {"version", {"--version"}, 0},
        {"an unknown option", {"--loud"}, 2},
        {"an unknown driver", {"--audio-driver", "file"}, 2},
        {"a scale without a picture", {"--scale", "2"}, 2},
        {"a scale of nothing", {"--screenshot", "a.png", "--scale", "0"}, 2},
        {"a playhead that is no number", {"--screenshot", "a.png", "--at", "soon"}, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        int status = -1;
        EXPECT_FALSE(read(row.arguments, status));
        EXPECT_EQ(status, row.status);
        EXPECT_NE(::testing::internal::GetCapturedStdout().empty(), row.status == 0);
        EXPECT_NE(::testing::internal::GetCapturedStderr().empty(), row.status == 2);
    }
}

TEST(CommandLine, PaintsAPictureWithoutADisplayAtItsScale) {
    const struct {
        const char* name;
        std::vector<std::string> arguments;
        const char* platform;
        const char* scale;
    } rows[] = {
        {"no picture", {"a.mid"}, "wanted", ""},
        {"a picture", {"--screenshot", "a.png", "a.mid"}, "offscreen", ""},
        {"a picture at a scale", {"--screenshot", "a.png", "--scale", "1.25"}, "offscreen", "1.25"},
        {"joined options", {"--scale=2", "--screenshot=a.png"}, "offscreen", "2"},
    };
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        qputenv("QT_QPA_PLATFORM", "wanted");
        int status = 0;
        prepareForScreenshot(read(row.arguments, status).value());
        EXPECT_EQ(qgetenv("QT_QPA_PLATFORM"), row.platform);
        EXPECT_EQ(qgetenv("QT_SCALE_FACTOR"), row.scale);
        qunsetenv("QT_SCALE_FACTOR");
    }
    qputenv("QT_QPA_PLATFORM", platform);
}

} // namespace
} // namespace tambrel
