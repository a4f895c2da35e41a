#include "BlackLEDActivityView.h"
#include "FakePlayer.h"
#include "MIDIPlayerController.h"
#include "MIDITrackBarsView.h"
#include "RecordedLog.h"
#include "RetroButton.h"
#include "RetroLabel.h"
#include "RetroTimelineView.h"
#include "SMFBuilder.h"
#include "SevenSegmentCounterView.h"
#include "TambrelPlaybackState.h"
#include "TambrelTransportCoordinator.h"
#include "TransportModel.h"

#include <gmock/gmock.h>

#include <QTest>
#include <QTimerEvent>

#include <limits>
#include <optional>
#include <random>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using testing::smfBytes;
using testing::TrackBuilder;
using Text = std::string;

/// Waits for a timer to fire, and remembers it.
class TimerFinder : public QObject {
public:
    TimerFinder() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Timer && qobject_cast<QTimer*>(object) != nullptr)
            timer = qobject_cast<QTimer*>(object);
        return false;
    }
    QTimer* timer = nullptr;
};

/// The player controller and the transport coordinator over a player that does what the test says.
class TransportTest : public ::testing::Test {
protected:
    TransportTest() {
        coordinator.emplace(TransportControls{.player = player,
                                              .playbackState = state,
                                              .counterView = counter,
                                              .progressLabel = progress,
                                              .statusLabel = status,
                                              .timeline = timeline,
                                              .trackBarsView = bars,
                                              .activityView = activity,
                                              .playPauseButton = playPause,
                                              .loudnessButton = loudness,
                                              .beep = [this] { ++beeps; }},
                            recorded.log);
        coordinator->wirePlayer();
        bars.setTrackCount(1);
    }

