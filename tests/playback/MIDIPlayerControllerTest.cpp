#include "MIDIPlayerController.h"

#include "FakePlayer.h"
#include "RecordedLog.h"

#include <gmock/gmock.h>

#include <QElapsedTimer>
#include <QTest>

#include <limits>
#include <sstream>
#include <stdexcept>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

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
    [[nodiscard]] std::vector<std::string> lines() {
        auto entries = recorded.taken();
        const std::string prefix = "MIDIPlayerController.";
        for (std::string& entry : entries)
            if (const auto found = entry.find(prefix); found != std::string::npos)
                entry.erase(found, prefix.size());
        return entries;
    }

    void forget() {
        static_cast<void>(recorded.taken());
        events.clear();
        script.calls.clear();
    }

    /// Brings a fresh controller to the mode, with or without a song of 10 seconds at `position`.
    void enter(PlaybackMode mode, bool loaded = true, double position = 4) {
        controller.unload();
        script.duration = 10;
        if (loaded)
            controller.load({});
        if (mode != PlaybackMode::idle)
            controller.play();
        if (mode == PlaybackMode::paused)
            controller.pause();
        script.position = position;
        forget();
    }

    RecordedLog recorded;
    PlayerScript script;
    std::vector<std::string> events;
    MIDIPlayerController controller{script.factory(), recorded.log};
};

const auto stopsTimer = "Stopping playback timer | stopTimer";
const auto startsTimer = "Starting playback timer | startTimer";
const auto resets = "Resetting AVMIDIPlayer before load | load(data:position:modeAfterLoad:)";
const auto loads = "Loading MIDI playback data | load(data:)";

