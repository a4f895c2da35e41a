#include "MIDIPlayerController.h"

#include "FakePlayer.h"
#include "RecordedLog.h"

#include <gmock/gmock.h>

#include <QElapsedTimer>
#include <QTest>

#include <limits>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <tuple>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Texts = std::vector<std::string>;

const std::string stopsTimer = "Stopping playback timer | stopTimer";
const std::string startsTimer = "Starting playback timer | startTimer";
const std::string resets = "Resetting AVMIDIPlayer before load | load(data:position:modeAfterLoad:)";

class MIDIPlayerControllerTest : public ::testing::Test {
protected:
    MIDIPlayerControllerTest() {
        controller.onStateChange = [this](PlaybackMode mode) {
            events.push_back(std::string("mode ").append(text(mode)));
        };
        controller.onLoaded = [this](double duration) { events.push_back("loaded " + number(duration)); };
        controller.onProgress = [this](double position, double duration) {
            events.push_back("progress " + number(position) + " of " + number(duration));
        };
    }

    static std::string number(double value) {
        std::ostringstream out;
        out << value;
        return out.str();
    }

    /// What has been logged since the last call, without the class's name.
    [[nodiscard]] Texts lines() {
        auto entries = recorded.taken();
        const std::string name = "MIDIPlayerController.";
        for (std::string& entry : entries)
            entry.erase(entry.find(name), name.size());
        return entries;
    }

    /// Brings a fresh controller to the mode; with a song of 10 seconds when there is a position.
    void enter(PlaybackMode mode, std::optional<double> position) {
        controller.unload();
        script.duration = 10;
        if (position)
            controller.load({});
        if (mode != PlaybackMode::idle)
            controller.play();
        if (mode == PlaybackMode::paused)
            controller.pause();
        script.position = position.value_or(0);
        static_cast<void>(recorded.taken());
        events.clear();
        script.calls.clear();
    }

    RecordedLog recorded;
    PlayerScript script;
    Texts events;
    MIDIPlayerController controller{script.factory(), recorded.log};
};

TEST_F(MIDIPlayerControllerTest, CarriesOutEveryCommandInEveryMode) {
    using Controller = MIDIPlayerController;
    using enum PlaybackMode;
    const auto seekTo = [](double seconds) { return [seconds](Controller& c) { c.seek(seconds); }; };
    const auto play = &Controller::play;
    const auto pause = &Controller::pause;
    const auto toggle = &Controller::togglePlayPause;
    const auto stop = &Controller::stop;
    const auto rtz = &Controller::rtz;
    const auto unload = &Controller::unload;
    const auto reload = [](Controller& c) { c.reloadForPlayback({}, 99); };
    const std::string starts = "Starting playback | play";
    const std::string pauses = "Pausing playback | pause";
    const std::string noSong = " ignored because no MIDI file is loaded | ";
    const std::string notActive = "Pause ignored because playback is not active | pause";
    const std::string stops = "Stopping playback and returning to zero | stop";
    const std::string returns = "Returning playhead to zero | rtz";
    const std::string clears = "Clearing MIDI playback data | unload";

    // The mode before; the place in a song of 10 seconds, if there is one; what comes of the command: mode
    // and place, what is reported, what the player is told, what is logged.
    using Command = std::function<void(Controller&)>;
    const std::tuple<const char*, PlaybackMode, std::optional<double>, Command, Texts> rows[] = {
        // clang-format off
        {"play without a song", idle, {}, play, {"idle at 0", "Play" + noSong + "play"}},
        {"pause without a song", idle, {}, pause, {"idle at 0", notActive}},
        {"stop without a song", idle, {}, stop, {"idle at 0", "Stop" + noSong + "stop"}},
        {"rtz without a song", idle, {}, rtz, {"idle at 0", "RTZ" + noSong + "rtz"}},
        {"seek without a song", idle, {}, seekTo(1), {"idle at 0", "Seek" + noSong + "seek(to:)"}},
        {"unload without a song", idle, {}, unload,
         {"idle at 0", "mode idle", "loaded 0", "progress 0 of 0", clears}},

        {"play just short of the end", idle, 9.97, play,
         {"playing at 9.97", "mode playing", "player: play", starts, startsTimer}},
        {"play within the tolerance of the end restarts", idle, 9.99, play,
         {"playing at 0", "mode playing", "player: play", starts, startsTimer}},
        {"play while playing repeats itself", playing, 4, play,
         {"playing at 4", "mode playing", "player: play", starts, startsTimer, stopsTimer}},
        {"pause while paused", paused, 4, pause, {"paused at 4", notActive}},
        {"toggle while paused resumes", paused, 4, toggle,
         {"playing at 4", "mode playing", "player: play", "Toggling playback from paused | togglePlayPause",
          starts, startsTimer}},
        {"toggle while playing", playing, 4, toggle,
         {"paused at 4", "mode paused", "progress 4 of 10", "player: stop",
          "Toggling playback from playing | togglePlayPause", pauses, stopsTimer}},
        {"stop while playing", playing, 4, stop,
         {"idle at 0", "mode idle", "progress 0 of 10", "player: stop", stops, stopsTimer}},
        {"stop while idle reports again", idle, 4, stop,
         {"idle at 0", "mode idle", "progress 0 of 10", "player: stop", stops}},
        {"rtz while playing plays on", playing, 4, rtz, {"playing at 0", "progress 0 of 10", returns}},
        {"seek while playing plays on", playing, 4, seekTo(7.5),
         {"playing at 7.5", "progress 7.5 of 10", "Seeking to 7.5 seconds | seek(to:)"}},
        {"seek before the start", idle, 4, seekTo(-3),
         {"idle at 0", "progress 0 of 10", "Seeking to -3.0 seconds | seek(to:)"}},
        {"seek past the end", paused, 4, seekTo(12.5),
         {"paused at 10", "progress 10 of 10", "Seeking to 12.5 seconds | seek(to:)"}},
        {"seek to no number", idle, 4, seekTo(std::numeric_limits<double>::quiet_NaN()),
         {"idle at 0", "progress 0 of 10", "Seeking to nan seconds | seek(to:)"}},
        {"reload while playing ends idle and clamped", playing, 4, reload,
         {"idle at 10", "mode idle", "loaded 10", "progress 10 of 10", "player: stop", "player: prepare",
          "Reloading MIDI playback data at current position | reloadForPlayback(data:position:)", resets,
          stopsTimer, "AVMIDIPlayer loaded; duration 10.0 | load(data:position:modeAfterLoad:)"}},
        {"unload while playing", playing, 4, unload,
         {"idle at 0", "mode idle", "loaded 0", "progress 0 of 0", "player: stop", clears, stopsTimer}},
        // clang-format on
    };
    for (const auto& [name, from, position, command, expected] : rows) {
        SCOPED_TRACE(name);
        enter(from, position);
        command(controller);
        Texts outcome{std::string(text(controller.mode())) + " at " + number(controller.position())};
        std::ranges::move(events, std::back_inserter(outcome));
        for (const std::string& call : script.calls)
            outcome.push_back("player: " + call);
        std::ranges::move(lines(), std::back_inserter(outcome));
        EXPECT_EQ(outcome, expected);
    }
}

