#include "TambrelTransportCoordinator.h"

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

#include <gmock/gmock.h>

#include <optional>

namespace tambrel {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::smfBytes;
using testing::TrackBuilder;

const std::string here = " | TambrelTransportCoordinator.";
const std::string preparing = here + "prepareSelectedPlaybackData";
const std::string play = "User Action: Clicked Play/Pause button or menu item" + here + "playPause";

class TambrelTransportCoordinatorTest : public ::testing::Test {
protected:
    TambrelTransportCoordinatorTest() {
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
    }

    void loadSong() {
        state.replaceLoadedMIDI(song);
        player.load(song);
        status.setText("Loaded");
        static_cast<void>(recorded.taken());
    }

    /// What has been logged, but for the player's own lines.
    [[nodiscard]] std::vector<std::string> lines() {
        auto taken = recorded.taken();
        std::erase_if(taken, [](const std::string& line) {
            return line.find("MIDIPlayerController.") != std::string::npos;
        });
        return taken;
    }

    static std::string modeLine(const std::string& mode) {
        return "Playback state changed to " + mode + here + "updatePlaybackMode";
    }

    RecordedLog recorded;
    PlayerScript script;
    MIDIPlayerController player{script.factory(), recorded.log};
    TambrelPlaybackState state{recorded.log};
    SevenSegmentCounterView counter;
    RetroLabel progress{""}, status{""};
    RetroTimelineView timeline{recorded.log};
    MIDITrackBarsView bars;
    BlackLEDActivityView activity;
    RetroButton playPause{"", {}}, loudness{"", {}};
    int beeps = 0;
    std::optional<TambrelTransportCoordinator> coordinator;
    const MIDIData song{smfBytes(0, 480, {TrackBuilder().noteOn(0, 9, 36, 64).noteOff(480, 9, 36)})};
};

TEST_F(TambrelTransportCoordinatorTest, LogsEveryCommandBeforeItIsCarriedOut) {
    EXPECT_THAT(lines(),
                ElementsAre("Connecting MIDI player callbacks to the interface" + here + "wirePlayer"));
    coordinator->playPause();
    EXPECT_THAT(lines(), ElementsAre(play, "Preparing selected playback data" + preparing,
                                     "No MIDI data is loaded for TambrelTransportCoordinator."
                                     "prepareSelectedPlaybackData | TambrelPlaybackState.selectedSnapshot"));
    loadSong();
    coordinator->playPause();
    EXPECT_THAT(lines(), ElementsAre(play, "Preparing selected playback data" + preparing,
                                     "Playback data already matches Loudness setting" + preparing,
                                     modeLine("playing")));
    coordinator->playPause();
    coordinator->rtz();
    coordinator->stop();
    EXPECT_THAT(lines(), ElementsAre(play, modeLine("paused"),
                                     "User Action: Clicked RTZ button or menu item" + here + "rtz",
                                     "User Action: Clicked Stop button or menu item" + here + "stop",
                                     modeLine("idle")));
}

TEST_F(TambrelTransportCoordinatorTest, ShowsNoProgressInASongOfNoLengthAndLogsNothing) {
    bars.setTrackCount(1);
    static_cast<void>(recorded.taken());
    player.onProgress(3, 0);
    EXPECT_EQ(bars.progress(), 0);
    EXPECT_THAT(recorded.taken(), IsEmpty());
}

TEST_F(TambrelTransportCoordinatorTest, LetsThePlayerOutliveIt) {
    coordinator.reset();
    playPause.setText("as it was");
    player.onLoaded(62.5);
    player.onProgress(1, 2);
    player.onStateChange(PlaybackMode::paused);
    EXPECT_EQ(timeline.duration(), 0);
    EXPECT_EQ(playPause.text(), "as it was");
}

TEST_F(TambrelTransportCoordinatorTest, SwapsTheSongForItsLoudVariantWhenPlaybackStarts) {
    loadSong();
    coordinator->playPause();
    coordinator->playPause();
    script.position = 4;
    coordinator->toggleLoudness();
    EXPECT_EQ(script.songs.size(), 1U) << "until Play";
    status.setText("something else");
    static_cast<void>(recorded.taken());

    coordinator->playPause();
    EXPECT_EQ(status.text(), "Loudness On");
    ASSERT_EQ(script.songs.size(), 2U);
    EXPECT_FALSE(script.songs.back().sharesBytesWith(song));
    EXPECT_EQ(player.mode(), PlaybackMode::playing);
    EXPECT_EQ(player.position(), 4);
    const std::string caller = "TambrelTransportCoordinator.prepareSelectedPlaybackData";
    EXPECT_THAT(lines(),
                ElementsAre(play, "Preparing selected playback data" + preparing,
                            "Generating loudness-processed MIDI data for " + caller +
                                " | TambrelPlaybackState.selectedSnapshot",
                            modeLine("idle"), "Loaded MIDI duration 00:00:10.00" + here + "player.onLoaded",
                            "Playback snapshot is now loud | TambrelPlaybackState.markPlaybackLoaded",
                            "Generating MIDI 2.0 clip companion for " + caller +
                                " | TambrelPlaybackState.prepareMIDI2ClipCompanion",
                            ::testing::StartsWith("MIDI 2.0 companion ready; bytes "),
                            "Reloaded playback data at 00:00:04.00" + preparing, modeLine("playing")));

    coordinator->stop();
    coordinator->toggleLoudness();
    status.setText("something else");
    coordinator->playPause();
    EXPECT_TRUE(script.songs.back().sharesBytesWith(song));
    EXPECT_EQ(status.text(), "Loaded");
    EXPECT_THAT(lines(),
                Contains("Playback snapshot is now original | TambrelPlaybackState.markPlaybackLoaded"));
}

TEST_F(TambrelTransportCoordinatorTest, ReloadsNothingWhenLoudnessIsBackWhereItWas) {
    loadSong();
    coordinator->toggleLoudness();
    coordinator->toggleLoudness();
    EXPECT_EQ(loudness.text(), "Loudness");
    EXPECT_EQ(status.text(), "Loaded");
    EXPECT_THAT(lines(), ElementsAre("User Action: Enabled Loudness" + here + "toggleLoudness",
                                     "User Action: Disabled Loudness" + here + "toggleLoudness"));
    coordinator->playPause();
    EXPECT_EQ(script.songs.size(), 1U);
}

TEST_F(TambrelTransportCoordinatorTest, PlaysTheOldVariantWhenTheLoudOneCannotBePlayed) {
    loadSong();
    coordinator->toggleLoudness();
    script.refusal = "no bank";
    static_cast<void>(recorded.taken());
    coordinator->playPause();
    const auto entries = lines();
    EXPECT_THAT(entries, Contains("Error: no bank" + preparing).Times(1));
    EXPECT_THAT(entries, Contains("Could not prepare MIDI playback: no bank" + preparing));
    EXPECT_EQ(status.text(), "Playback Error");
    EXPECT_EQ(beeps, 1);
    EXPECT_EQ(player.mode(), PlaybackMode::playing);
    EXPECT_FALSE(state.loadedPlaybackIsLoud());

    coordinator->stop();
    script.refusal.clear();
    coordinator->playPause();
    EXPECT_TRUE(state.loadedPlaybackIsLoud()) << "the next Play tries again";
    EXPECT_EQ(beeps, 1);
}

} // namespace
} // namespace tambrel
