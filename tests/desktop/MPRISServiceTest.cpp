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
const QString program = "org.mpris.MediaPlayer2";
const QString player = "org.mpris.MediaPlayer2.Player";
const std::string propertiesChanged = "PropertiesChanged ('org.mpris.MediaPlayer2.Player', ";

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
    const QString thisSong = "/software/kestrune/tambrel/song/7";
    const struct {
        const char* title;
        MediaPlayerStatus status;
        QString method;
        QStringList words;
        const char* does;
        bool isRefused = false;
    } rows[] = {
        {"Play when stopped", stopped, player + ".Play", {}, "playPause"},
        {"Play when paused", paused, player + ".Play", {}, "playPause"},
        {"Play when playing", playing, player + ".Play", {}, ""},
        {"Pause when playing", playing, player + ".Pause", {}, "playPause"},
        {"Pause when paused", paused, player + ".Pause", {}, ""},
        {"Pause when stopped", stopped, player + ".Pause", {}, ""},
        {"PlayPause", playing, player + ".PlayPause", {}, "playPause"},
        {"Stop", playing, player + ".Stop", {}, "stop"},
        {"Next", playing, player + ".Next", {}, ""},
        {"Previous", playing, player + ".Previous", {}, ""},
        {"on", playing, player + ".Seek", {"int64 2500000"}, "seek 6500000"},
        {"to the end", playing, player + ".Seek", {"int64 6000000"}, "seek 10000000"},
        {"beyond the end", playing, player + ".Seek", {"int64 6000001"}, ""},
        {"as far as numbers go", playing, player + ".Seek", {"int64 9223372036854775807"}, ""},
        {"back", paused, player + ".Seek", {"int64 -1500000"}, "seek 2500000"},
        {"back beyond the beginning", stopped, player + ".Seek", {"int64 -4000001"}, "seek 0"},
        {"back as far as numbers go", stopped, player + ".Seek", {"int64 -9223372036854775808"}, "seek 0"},
        {"to a place", stopped, player + ".SetPosition", {thisSong, "int64 10000000"}, "seek 10000000"},
        {"to a place after the end", playing, player + ".SetPosition", {thisSong, "int64 10000001"}, ""},
        {"to a place before the start", playing, player + ".SetPosition", {thisSong, "int64 -1"}, ""},
        {"in a song that is gone", playing, player + ".SetPosition", {thisSong + "0", "int64 1"}, ""},
        {"a file",
         paused,
         player + ".OpenUri",
         {"'file:///a%20b%25%FF.mid'"},
         "open file:///a%20b%25%FF.mid"},
        {"a file that cannot be opened",
         paused,
         player + ".OpenUri",
         {"'file:///a.txt'"},
         "open file:///a.txt",
         true},
        {"Raise", stopped, program + ".Raise", {}, "raise"},
        {"Quit", stopped, program + ".Quit", {}, "quit"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        service.setState({.status = row.status, .song = song(7)});
        calls.clear();
        const auto outcome = bus.callPlayer(row.method, row.words);
        EXPECT_EQ(outcome.status, row.isRefused ? 1 : 0) << outcome.errors;
        EXPECT_THAT(outcome.errors, HasSubstr(row.isRefused ? "NotSupported" : ""));
        if (*row.does == '\0')
            EXPECT_THAT(calls, IsEmpty());
        else
            EXPECT_THAT(calls, ElementsAre(row.does));
    }
}

TEST_F(MPRISServiceTest, HasNothingToSeekInWithoutASong) {
    for (const char* offset : {"int64 1", "int64 -1"})
        EXPECT_EQ(bus.callPlayer(player + ".Seek", {offset}).status, 0);
    EXPECT_EQ(
        bus.callPlayer(player + ".SetPosition", {"/software/kestrune/tambrel/song/0", "int64 0"}).status, 0);
    EXPECT_THAT(calls, IsEmpty());
    EXPECT_THAT(bus.callPlayer(player + ".PlayPause").errors, HasSubstr("There is no song."));
    EXPECT_THAT(calls, ElementsAre("playPause")) << "which is where it is logged";
}

