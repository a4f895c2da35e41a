#include "TambrelTransportCoordinator.h"

#include "BlackLEDActivityView.h"
#include "MIDIPlayerController.h"
#include "MIDITrackBarsView.h"
#include "QtText.h"
#include "RetroButton.h"
#include "RetroLabel.h"
#include "RetroTimelineView.h"
#include "SevenSegmentCounterView.h"
#include "TambrelBetaLog.h"
#include "TambrelLoadError.h"
#include "TambrelPlaybackState.h"
#include "TimeText.h"
#include "VariantPreparation.h"

#include <string>
#include <utility>

namespace tambrel {
namespace {

constexpr std::string_view preparing = "TambrelTransportCoordinator.prepareSelectedPlaybackData";

QString playPauseTitle(PlaybackMode mode) {
    switch (mode) {
    case PlaybackMode::playing:
        return "Pause";
    case PlaybackMode::paused:
        return "Resume";
    case PlaybackMode::idle:
        break;
    }
    return "Play";
}

} // namespace

TambrelTransportCoordinator::TambrelTransportCoordinator(TransportControls controls, TambrelBetaLog& log)
    : controls_(std::move(controls)), log_(log) {
    if (controls_.preparation != nullptr)
        controls_.preparation->onDone = [this] {
            if (std::exchange(waitsToPlay_, false))
                playOrPause();
        };
}

void TambrelTransportCoordinator::wirePlayer() {
    log_.procedure("TambrelTransportCoordinator.wirePlayer",
                   "Connecting MIDI player callbacks to the interface");
    const std::weak_ptr<TambrelTransportCoordinator> weak = alive_;
    controls_.player.onProgress = [weak](double position, double duration) {
        if (const auto self = weak.lock())
            self->updateProgress(position, duration);
    };
    controls_.player.onStateChange = [weak](PlaybackMode mode) {
        if (const auto self = weak.lock())
            self->updatePlaybackMode(mode);
    };
    controls_.player.onLoaded = [weak, &log = log_](double duration) {
        log.procedure("TambrelTransportCoordinator.player.onLoaded",
                      [duration] { return "Loaded MIDI duration " + timeText(duration); });
        if (const auto self = weak.lock())
            self->controls_.timeline.setDuration(duration);
    };
}

void TambrelTransportCoordinator::updateProgress(double position, double duration) {
    const QString text = toQString(timeText(position));
    controls_.counterView.setText(text);
    controls_.progressLabel.setText("PROGRESS " + text);
    controls_.timeline.setPosition(position);
    controls_.timeline.setDuration(duration);
    controls_.trackBarsView.setProgress(duration > 0 ? position / duration : 0);
}

void TambrelTransportCoordinator::updatePlaybackMode(PlaybackMode mode) {
    log_.procedure("TambrelTransportCoordinator.updatePlaybackMode",
                   [mode] { return "Playback state changed to " + std::string(text(mode)); });
    const bool isPlaying = mode == PlaybackMode::playing;
    controls_.playPauseButton.setText(playPauseTitle(mode));
    controls_.activityView.setAnimating(isPlaying);
    // A focus left on a button that is disabled would go on to the next one, which unloads the song.
    if (isPlaying && controls_.loudnessButton.window()->focusWidget() == &controls_.loudnessButton)
        controls_.playPauseButton.setFocus();
    controls_.loudnessButton.setEnabled(!isPlaying);
}

void TambrelTransportCoordinator::playPause() {
    log_.userAction("Clicked Play/Pause button or menu item", "TambrelTransportCoordinator.playPause");
    carryOutPlayPause();
}

void TambrelTransportCoordinator::carryOutPlayPause() {
    takeFailureBack();
    const bool isToPlay = controls_.player.mode() != PlaybackMode::playing;
    if (isToPlay && controls_.preparation != nullptr && !controls_.preparation->isReady())
        waitToPlay();
    else
        playOrPause();
}

// Looks like a song that is being loaded, and is one.
void TambrelTransportCoordinator::waitToPlay() {
    waitsToPlay_ = true;
    controls_.statusLabel.setText("Loading");
    controls_.activityView.setAnimating(true);
    controls_.preparation->begin();
}

void TambrelTransportCoordinator::dropWaitingPlay() {
    takeFailureBack();
    if (!std::exchange(waitsToPlay_, false))
        return;
    controls_.activityView.setAnimating(false);
    showSelectedVariant();
}

void TambrelTransportCoordinator::playOrPause() {
    if (controls_.player.mode() != PlaybackMode::playing)
        prepareSelectedPlaybackData();
    controls_.player.togglePlayPause();
}

void TambrelTransportCoordinator::showSelectedVariant() {
    controls_.statusLabel.setText(controls_.playbackState.loudnessEnabled() ? "Loudness On" : "Loaded");
}

void TambrelTransportCoordinator::stop() {
    log_.userAction("Clicked Stop button or menu item", "TambrelTransportCoordinator.stop");
    carryOutStop();
}

void TambrelTransportCoordinator::carryOutStop() {
    dropWaitingPlay();
    controls_.player.stop();
}

void TambrelTransportCoordinator::rtz() {
    log_.userAction("Clicked RTZ button or menu item", "TambrelTransportCoordinator.rtz");
    controls_.player.rtz();
}

void TambrelTransportCoordinator::toggleLoudness() {
    const bool isOn = !controls_.playbackState.loudnessEnabled();
    controls_.playbackState.setLoudnessEnabled(isOn);
    updateLoudnessButton();
    dropWaitingPlay();
    showSelectedVariant();
    log_.userAction(isOn ? "Enabled Loudness" : "Disabled Loudness",
                    "TambrelTransportCoordinator.toggleLoudness");
    if (controls_.preparation != nullptr)
        controls_.preparation->begin();
}

void TambrelTransportCoordinator::updateLoudnessButton() {
    controls_.loudnessButton.setText(controls_.playbackState.loudnessEnabled() ? "Loudness On" : "Loudness");
}

void TambrelTransportCoordinator::prepareSelectedPlaybackData() {
    log_.function(preparing, "Preparing selected playback data");
    const auto snapshot = controls_.playbackState.selectedSnapshot(preparing);
    if (!snapshot)
        return;
    if (snapshot->isLoud == controls_.playbackState.loadedPlaybackIsLoud()) {
        log_.procedure(preparing, "Playback data already matches Loudness setting");
        return;
    }
    const double position = controls_.player.position();
    try {
        controls_.player.reloadForPlayback(snapshot->song, position);
    } catch (const std::exception& error) {
        reloadFailed(error);
        return;
    }
    controls_.playbackState.markPlaybackLoaded(*snapshot);
    controls_.playbackState.prepareMIDI2ClipCompanion(*snapshot, preparing);
    controls_.statusLabel.setText(snapshot->isLoud ? "Loudness On" : "Loaded");
    log_.procedure(preparing, [position] { return "Reloaded playback data at " + timeText(position); });
}

void TambrelTransportCoordinator::reloadFailed(const std::exception& error) {
    log_.error(error, preparing);
    const auto loadError =
        TambrelLoadError::playbackPreparationFailed(TambrelLoadError::diagnosticReason(error));
    log_.procedure(preparing, [&loadError] { return loadError.diagnosticDescription(); });
    showFailure(loadError);
}

void TambrelTransportCoordinator::showFailure(const TambrelLoadError& error) {
    controls_.statusLabel.setText(toQString(error.statusTitle()), toQString(error.diagnosticDescription()));
    controls_.beep();
}

std::string TambrelTransportCoordinator::playbackFailed(const std::string& reason) {
    const auto error = TambrelLoadError::playbackPreparationFailed(reason);
    log_.procedure("TambrelTransportCoordinator.playbackFailed",
                   [&error] { return error.diagnosticDescription(); });
    if (controls_.player.position() > 0)
        controls_.player.pause();
    else
        controls_.player.stop();
    statusBeforeFailure_ = controls_.statusLabel.text();
    showFailure(error);
    return std::string(error.statusTitle()) + ": " + error.diagnosticDescription();
}

void TambrelTransportCoordinator::takeFailureBack() {
    if (const QString status = std::exchange(statusBeforeFailure_, {}); !status.isEmpty())
        controls_.statusLabel.setText(status);
}

} // namespace tambrel
