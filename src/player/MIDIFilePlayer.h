#pragma once

#include "PlayableSong.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace tambrel {

/// A General MIDI file player holding one song. Created by a `MIDIFilePlayerFactory` from a complete Standard
/// MIDI File, stopped and at position 0. Used from the main thread only; every call returns at once.
/// Positions and durations are seconds. After `stop`, and after destruction, no note of this player goes on
/// sounding.
class MIDIFilePlayer {
public:
    virtual ~MIDIFilePlayer() = default;

    /// Gets ready, so that a later `play` starts without delay.
    virtual void prepareToPlay() = 0;

    /// Plays on from the current position. `onCompletion` (may be empty) is called on the main thread when
    /// the end has been reached; it is dropped when `stop` or another `play` comes first.
    virtual void play(std::function<void()> onCompletion) = 0;

    /// Silences the player; the position stays.
    virtual void stop() = 0;

    [[nodiscard]] virtual double currentPosition() const = 0;
    /// Moves the playhead; playback, if running, goes on from there.
    virtual void setCurrentPosition(double seconds) = 0;
    [[nodiscard]] virtual double duration() const = 0;
    /// How often the song has begun again by itself since `play` or a move of the playhead.
    [[nodiscard]] virtual std::int64_t lap() const = 0;

    /// True from `play` to `stop` or to the end of the song, whichever comes first.
    [[nodiscard]] virtual bool isPlaying() const = 0;
};

/// Creates a player for the song, or throws a `std::exception` whose text is the reason, for the user to
/// read. Main thread.
using MIDIFilePlayerFactory = std::function<std::unique_ptr<MIDIFilePlayer>(const PlayableSong& song)>;

} // namespace tambrel
