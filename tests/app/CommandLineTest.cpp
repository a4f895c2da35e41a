#include "CommandLine.h"

#include <gmock/gmock.h>

#include <QByteArray>

#include <string>
#include <vector>

namespace tambrel {
namespace {

using ::testing::ElementsAre;

/// With the arguments as main gets them.
std::optional<CommandLine> read(std::vector<std::string> arguments, int& status) {
    arguments.insert(arguments.begin(), "tambrel");
    std::vector<char*> pointers;
    pointers.reserve(arguments.size());
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    return readCommandLine(static_cast<int>(pointers.size()), pointers.data(), status);
}

TEST(CommandLine, ReadsWhatToOpenAndHow) {
    int status = -1;
    const auto all = read({"--play", "--new-instance", "--soundfont", "my bank.sf2", "--audio-driver=silent",
                           "--screenshot", "a.png", "--scale", "1.5", "--at", "2.5", "--playing", "a.mid",
                           "file:///m/my%20song.mid", "file:///m/%FF.mid", "file:b.mid", "file://host/c.mid"},
                          status);
    ASSERT_TRUE(all);
    EXPECT_TRUE(all->play);
    EXPECT_TRUE(all->newInstance);
    EXPECT_EQ(all->soundBank, "my bank.sf2");
    EXPECT_THAT(all->audioDrivers, ElementsAre("silent"));
    EXPECT_EQ(all->screenshot, "a.png");
    EXPECT_EQ(all->at, 2.5);
    EXPECT_TRUE(all->playing);
    EXPECT_THAT(all->files,
                ElementsAre("a.mid", "/m/my song.mid", "/m/\xFF.mid", "file:b.mid", "file://host/c.mid"));
    EXPECT_EQ(status, -1) << "the program goes on";
}

TEST(CommandLine, TakesBankAndDriverFromTheEnvironmentUnlessTheyAreGiven) {
    qputenv("TAMBREL_SOUNDFONT", "other.sf2");
    qputenv("TAMBREL_AUDIO_DRIVER", "jack");
    int status = 0;
    const auto soundFont = read({"--audio-driver=alsa"}, status);
    const auto driver = read({"--soundfont=my.sf2"}, status);
    qunsetenv("TAMBREL_SOUNDFONT");
    qunsetenv("TAMBREL_AUDIO_DRIVER");
    ASSERT_TRUE(soundFont && driver);
    EXPECT_EQ(soundFont->soundBank, "other.sf2");
    EXPECT_THAT(soundFont->audioDrivers, ElementsAre("alsa"));
    EXPECT_EQ(driver->soundBank, "my.sf2");
    EXPECT_THAT(driver->audioDrivers, ElementsAre("jack"));
}

TEST(CommandLine, EndsTheProgramWhenThereIsNothingToDo) {
    const std::pair<std::vector<std::string>, int> rows[] = {
        {{"--version"}, 0},
        {{"--loud"}, 2},
        {{"--audio-driver", "file"}, 2},
        {{"--scale", "2"}, 2}, // Without a picture.
        {{"--screenshot=a.png", "--scale=0"}, 2},
        {{"--screenshot=a.png", "--at=soon"}, 2},
    };
    for (const auto& [arguments, wanted] : rows) {
        SCOPED_TRACE(arguments.back());
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        int status = -1;
        EXPECT_FALSE(read(arguments, status));
        EXPECT_EQ(status, wanted);
        EXPECT_NE(::testing::internal::GetCapturedStdout().empty(), wanted == 0);
        EXPECT_NE(::testing::internal::GetCapturedStderr().empty(), wanted == 2);
    }
}

TEST(CommandLine, PaintsAPictureWithoutADisplayAtItsScale) {
    const struct {
        std::vector<std::string> arguments;
        const char* platform;
        const char* scale;
    } rows[] = {{{"a.mid"}, "wanted", ""},
                {{"--screenshot", "a.png", "a.mid"}, "offscreen", ""},
                {{"--scale=1.25", "--screenshot=a.png"}, "offscreen", "1.25"}};
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments.front());
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