TEST_F(MIDIPlayerControllerTest, CarriesOutEveryCommandInEveryMode) {
    using Controller = MIDIPlayerController;
    using Texts = std::vector<std::string>;
    constexpr auto idle = PlaybackMode::idle;
    constexpr auto playing = PlaybackMode::playing;
    constexpr auto paused = PlaybackMode::paused;
    const auto seekTo = [](double seconds) { return [seconds](Controller& c) { c.seek(seconds); }; };
    const auto play = [](Controller& c) { c.play(); };
    const auto pause = [](Controller& c) { c.pause(); };
    const auto toggle = [](Controller& c) { c.togglePlayPause(); };
    const auto stop = [](Controller& c) { c.stop(); };
    const auto rtz = [](Controller& c) { c.rtz(); };
    const auto unload = [](Controller& c) { c.unload(); };
    const auto reload = [](Controller& c) { c.reloadForPlayback({}, 99); };
    const std::string starts = "Starting playback | play";
    const std::string pauses = "Pausing playback | pause";
    const std::string notActive = "Pause ignored because playback is not active | pause";
    const std::string stops = "Stopping playback and returning to zero | stop";
    const std::string returns = "Returning playhead to zero | rtz";
    const std::string clears = "Clearing MIDI playback data | unload";
    const Texts reloadLines{"Reloading MIDI playback data at current position | "
                            "reloadForPlayback(data:position:)",
                            resets, stopsTimer,
                            "AVMIDIPlayer loaded; duration 10.0 | load(data:position:modeAfterLoad:)"};

    const struct {
        const char* name;
        PlaybackMode from;
        bool loaded;
        double position;
        std::function<void(Controller&)> command;
        PlaybackMode to;
        double newPosition;
        Texts events;
        Texts calls;
        Texts lines;
    } rows[] = {
        // clang-format off
        {"play without a song", idle, false, 0, play, idle, 0, {}, {},
         {"Play ignored because no MIDI file is loaded | play"}},
        {"pause without a song", idle, false, 0, pause, idle, 0, {}, {}, {notActive}},
        {"stop without a song", idle, false, 0, stop, idle, 0, {}, {},
         {"Stop ignored because no MIDI file is loaded | stop"}},
        {"rtz without a song", idle, false, 0, rtz, idle, 0, {}, {},
         {"RTZ ignored because no MIDI file is loaded | rtz"}},
        {"seek without a song", idle, false, 0, seekTo(1), idle, 0, {}, {},
         {"Seek ignored because no MIDI file is loaded | seek(to:)"}},
        {"unload without a song", idle, false, 0, unload, idle, 0,
         {"mode idle", "loaded 0", "progress 0 of 0"}, {}, {clears}},

        {"play in the middle", idle, true, 4, play, playing, 4, {"mode playing"}, {"play"},
         {starts, startsTimer}},
        {"play after a pause resumes", paused, true, 4, play, playing, 4, {"mode playing"}, {"play"},
         {starts, startsTimer}},
        {"play just short of the end", idle, true, 9.97, play, playing, 9.97, {"mode playing"}, {"play"},
         {starts, startsTimer}},
        {"play within the tolerance of the end restarts", idle, true, 9.99, play, playing, 0,
         {"mode playing"}, {"play"}, {starts, startsTimer}},
        {"play while playing repeats itself", playing, true, 4, play, playing, 4, {"mode playing"}, {"play"},
         {starts, startsTimer, stopsTimer}},

        {"pause while playing keeps the place", playing, true, 4, pause, paused, 4,
         {"mode paused", "progress 4 of 10"}, {"stop"}, {pauses, stopsTimer}},
        {"pause while idle", idle, true, 4, pause, idle, 4, {}, {}, {notActive}},
        {"pause while paused", paused, true, 4, pause, paused, 4, {}, {}, {notActive}},

        {"toggle while idle", idle, true, 4, toggle, playing, 4, {"mode playing"}, {"play"},
         {"Toggling playback from idle | togglePlayPause", starts, startsTimer}},
        {"toggle while playing", playing, true, 4, toggle, paused, 4, {"mode paused", "progress 4 of 10"},
         {"stop"}, {"Toggling playback from playing | togglePlayPause", pauses, stopsTimer}},
        {"toggle while paused", paused, true, 4, toggle, playing, 4, {"mode playing"}, {"play"},
         {"Toggling playback from paused | togglePlayPause", starts, startsTimer}},

        {"stop while playing", playing, true, 4, stop, idle, 0, {"mode idle", "progress 0 of 10"}, {"stop"},
         {stops, stopsTimer}},
        {"stop while idle reports again", idle, true, 4, stop, idle, 0, {"mode idle", "progress 0 of 10"},
         {"stop"}, {stops}},

        {"rtz while playing plays on", playing, true, 4, rtz, playing, 0, {"progress 0 of 10"}, {}, {returns}},
        {"rtz while paused", paused, true, 4, rtz, paused, 0, {"progress 0 of 10"}, {}, {returns}},

        {"seek while playing plays on", playing, true, 4, seekTo(7.5), playing, 7.5, {"progress 7.5 of 10"},
         {}, {"Seeking to 7.5 seconds | seek(to:)"}},
        {"seek before the start", idle, true, 4, seekTo(-3), idle, 0, {"progress 0 of 10"}, {},
         {"Seeking to -3.0 seconds | seek(to:)"}},
        {"seek past the end", paused, true, 4, seekTo(12.5), paused, 10, {"progress 10 of 10"}, {},
         {"Seeking to 12.5 seconds | seek(to:)"}},
        {"seek to no number", idle, true, 4, seekTo(notANumber), idle, 0, {"progress 0 of 10"}, {},
         {"Seeking to nan seconds | seek(to:)"}},

        {"reload while playing ends idle and clamped", playing, true, 4, reload, idle, 10,
         {"mode idle", "loaded 10", "progress 10 of 10"}, {"stop", "prepare"}, reloadLines},
        {"unload while playing", playing, true, 4, unload, idle, 0,
         {"mode idle", "loaded 0", "progress 0 of 0"}, {"stop"}, {clears, stopsTimer}},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        enter(row.from, row.loaded, row.position);
        row.command(controller);
        EXPECT_EQ(controller.mode(), row.to);
        EXPECT_EQ(controller.position(), row.newPosition);
        EXPECT_EQ(events, row.events);
        EXPECT_EQ(script.calls, row.calls);
        EXPECT_EQ(lines(), row.lines);
    }
}

