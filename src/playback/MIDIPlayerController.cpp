#include "MIDIPlayerController.h"

#include "DecimalText.h"
#include "TambrelBetaLog.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

namespace tambrel {
namespace {

constexpr std::chrono::milliseconds pollingInterval(50);
constexpr double endTolerance = 0.02; // seconds

} // namespace

MIDIPlayerController::MIDIPlayerController(MIDIFilePlayerFactory makePlayer, TambrelBetaLog& log)
    : makePlayer_(std::move(makePlayer)), log_(log) {
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(pollingInterval);
    timer_.callOnTimeout([this] { tick(); });
}

void MIDIPlayerController::load(const PlayableSong& song) {
    log_.function("MIDIPlayerController.load(data:)", "Loading MIDI playback data");
    load(song, 0, PlaybackMode::idle);
}

void MIDIPlayerController::reloadForPlayback(const PlayableSong& song, double position) {
    log_.function("MIDIPlayerController.reloadForPlayback(data:position:)",
                  "Reloading MIDI playback data at current position");
    load(song, position, PlaybackMode::idle);
}

void MIDIPlayerController::unload() {
    log_.procedure("MIDIPlayerController.unload", "Clearing MIDI playback data");
    stopTimer();
    if (player_)
        player_->stop();
    player_.reset();
    setMode(PlaybackMode::idle);
    if (onLoaded)
        onLoaded(0);
    reportProgress();
}

void MIDIPlayerController::play() {
    constexpr auto name = "MIDIPlayerController.play";
    if (!player_) {
        log_.procedure(name, "Play ignored because no MIDI file is loaded");
        return;
    }
    log_.procedure(name, "Starting playback");
    if (isAtEnd())
        moveTo(0);
    setMode(PlaybackMode::playing);
    // Polling finds the end of the song.
    player_->play({});
    startTimer();
}

void MIDIPlayerController::pause() {
    constexpr auto name = "MIDIPlayerController.pause";
    if (!player_ || mode_ != PlaybackMode::playing) {
        log_.procedure(name, "Pause ignored because playback is not active");
        return;
    }
    log_.procedure(name, "Pausing playback");
    noticeLap();
    player_->stop();
    setMode(PlaybackMode::paused);
    stopTimer();
    reportProgress();
}

void MIDIPlayerController::togglePlayPause() {
    log_.function("MIDIPlayerController.togglePlayPause",
                  [this] { return std::string("Toggling playback from ").append(text(mode_)); });
    if (mode_ == PlaybackMode::playing)
        pause();
    else
        play();
}

void MIDIPlayerController::stop() {
    constexpr auto name = "MIDIPlayerController.stop";
    if (!player_) {
        log_.procedure(name, "Stop ignored because no MIDI file is loaded");
        return;
    }
    log_.procedure(name, "Stopping playback and returning to zero");
    player_->stop();
    moveTo(0);
    setMode(PlaybackMode::idle);
    stopTimer();
    if (onProgress)
        onProgress(0, duration());
}

void MIDIPlayerController::rtz() {
    constexpr auto name = "MIDIPlayerController.rtz";
    if (!player_) {
        log_.procedure(name, "RTZ ignored because no MIDI file is loaded");
        return;
    }
    finishPlaybackIfNeeded(); // Before the playhead moves away from the end.
    log_.procedure(name, "Returning playhead to zero");
    moveTo(0);
    if (onProgress)
        onProgress(0, duration());
}

void MIDIPlayerController::seek(double seconds) {
    constexpr auto name = "MIDIPlayerController.seek(to:)";
    if (!player_) {
        log_.procedure(name, "Seek ignored because no MIDI file is loaded");
        return;
    }
    finishPlaybackIfNeeded(); // Before the playhead moves away from the end.
    log_.procedure(name, [seconds] { return "Seeking to " + decimalText(seconds) + " seconds"; });
    moveTo(clamped(seconds));
    reportProgress();
}

void MIDIPlayerController::load(const PlayableSong& song, double position, PlaybackMode modeAfterLoad) {
    constexpr auto name = "MIDIPlayerController.load(data:position:modeAfterLoad:)";
    log_.procedure(name, "Resetting AVMIDIPlayer before load");
    stopTimer();
    if (player_)
        player_->stop();
    player_ = makePlayer_(song);
    player_->prepareToPlay();
    player_->setCurrentPosition(clamped(position));
    setMode(modeAfterLoad);
    if (onLoaded)
        onLoaded(duration());
    reportProgress();
    log_.procedure(name, [this] { return "AVMIDIPlayer loaded; duration " + decimalText(duration()); });
}

void MIDIPlayerController::startTimer() {
    log_.procedure("MIDIPlayerController.startTimer", "Starting playback timer");
    stopTimer();
    timer_.start();
}

void MIDIPlayerController::stopTimer() {
    if (!timer_.isActive())
        return;
    log_.procedure("MIDIPlayerController.stopTimer", "Stopping playback timer");
    timer_.stop();
}

void MIDIPlayerController::tick() {
    if (!player_)
        return;
    reportProgress();
    noticeLap();
    finishPlaybackIfNeeded();
}

// Nothing is logged of it, as of everything that polling finds but the end.
void MIDIPlayerController::noticeLap() {
    const std::int64_t lap = player_->lap();
    if (std::exchange(lap_, lap) < lap && onChange)
        onChange(PlaybackChange::position);
}

void MIDIPlayerController::finishPlaybackIfNeeded() {
    if (!player_ || mode_ != PlaybackMode::playing || player_->isPlaying() || !isAtEnd())
        return;
    log_.procedure("MIDIPlayerController.finishPlaybackIfNeeded", "Playback reached end of file");
    moveTo(0);
    setMode(PlaybackMode::idle);
    stopTimer();
    if (onProgress)
        onProgress(0, duration());
}

void MIDIPlayerController::setMode(PlaybackMode mode) {
    mode_ = mode;
    if (onStateChange)
        onStateChange(mode);
    if (onChange)
        onChange(PlaybackChange::mode);
}

void MIDIPlayerController::moveTo(double seconds) {
    const double before = position();
    player_->setCurrentPosition(seconds);
    if (onChange && position() != before)
        onChange(PlaybackChange::position);
}

void MIDIPlayerController::reportProgress() const {
    if (onProgress)
        onProgress(position(), duration());
}

double MIDIPlayerController::clamped(double seconds) const {
    // In this order of arguments, not-a-number becomes 0.
    return std::max(0.0, std::min(seconds, duration()));
}

bool MIDIPlayerController::isAtEnd() const {
    return position() >= std::max(0.0, duration() - endTolerance);
}

} // namespace tambrel
