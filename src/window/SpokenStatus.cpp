#include "SpokenStatus.h"

#include <QMetaObject>
#include <QStringList>

#include <utility>

namespace tambrel {
namespace {

QString textOf(PlaybackMode mode, bool isStopped) {
    switch (mode) {
    case PlaybackMode::playing:
        return "Playing";
    case PlaybackMode::paused:
        return "Paused";
    case PlaybackMode::idle:
        break;
    }
    return isStopped ? "Stopped" : "End of the song";
}

} // namespace

void SpokenStatus::songChanged(const QString& text) {
    song_ = text;
    sayLater();
}

void SpokenStatus::modeChanged(PlaybackMode mode) {
    mode_ = mode;
    sayLater();
}

// On the way from one state to the next the mode may pass through others.
void SpokenStatus::sayLater() {
    if (!std::exchange(isDue_, true))
        QMetaObject::invokeMethod(
            this, [this] { say(); }, Qt::QueuedConnection);
}

void SpokenStatus::say() {
    isDue_ = false;
    QStringList sentences;
    if (!song_.isEmpty())
        sentences << std::exchange(song_, {});
    const bool isOther = std::exchange(saidMode_, mode_) != mode_;
    const bool isStopped = std::exchange(isStopped_, false);
    if (isOther && (mode_ != PlaybackMode::idle || sentences.isEmpty()))
        sentences << textOf(mode_, isStopped);
    if (!sentences.isEmpty())
        say_(sentences.join(". "));
}

} // namespace tambrel