TEST_F(MPRISServiceTest, ShowsTheProgramAndItsSong) {
    const struct {
        QString interface;
        QString property;
        const char* without; // A song.
        const char* with;
    } rows[] = {
        {program, "Identity", "s \"Tambrel\"", nullptr},
        {program, "DesktopEntry", "s \"software.kestrune.tambrel\"", nullptr},
        {program, "SupportedUriSchemes", "as 1 \"file\"", nullptr},
        {program, "SupportedMimeTypes", "as 3 \"audio/midi\" \"audio/x-midi\" \"audio/x-midi2-clip\"",
         nullptr},
        {program, "HasTrackList", "b false", nullptr},
        {program, "CanRaise", "b true", nullptr},
        {program, "CanQuit", "b true", nullptr},
        {player, "PlaybackStatus", "s \"Stopped\"", "s \"Paused\""},
        {player, "Metadata", "a{sv} 0",
         "a{sv} 4 \"mpris:length\" x 10000000 \"mpris:trackid\" o \"/software/kestrune/tambrel/song/7\" "
         "\"xesam:title\" s \"\\303\\211tude \\357\\277\\275\" "
         "\"xesam:url\" s \"file:///tmp/%C3%89tude%20%FF.mid\""},
        {player, "Position", "x 0", "x 4000000"},
        {player, "CanPlay", "b false", "b true"},
        {player, "CanPause", "b false", "b true"},
        {player, "CanSeek", "b false", "b true"},
        {player, "CanControl", "b true", nullptr},
        {player, "CanGoNext", "b false", nullptr},
        {player, "CanGoPrevious", "b false", nullptr},
        {player, "LoopStatus", "s \"None\"", nullptr},
        {player, "Shuffle", "b false", nullptr},
        {player, "Rate", "d 1", nullptr},
        {player, "MinimumRate", "d 1", nullptr},
        {player, "MaximumRate", "d 1", nullptr},
        {player, "Volume", "d 1", nullptr},
    };
    for (const bool isLoaded : {false, true}) {
        if (isLoaded)
            service.setState({.status = paused, .song = song(7)});
        for (const auto& row : rows) {
            SCOPED_TRACE(row.property.toStdString());
            const auto shown = bus.run({"busctl", "--user", "get-property", name, "/org/mpris/MediaPlayer2",
                                        row.interface, row.property});
            EXPECT_EQ(shown.output, isLoaded && row.with != nullptr ? row.with : row.without) << shown.errors;
        }
    }
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
        {"nothing is new", {{playing, song(1)}}, ""},
        {"nothing is new in the end", {{stopped, song(1)}, {stopped, {}}, {playing, song(1)}}, ""},
        {"it is paused", {{paused, song(1)}}, "{'PlaybackStatus': <'Paused'>}"},
        {"another song comes", {{paused, song(2)}}, "{" + metadata("2") + "}"},
        {"it goes",
         {{stopped, song(2)}, {stopped, {}}},
         "{'CanPause': <false>, 'CanPlay': <false>, 'CanSeek': <false>, 'Metadata': <@a{sv} {}>, "
         "'PlaybackStatus': <'Stopped'>}"},
    };
    BusMonitor monitor(bus, name);
    position = 0s;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        for (const auto& state : row.states)
            service.setState(state);
        position += 1s;
        service.positionJumped(); // Said last.
        const auto place = row.states.back().song ? position.count() : 0;
        const std::string last = "Seeked (int64 " + std::to_string(place) + ",)";
        const auto lines = monitor.until(last);
        std::vector<Matcher<std::string>> expected{HasSubstr(last)};
        if (!row.changed.empty())
            expected.insert(expected.begin(), HasSubstr(propertiesChanged + row.changed));
        EXPECT_THAT(lines, ElementsAreArray(expected));
    }
}

TEST_F(MPRISServiceTest, TakesANameOfItsOwnBesideAnotherPlayer) {
    const QString own = name + ".instance" + QString::number(QCoreApplication::applicationPid());
    const auto names = [&] { return bus.run({"playerctl", "--list-all"}).output; };
    {
        const MPRISService second("software.kestrune.tambrel", controls(), {playing, song(1)}, bus.connect());
        EXPECT_THAT(names(), HasSubstr(own.mid(own.indexOf("tambrel.")).toStdString()));
        EXPECT_EQ(bus.run({"playerctl", "--player", own.mid(own.indexOf("tambrel")), "status"}).output,
                  "Playing");
    }
    EXPECT_EQ(names(), "tambrel") << "when it is gone";
}

TEST_F(MPRISServiceTest, DoesWithoutABus) {
    ::testing::internal::CaptureStderr();
    bus.end();
    service.setState({playing, song(1)});
    QCoreApplication::processEvents();
    MPRISService unheard("software.kestrune.tambrel", controls(), {}, QDBusConnection("none"));
    unheard.setState({playing, song(1)});
    unheard.positionJumped();
    QCoreApplication::processEvents();
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

} // namespace
} // namespace tambrel