TEST_F(MIDIPlayerControllerTest, LoadsASongIdleAtZeroAndReleasesTheOldOne) {
    script.duration = 93.4;
    controller.load({});
    EXPECT_THAT(events, ElementsAre("mode idle", "loaded 93.4", "progress 0 of 93.4"));
    controller.load({});
    EXPECT_EQ(script.alive, 1);
    controller.unload();
    EXPECT_EQ(script.alive, 0);
    EXPECT_EQ(controller.duration(), 0);
}

TEST_F(MIDIPlayerControllerTest, KeepsTheOldSongStoppedWhenALoadFails) {
    enter(PlaybackMode::playing, 4);
    script.refusal = "no bank";
    EXPECT_THROW(controller.load({}), std::runtime_error);
    EXPECT_EQ(controller.mode(), PlaybackMode::playing);
    EXPECT_EQ(controller.duration(), 10);
    EXPECT_EQ(controller.position(), 4);
    EXPECT_THAT(script.calls, ElementsAre("stop"));
    EXPECT_THAT(events, IsEmpty());
    EXPECT_THAT(lines(), ElementsAre("Loading MIDI playback data | load(data:)", resets, stopsTimer));
}

TEST_F(MIDIPlayerControllerTest, ReportsProgressTwentyTimesASecond) {
    enter(PlaybackMode::playing, 4);
    QElapsedTimer elapsed;
    elapsed.start();
    ASSERT_TRUE(QTest::qWaitFor([this] { return events.size() >= 4; }, 10'000));
    EXPECT_GE(elapsed.elapsed(), 150);
    EXPECT_LT(elapsed.elapsed(), 1000);
}

// A handle that is dragged past the end and back, faster than the timer looks.
TEST_F(MIDIPlayerControllerTest, EndsPlaybackBeforeTheHandleLeavesTheEnd) {
    enter(PlaybackMode::playing, 10);
    script.playing = false;
    controller.seek(4);
    EXPECT_THAT(events, ElementsAre("mode idle", "progress 0 of 10", "progress 4 of 10"));
}

TEST_F(MIDIPlayerControllerTest, EndsPlaybackOnlyWhenThePlayerHasStoppedAtTheEnd) {
    const std::tuple<const char*, double, bool, bool> rows[] = {
        {"still sounding past the end", 10, true, false},
        {"stopped by itself short of the end", 9.97, false, false},
        {"stopped within the tolerance", 9.985, false, true},
    };
    for (const auto& [name, position, isSounding, ends] : rows) {
        SCOPED_TRACE(name);
        enter(PlaybackMode::playing, position);
        script.playing = isSounding;
        // Two ticks when playback goes on, the end's own report otherwise.
        ASSERT_TRUE(QTest::qWaitFor([this] { return events.size() >= 2; }, 10'000));
        const std::string tick = "progress " + number(position) + " of 10";
        EXPECT_EQ(events, ends ? Texts({tick, "mode idle", "progress 0 of 10"}) : Texts({tick, tick}));
        const std::string reached = "Playback reached end of file | finishPlaybackIfNeeded";
        EXPECT_EQ(lines(), ends ? Texts({reached, stopsTimer}) : Texts());
        EXPECT_EQ(controller.position(), ends ? 0 : position);
    }
}

} // namespace
} // namespace tambrel
