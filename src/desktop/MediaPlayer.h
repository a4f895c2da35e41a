#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace tambrel {

enum class MediaPlayerStatus { stopped, playing, paused };

/// The song that a media player holds.
struct MediaPlayerSong {
    std::uint64_t number = 0; ///< A new one for every load, also of the same file.
    QString title;
    QByteArray address; ///< file: address, percent-encoded.
    std::chrono::microseconds length{};
};

/// What a media player shows of itself to the desktop.
struct MediaPlayerState {
    MediaPlayerStatus status = MediaPlayerStatus::stopped;
    std::optional<MediaPlayerSong> song; ///< Without one there is nothing to play, to pause or to seek in.
    double volume = 1;                   ///< 0 to 1.
    bool isLooping = false;              ///< The song begins again at its end.
};

/// What the desktop may ask of a media player. All are set, and called on the main thread.
struct MediaPlayerControls {
    // A song that is on its way counts: it plays when it is there, or does not.
    std::function<void()> play;
    std::function<void()> pause;
    /// False without a song.
    std::function<bool()> playPause;
    std::function<void()> stop;
    /// Moves the playhead to a place within the song.
    std::function<void(std::chrono::microseconds)> seek;
    /// Where the playhead is, between 0 and the length.
    std::function<std::chrono::microseconds()> position;
    /// Opens and plays the file of a file: address; false for any other address, and when the file is of no
    /// kind that can be opened.
    std::function<bool(const QUrl&)> open;
    /// From 0 to 1.
    std::function<void(double volume)> setVolume;
    std::function<void(bool isLooping)> setLooping;
    /// Brings the window to the front.
    std::function<void()> raise;
    std::function<void()> quit;
};

} // namespace tambrel
