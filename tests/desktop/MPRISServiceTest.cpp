#include "MPRISService.h"
#include "PrivateSessionBus.h"

#include <gmock/gmock.h>

#include <QCoreApplication>

namespace tambrel {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Matcher;
using enum MediaPlayerStatus;

const QString name = "org.mpris.MediaPlayer2.tambrel";
const QString player = "org.mpris.MediaPlayer2.Player";

/// The service on a bus of its own, before a player that writes down what it is told.
class MPRISServiceTest : public ::testing::Test {
protected:
    [[nodiscard]] MediaPlayerControls controls() {
        const auto noting = [this](const char* word) { return [this, word] { calls.emplace_back(word); }; };
        return {.playPause = noting("playPause"),
                .stop = noting("stop"),
                .seek = [this](auto place) { calls.push_back("seek " + std::to_string(place.count())); },
                .position = [this] { return position; },
                .open =
                    [this](const QUrl& url) {
                        calls.push_back("open " + url.toString(QUrl::FullyEncoded).toStdString());
                        return !url.path().endsWith(".txt");
                    },
                .raise = noting("raise"),
                .quit = noting("quit")};
    }

    [[nodiscard]] static MediaPlayerSong song(std::uint64_t number) {
        return {number, "Étude \xEF\xBF\xBD", "file:///tmp/%C3%89tude%20%FF.mid", 10s};
    }