TEST_F(MIDIPlayerControllerTest, LoadsASongIdleAtZeroAndLogsItsDuration) {
    script.duration = 93.4;
    controller.load({});
    EXPECT_THAT(events, ElementsAre("mode idle", "loaded 93.4", "progress 0 of 93.4"));
    EXPECT_THAT(lines(), ElementsAre(loads, resets,
                                     "AVMIDIPlayer loaded; duration 93.4 | "
                                     "load(data:position:modeAfterLoad:)"));
    controller.load({});
    EXPECT_EQ(script.alive, 1) << "the old player is released";
    controller.unload();
    EXPECT_EQ(script.alive, 0);
    EXPECT_EQ(controller.duration(), 0);
}

TEST_F(MIDIPlayerControllerTest, KeepsTheOldSongStoppedWhenALoadFails) {
    enter(PlaybackMode::playing);
    script.refusal = "no bank";
    EXPECT_THROW(controller.load({}), std::runtime_error);
    EXPECT_EQ(controller.mode(), PlaybackMode::playing);
    EXPECT_EQ(controller.duration(), 10);
    EXPECT_EQ(controller.position(), 4);
    EXPECT_THAT(script.calls, ElementsAre("stop"));
    EXPECT_THAT(events, IsEmpty());
    EXPECT_THAT(lines(), ElementsAre(loads, resets, stopsTimer));
}

TEST_F(MIDIPlayerControllerTest, AlwaysRestartsASongWithoutLength) {
    script.duration = 0;
    controller.load({});
    script.position = 5;
    controller.play();
    EXPECT_EQ(controller.position(), 0);
}

TEST_F(MIDIPlayerControllerTest, ReportsProgressTwentyTimesASecondAndLogsNothingMeanwhile) {
    enter(PlaybackMode::playing);
    QElapsedTimer elapsed;
    elapsed.start();
    ASSERT_TRUE(QTest::qWaitFor([this] { return events.size() >= 4; }, 10'000));
    EXPECT_GE(elapsed.elapsed(), 150);
    EXPECT_LT(elapsed.elapsed(), 1000);
    EXPECT_EQ(events.front(), "progress 4 of 10");
    EXPECT_THAT(lines(), IsEmpty());
}

// A handle that is dragged past the end and back, faster than the timer looks.
TEST_F(MIDIPlayerControllerTest, EndsPlaybackBeforeTheHandleLeavesTheEnd) {
    enter(PlaybackMode::playing, true, 10);
    script.playing = false;
    controller.seek(4);
    EXPECT_THAT(events, ElementsAre("mode idle", "progress 0 of 10", "progress 4 of 10"));
}

TEST_F(MIDIPlayerControllerTest, EndsPlaybackOnlyWhenThePlayerHasStoppedAtTheEnd) {
    const struct {
        const char* name;
        double position;
        bool playing;
        bool ends;
    } rows[] = {
        {"still sounding past the end", 10, true, false},
        {"stopped by itself short of the end", 9.97, false, false},
        {"stopped within the tolerance", 9.985, false, true},
        {"stopped past the end", 10.5, false, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        enter(PlaybackMode::playing, true, row.position);
        script.playing = row.playing;
        // Two ticks when playback goes on, the end's own report otherwise.
        ASSERT_TRUE(QTest::qWaitFor([this] { return events.size() >= 2; }, 10'000));
        const std::string tick = "progress " + number(row.position) + " of 10";
        if (row.ends) {
            EXPECT_THAT(events, ElementsAre(tick, "mode idle", "progress 0 of 10"));
            EXPECT_THAT(lines(),
                        ElementsAre("Playback reached end of file | finishPlaybackIfNeeded", stopsTimer));
            EXPECT_EQ(controller.position(), 0);
        } else {
            EXPECT_THAT(events, ElementsAre(tick, tick));
            EXPECT_THAT(lines(), IsEmpty());
            EXPECT_EQ(controller.mode(), PlaybackMode::playing);
        }
    }
}

} // namespace
} // namespace tambrel