    /// Records log lines, callbacks and calls in order.
    void listen() {
        script.onCall = [this](const Text& call) { say("player: " + call); };
        player.onProgress = [this, then = player.onProgress](double position, double duration) {
            say("progress " + std::to_string(position) + " of " + std::to_string(duration));
            then(position, duration);
        };
        player.onLoaded = [this, then = player.onLoaded](double duration) {
            say("loaded " + std::to_string(duration));
            then(duration);
        };
        player.onStateChange = [this, then = player.onStateChange](PlaybackMode mode) {
            say("mode " + Text(text(mode)) + " at " + std::to_string(player.position()));
            then(mode);
        };
        player.onChange = [this](PlaybackChange change) {
            say(change == PlaybackChange::mode ? "change of mode" : "change of position");
        };
        takeLines();
        said.clear();
    }
    void takeLines() { std::ranges::move(recorded.taken(), std::back_inserter(said)); }
    void say(const Text& text) {
        takeLines();
        said.push_back(text);
    }
    std::unique_ptr<MIDIFilePlayer> makePlayer(const PlayableSong& made) {
        say(made.data.view().data() == song.view().data() ? "a player for the song"
                                                          : "a player for the loud song");
        if (script.refusal.empty())
            script.duration = nextDuration;
        return script.factory()(made);
    }
    void load() {
        state.replaceLoadedMIDI(song);
        coordinator->updateLoudnessButton();
        player.load(song);
    }
    void unload() {
        player.unload();
        state.reset();
        coordinator->updateLoudnessButton();
    }
    QTimer* findTimer() {
        player.play();
        const TimerFinder finder;
        EXPECT_TRUE(QTest::qWaitFor([&] { return finder.timer != nullptr; }, 60'000));
        return finder.timer;
    }

    [[nodiscard]] Text shown() const {
        QStringList all{playPause.text(), activity.isAnimating() ? "moves" : "rests",
                        loudness.text(),  loudness.isEnabled() ? "enabled" : "disabled",
                        counter.text(),   progress.text(),
                        status.text()};
        for (const double number : {timeline.position(), timeline.duration(), bars.progress()})
            all << QString::number(number, 'f', 6);
        return (all << QString::number(beeps)).join(", ").toStdString();
    }
    static Text shown(const TransportModel& m) {
        const bool plays = m.mode == PlaybackMode::playing;
        return m.playTitle + (plays ? ", moves, " : ", rests, ") +
               (m.isLoudnessOn ? "Loudness On" : "Loudness") + (plays ? ", disabled, " : ", enabled, ") +
               m.clock + ", PROGRESS " + m.clock + ", " + m.status + ", " + m.shownPosition + ", " +
               m.shownDuration + ", " + m.progress + ", " + std::to_string(m.beeps);
    }

    RecordedLog recorded;
    PlayerScript script;
    MIDIPlayerController player{[this](const PlayableSong& made) { return makePlayer(made); }, recorded.log};
    TambrelPlaybackState state{recorded.log};
    SevenSegmentCounterView counter;
    RetroLabel progress{"PROGRESS 00:00:00.00"}, status{""};
    RetroTimelineView timeline;
    MIDITrackBarsView bars;
    BlackLEDActivityView activity;
    RetroButton playPause{"Play", {}}, loudness{"Loudness", {}};
    int beeps = 0;
    double nextDuration = 10; ///< Of the song that is loaded next.
    std::vector<Text> said;
    std::optional<TambrelTransportCoordinator> coordinator;
    const MIDIData song{smfBytes(0, 480, {TrackBuilder().noteOn(0, 9, 36, 64).noteOff(480, 9, 36)})};
};

TEST_F(TransportTest, DoesAndSaysWhatTheModelDoesWhateverHappens) {
    load();
    QTimer* const timer = findTimer();
    EXPECT_EQ(timer->interval(), 50);
    EXPECT_EQ(timer->timerType(), Qt::PreciseTimer);
    unload();
    listen();

    constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
    const TransportModel::Number places[] = {{-3, "-3.0"},     {0, "0.0"},       {7.5, "7.5"},
                                             {9.97, "9.97"},   {9.985, "9.985"}, {93.38, "93.38"},
                                             {1000, "1000.0"}, {noNumber, "nan"}};
    const TransportModel::Number durations[] = {
        {10, "10.0"}, {10, "10.0"}, {93.4, "93.4"}, {0.01, "0.01"}, {0, "0.0"}};
    std::minstd_rand hand{12};
    const auto oneOf = [&](const auto& choices) { return choices[(hand() >> 8) % std::size(choices)]; };
    TransportModel model;
    const auto orRefuse = [&](auto act) {
        try {
            act();
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "no bank");
            EXPECT_TRUE(model.isRefused);
        }
    };
    const auto runOut = [&](double place) {
        if (model.isSounding)
            script.position = model.position = place;
        script.playing = model.isSounding = false;
    };
    const auto seek = [&] {
        const auto place = oneOf(places);
        player.seek(place.value);
        model.seek(place);
    };
    const auto tick = [&] {
        QTimerEvent due(timer->timerId());
        if (timer->isActive())
            QCoreApplication::sendEvent(timer, &due);
        model.tick();
    };
    const std::pair<Text, std::function<void()>> commands[] = {
        // clang-format off
        {"load", [&] { orRefuse([&] { load(); }); model.load(); }},
        {"unload", [&] { unload(); model.unload(); }},
        {"play", [&] { player.play(); model.play(); }},
        {"pause", [&] { player.pause(); model.pause(); }},
        {"toggle", [&] { player.togglePlayPause(); model.toggle(); }},
        {"stop", [&] { player.stop(); model.stop(); }},
        {"rtz", [&] { player.rtz(); model.rtz(); }},
        {"seek", seek},
        {"seek again", seek},
        {"Play/Pause", [&] { coordinator->playPause(); model.playPauseButton(); }},
        {"Play/Pause again", [&] { coordinator->playPause(); model.playPauseButton(); }},
        {"Stop", [&] { coordinator->stop(); model.stopButton(); }},
        {"RTZ", [&] { coordinator->rtz(); model.rtzButton(); }},
        {"Loudness", [&] { coordinator->toggleLoudness(); coordinator->updateLoudnessButton(); model.toggleLoudness(); }},
        {"the timer fires", tick},
        {"the timer fires again", tick},
        {"time passes", [&] { if (model.isSounding) script.position = model.position += 0.25; }},
        {"the player ends", [&] { runOut(model.duration.value); }},
        {"the player ends within the tolerance", [&] { runOut(std::max(0.0, model.duration.value - 0.02)); }},
        {"the player stops short of the end", [&] { runOut(model.position); }},
        // clang-format on
    };
    Text history;
    int ends = 0;
    for (int step = 0; step < 8000 && !HasFailure(); ++step) {
        const auto& [name, act] = commands[hand() / 256 % std::size(commands)];
        history.erase(0, history.size() > 200 ? history.find(", ") + 2 : 0);
        history.append(", ").append(name);
        SCOPED_TRACE(history);
        model.isRefused = hand() / 256 % 5 == 0;
        script.refusal = model.isRefused ? "no bank" : "";
        model.nextDuration = oneOf(durations);
        nextDuration = model.nextDuration.value;
        act();
        takeLines();
        ASSERT_EQ(said, model.said);
        ends += static_cast<int>(std::ranges::count(said, "Playback reached end of file | "
                                                          "MIDIPlayerController.finishPlaybackIfNeeded"));
        said.clear();
        model.said.clear();
        EXPECT_EQ(player.mode(), model.mode);
        EXPECT_EQ(player.position(), model.position);
        EXPECT_EQ(player.duration(), model.duration.value);
        EXPECT_EQ(script.playing, model.isSounding);
        EXPECT_EQ(timer->isActive(), model.isPolling);
        EXPECT_EQ(script.alive, model.hasPlayer ? 1 : 0);
        EXPECT_EQ(shown(), shown(model));
    }
    EXPECT_GT(ends, 30) << "or too little of what matters has happened";
}

TEST_F(TransportTest, LeavesTheControlsAloneOnceItIsGone) {
    coordinator.reset();
    static_cast<void>(recorded.taken());
    const Text before = shown();
    player.onLoaded(62.5);
    player.onProgress(1, 2);
    player.onStateChange(PlaybackMode::paused);
    EXPECT_EQ(shown(), before);
    EXPECT_THAT(recorded.taken(), ElementsAre("Loaded MIDI duration 00:01:02.50 | "
                                              "TambrelTransportCoordinator.player.onLoaded"));
}

} // namespace
} // namespace tambrel