    PrivateSessionBus bus;
    std::vector<std::string> calls;
    std::chrono::microseconds position = 4s;
    MPRISService service{"software.kestrune.tambrel", controls(), {}, bus.connect()};
};

TEST_F(MPRISServiceTest, DoesWhatIsAskedAndNoMore) {
    for (const char* offset : {"int64 1", "int64 -1"})
        EXPECT_EQ(bus.callPlayer(player + ".Seek", {offset}).errors, "");
    EXPECT_THAT(calls, IsEmpty()) << "there is no song";
    EXPECT_THAT(bus.callPlayer(player + ".PlayPause").errors, HasSubstr("There is no song."));
    EXPECT_THAT(calls, ElementsAre("playPause")) << "which is where it is logged";

    const QString thisSong = "/software/kestrune/tambrel/song/7";
    const struct {
        const char* title;
        MediaPlayerStatus status;
        const char* method;
        QStringList words;
        const char* does;
    } rows[] = {
        {"Play when stopped", stopped, "Play", {}, "playPause"},
        {"Play when playing", playing, "Play", {}, ""},
        {"Pause when playing", playing, "Pause", {}, "playPause"},
        {"Pause when paused", paused, "Pause", {}, ""},
        {"PlayPause", playing, "PlayPause", {}, "playPause"},
        {"Next", playing, "Next", {}, ""},
        {"Previous", playing, "Previous", {}, ""},
        {"on", playing, "Seek", {"int64 2500000"}, "seek 6500000"},
        {"to the end", playing, "Seek", {"int64 6000000"}, "seek 10000000"},
        {"beyond the end", playing, "Seek", {"int64 6000001"}, ""},
        {"as far as numbers go", playing, "Seek", {"int64 9223372036854775807"}, ""},
        {"back as far as numbers go", stopped, "Seek", {"int64 -9223372036854775808"}, "seek 0"},
        {"to a place", stopped, "SetPosition", {thisSong, "int64 10000000"}, "seek 10000000"},
        {"to a place after the end", playing, "SetPosition", {thisSong, "int64 10000001"}, ""},
        {"to a place before the start", playing, "SetPosition", {thisSong, "int64 -1"}, ""},
        {"in a song that is gone", playing, "SetPosition", {thisSong + "0", "int64 1"}, ""},
        {"a file", paused, "OpenUri", {"'file:///a%20b%25%FF.mid'"}, "open file:///a%20b%25%FF.mid"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        service.setState({.status = row.status, .song = song(7)});
        calls.clear();
        EXPECT_EQ(bus.callPlayer(player + '.' + row.method, row.words).errors, "");
        if (*row.does == '\0')
            EXPECT_THAT(calls, IsEmpty());
        else
            EXPECT_THAT(calls, ElementsAre(row.does));
    }
    EXPECT_THAT(bus.callPlayer(player + ".OpenUri", {"'file:///a.txt'"}).errors, HasSubstr("NotSupported"));
}

TEST_F(MPRISServiceTest, ShowsWhatDoesNotChange) {
    const auto properties = [this](const QString& interface) {
        return bus.callPlayer("org.freedesktop.DBus.Properties.GetAll", {interface}).output;
    };
    EXPECT_EQ(properties("org.mpris.MediaPlayer2"),
              "({'CanQuit': <true>, 'CanRaise': <true>, 'CanSetFullscreen': <false>, "
              "'DesktopEntry': <'software.kestrune.tambrel'>, 'Fullscreen': <false>, "
              "'HasTrackList': <false>, 'Identity': <'Tambrel'>, 'SupportedMimeTypes': <['audio/midi', "
              "'audio/x-midi', 'audio/x-midi2-clip']>, 'SupportedUriSchemes': <['file']>},)");
    EXPECT_EQ(properties(player),
              "({'CanControl': <true>, 'CanGoNext': <false>, 'CanGoPrevious': <false>, 'CanPause': <false>, "
              "'CanPlay': <false>, 'CanSeek': <false>, 'LoopStatus': <'None'>, 'MaximumRate': <1.0>, "
              "'Metadata': <@a{sv} {}>, 'MinimumRate': <1.0>, 'PlaybackStatus': <'Stopped'>, "
              "'Position': <int64 0>, 'Rate': <1.0>, 'Shuffle': <false>, 'Volume': <1.0>},)");
}

TEST_F(MPRISServiceTest, AnnouncesWhatHasChangedOnceItIsOver) {
    const auto metadata = [](const std::string& number) {
        return "'Metadata': <{'mpris:length': <int64 10000000>, "
               "'mpris:trackid': <objectpath '/software/kestrune/tambrel/song/" +
               number +
               "'>, 'xesam:title': <'Étude \xEF\xBF\xBD'>, "
               "'xesam:url': <'file:///tmp/%C3%89tude%20%FF.mid'>}>";
    };
    const struct {
        const char* title;
        std::vector<MediaPlayerState> states;
        std::string changed; ///< Empty when nothing has.
    } rows[] = {
        {"a song is loaded and played",
         {{stopped, song(1)}, {playing, song(1)}},
         "{'CanPause': <true>, 'CanPlay': <true>, 'CanSeek': <true>, " + metadata("1") +
             ", 'PlaybackStatus': <'Playing'>}"},
        {"nothing is new in the end", {{stopped, song(1)}, {stopped, {}}, {playing, song(1)}}, ""},
        {"another song comes", {{playing, song(2)}}, "{" + metadata("2") + "}"},
    };
    BusMonitor monitor(bus, name);
    position = 0s;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        for (const auto& state : row.states)
            service.setState(state);
        position += 1s;
        service.positionJumped(); // Said last.
        const std::string last = "Seeked (int64 " + std::to_string(position.count()) + ",)";
        std::vector<Matcher<std::string>> expected{HasSubstr(last)};
        if (!row.changed.empty())
            expected.insert(expected.begin(),
                            HasSubstr("PropertiesChanged ('" + player.toStdString() + "', " + row.changed));
        EXPECT_THAT(monitor.until(last), ElementsAreArray(expected));
    }
}

TEST_F(MPRISServiceTest, TakesANameOfItsOwnBesideAnotherPlayer) {
    const QString own = "tambrel.instance" + QString::number(QCoreApplication::applicationPid());
    const auto names = [&] { return bus.run({"playerctl", "--list-all"}).output; };
    {
        const MPRISService second("software.kestrune.tambrel", controls(), {playing, song(1)}, bus.connect());
        EXPECT_THAT(names(), HasSubstr(own.toStdString()));
        EXPECT_EQ(bus.run({"playerctl", "--player", own, "status"}).output, "Playing");
    }
    EXPECT_EQ(names(), "tambrel") << "when it is gone";
}

} // namespace
} // namespace tambrel
