#include "MPRISAdaptors.h"

#include <algorithm>
#include <utility>

namespace tambrel {
namespace {

QDBusObjectPath trackPath(const MediaPlayerSong& song) {
    return QDBusObjectPath(QString("/software/kestrune/tambrel/song/%1").arg(song.number));
}

} // namespace

MPRISRoot::MPRISRoot(QObject& parent, const MediaPlayerControls& controls, QString desktopEntry)
    : QDBusAbstractAdaptor(&parent), controls_(controls), desktopEntry_(std::move(desktopEntry)) {}

MPRISPlayer::MPRISPlayer(QObject& parent, const MediaPlayerControls& controls, const MediaPlayerState& state,
                         QDBusConnection bus)
    : QDBusAbstractAdaptor(&parent), controls_(controls), state_(state), bus_(std::move(bus)) {}

QString MPRISPlayer::playbackStatus() const {
    switch (state_.status) {
    case MediaPlayerStatus::playing:
        return "Playing";
    case MediaPlayerStatus::paused:
        return "Paused";
    case MediaPlayerStatus::stopped:
        break;
    }
    return "Stopped";
}

void MPRISPlayer::setLoopStatus(const QString& status) const {
    if (status == "Track" || status == "Playlist")
        controls_.setLooping(true);
    else if (status == "None")
        controls_.setLooping(false);
}

QVariantMap MPRISPlayer::metadata() const {
    if (!state_.song)
        return {};
    return {{"mpris:trackid", QVariant::fromValue(trackPath(*state_.song))},
            {"mpris:length", static_cast<qlonglong>(state_.song->length.count())},
            {"xesam:title", state_.song->title},
            {"xesam:url", QString::fromLatin1(state_.song->address)}};
}

void MPRISPlayer::PlayPause(const QDBusMessage& call) const {
    if (!controls_.playPause())
        refuse(call, "There is no song.");
}

void MPRISPlayer::Seek(qlonglong Offset) const {
    if (!state_.song)
        return;
    // In MPRIS, past the end is the next song, and there is none.
    const qlonglong from = position();
    if (Offset <= state_.song->length.count() - from)
        controls_.seek(std::chrono::microseconds(std::max(0LL, from + Offset)));
}

void MPRISPlayer::SetPosition(const QDBusObjectPath& TrackId, qlonglong Position) const {
    const bool isMeant = state_.song && TrackId == trackPath(*state_.song);
    if (isMeant && Position >= 0 && Position <= state_.song->length.count())
        controls_.seek(std::chrono::microseconds(Position));
}

void MPRISPlayer::OpenUri(const QString& Uri, const QDBusMessage& call) const {
    if (!controls_.open(QUrl(Uri)))
        refuse(call, "Tambrel opens MIDI files of this computer only.");
}

void MPRISPlayer::refuse(const QDBusMessage& call, const QString& reason) const {
    call.setDelayedReply(true); // Replaces the usual reply.
    bus_.send(call.createErrorReply(QDBusError::NotSupported, reason));
}

} // namespace tambrel
