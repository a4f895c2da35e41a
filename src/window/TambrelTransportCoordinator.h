#pragma once

#include "PlaybackMode.h"

#include <QString>

#include <functional>
#include <memory>
#include <string>

namespace tambrel {

class BlackLEDActivityView;
class MIDIPlayerController;
class MIDITrackBarsView;
class RetroButton;
class RetroLabel;
class RetroTimelineView;
class SevenSegmentCounterView;
class TambrelBetaLog;
class TambrelLoadError;
class TambrelPlaybackState;
class VariantPreparation;

/// What the coordinator drives. The main view controller owns all of it, and outlives the coordinator.
struct TransportControls {
    MIDIPlayerController& player;
    TambrelPlaybackState& playbackState;
    SevenSegmentCounterView& counterView;
    RetroLabel& progressLabel;
    RetroLabel& statusLabel;
    RetroTimelineView& timeline;
    MIDITrackBarsView& trackBarsView;
    BlackLEDActivityView& activityView;
    RetroButton& playPauseButton;
    RetroButton& loudnessButton;
    std::function<void()> beep;
    /// Without one, what Play needs is made when it is pressed.
    VariantPreparation* preparation = nullptr;
};

/// Ties the player and the playback state to the controls: carries out the transport commands, shows what the
/// player reports, and swaps the player's data for the variant that the Loudness switch selects just before
/// playback starts. Keeps no state of its own but a Play that waits for that
/// variant. Main thread only.
class TambrelTransportCoordinator {
public:
    /// `log` outlives the coordinator.
    TambrelTransportCoordinator(TransportControls controls, TambrelBetaLog& log);
    TambrelTransportCoordinator(const TambrelTransportCoordinator&) = delete;
    TambrelTransportCoordinator& operator=(const TambrelTransportCoordinator&) = delete;

    /// Installs the player's callbacks, which do nothing to the controls once the coordinator is gone.
    void wirePlayer();

    // What the buttons and the menu do; each logs the click.
    void playPause();
    void stop();
    void rtz();
    // The same, for whoever else asks.
    /// A Play that comes before the selected variant is there is carried out as soon as it is; `stop`, or the
    /// switch turned, takes it back.
    void carryOutPlayPause();
    void carryOutStop();
    /// Takes back a Play that waits.
    void dropWaitingPlay();
    /// What plays cannot be heard: it rests where it is, the status says why until something else is to be
    /// said, and Play tries again. Returns what the status says.
    std::string playbackFailed(const std::string& reason);
    /// Flips the Loudness switch; it takes effect at the next Play.
    void toggleLoudness();
    /// Shows where the Loudness switch stands.
    void updateLoudnessButton();

private:
    void updateProgress(double position, double duration);
    void updatePlaybackMode(PlaybackMode mode);
    void waitToPlay();
    void playOrPause();
    void showSelectedVariant();
    void prepareSelectedPlaybackData();
    void reloadFailed(const std::exception& error);
    void showFailure(const TambrelLoadError& error);
    void takeFailureBack();

    TransportControls controls_;
    TambrelBetaLog& log_;
    bool waitsToPlay_ = false;
    QString statusBeforeFailure_; // Empty while nothing has failed to play.
    // The player's callbacks hold this weakly, to know whether the coordinator is still there.
    std::shared_ptr<TambrelTransportCoordinator> alive_{this, [](TambrelTransportCoordinator*) {}};
};

} // namespace tambrel
