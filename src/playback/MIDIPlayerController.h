#pragma once

#include "MIDIFilePlayer.h"
#include "PlaybackChange.h"
#include "PlaybackMode.h"

#include <QTimer>

#include <cstdint>
#include <functional>
#include <memory>

namespace tambrel {

class TambrelBetaLog;

/// Owns the player of the loaded song: transport commands, the mode, and 20 progress reports a second while
/// it plays. Main thread only. Times are seconds; every position asked for is clamped to [0, duration].
///
/// The callbacks are called from within the operation that causes them; they may read the controller and must
/// not command it. Every assignment of the mode is reported, also of the one it already had. A command
/// without a loaded song is no error: it logs that it is ignored.
class MIDIPlayerController {
public:
    std::function<void(double position, double duration)> onProgress;
    std::function<void(PlaybackMode mode)> onStateChange;
    /// A song is ready, before its first progress report; or there is none any more (duration 0).
    std::function<void(double duration)> onLoaded;
    /// For listeners besides the window: the mode, after `onStateChange` and before the player follows; or
    /// the position, unless it is that of a new song. A song that begins again by itself has moved, too.
    std::function<void(PlaybackChange)> onChange;

    /// `log` outlives the controller.
    MIDIPlayerController(MIDIFilePlayerFactory makePlayer, TambrelBetaLog& log);

    [[nodiscard]] PlaybackMode mode() const { return mode_; }
    [[nodiscard]] double duration() const { return player_ ? player_->duration() : 0; }
    [[nodiscard]] double position() const { return player_ ? player_->currentPosition() : 0; }

    /// Loads a song and leaves it idle at 0. Throws what the factory throws; the song
    /// loaded before is then stopped but stays, and the mode does not change.
    void load(const PlayableSong& song);
    /// The same, at `position`.
    void reloadForPlayback(const PlayableSong& song, double position);
    void unload();

    /// Plays on, or from the top when the end has been reached. While playing, it starts again where it is.
    void play();
    void pause();
    void togglePlayPause();
    void stop();
    /// Back to zero; what plays goes on from there.
    void rtz();
    void seek(double seconds);

private:
    void load(const PlayableSong& song, double position, PlaybackMode modeAfterLoad);
    void startTimer();
    void stopTimer();
    void tick();
    void finishPlaybackIfNeeded();
    void noticeLap();

    void setMode(PlaybackMode mode);
    void moveTo(double seconds);
    void reportProgress() const;
    [[nodiscard]] double clamped(double seconds) const;
    [[nodiscard]] bool isAtEnd() const;

    MIDIFilePlayerFactory makePlayer_;
    TambrelBetaLog& log_;
    std::unique_ptr<MIDIFilePlayer> player_; ///< Present while a song is loaded.
    QTimer timer_;                           ///< Active only while playing.
    PlaybackMode mode_ = PlaybackMode::idle;
    std::int64_t lap_ = 0; ///< The player's, when it was last asked.
};

} // namespace tambrel
