#pragma once

#include "PlaybackMode.h"

#include <QObject>
#include <QString>

#include <functional>

namespace tambrel {

/// Tells users who do not see the window that a song is loaded or cannot be, and that it plays, pauses, stops
/// or ends. What changes in one go is said at once, and nothing twice. Main thread only.
class SpokenStatus : public QObject {
public:
    explicit SpokenStatus(std::function<void(const QString& text)> say) : say_(std::move(say)) {}

    /// Another song is there, or none any more.
    void songChanged(const QString& text);
    void modeChanged(PlaybackMode mode);
    /// When it becomes idle next, that is the user's doing, and not the end of the song.
    void stopping() { isStopped_ = true; }

private:
    void sayLater();
    void say();

    const std::function<void(const QString& text)> say_;
    QString song_; // To be said.
    PlaybackMode mode_ = PlaybackMode::idle;
    PlaybackMode saidMode_ = PlaybackMode::idle;
    bool isStopped_ = false;
    bool isDue_ = false;
};

} // namespace tambrel
