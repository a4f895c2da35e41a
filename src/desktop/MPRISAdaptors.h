#pragma once

#include "MediaPlayer.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QStringList>
#include <QVariantMap>

#include <algorithm>

namespace tambrel {

// The two interfaces that every MPRIS player has (MPRIS 2.2), which name the members. Both refer to what
// their parent owns. Main thread.

/// The program.
class MPRISRoot : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ yes)
    Q_PROPERTY(bool CanRaise READ yes)
    Q_PROPERTY(bool CanSetFullscreen READ no)
    Q_PROPERTY(bool Fullscreen READ no)
    Q_PROPERTY(bool HasTrackList READ no)
    Q_PROPERTY(QString Identity READ identity)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry)
    Q_PROPERTY(QStringList SupportedUriSchemes READ supportedUriSchemes)
    Q_PROPERTY(QStringList SupportedMimeTypes READ supportedMimeTypes)

public:
    MPRISRoot(QObject& parent, const MediaPlayerControls& controls, QString desktopEntry);

    [[nodiscard]] bool yes() const { return true; }
    [[nodiscard]] bool no() const { return false; }
    [[nodiscard]] QString identity() const { return "Tambrel"; }
    [[nodiscard]] QString desktopEntry() const { return desktopEntry_; }
    [[nodiscard]] QStringList supportedUriSchemes() const { return {"file"}; }
    [[nodiscard]] QStringList supportedMimeTypes() const {
        return {"audio/midi", "audio/x-midi", "audio/x-midi2-clip"};
    }

    Q_SLOT void Raise() const { controls_.raise(); }
    Q_SLOT void Quit() const { controls_.quit(); }

private:
    const MediaPlayerControls& controls_;
    QString desktopEntry_;
};

/// The song, its transport, the volume and the loop. Tambrel plays one song at its own speed: there is no
/// other track to go to, rate and shuffle can only be read, and a list that repeats is a track that repeats.
class MPRISPlayer : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(QString LoopStatus READ loopStatus WRITE setLoopStatus)
    Q_PROPERTY(double Rate READ one)
    Q_PROPERTY(double MinimumRate READ one)
    Q_PROPERTY(double MaximumRate READ one)
    Q_PROPERTY(bool Shuffle READ no)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(bool CanGoNext READ no)
    Q_PROPERTY(bool CanGoPrevious READ no)
    Q_PROPERTY(bool CanPlay READ hasSong)
    Q_PROPERTY(bool CanPause READ hasSong)
    Q_PROPERTY(bool CanSeek READ hasSong)
    Q_PROPERTY(bool CanControl READ yes)

public:
    MPRISPlayer(QObject& parent, const MediaPlayerControls& controls, const MediaPlayerState& state,
                QDBusConnection bus);

    [[nodiscard]] bool yes() const { return true; }
    [[nodiscard]] bool no() const { return false; }
    [[nodiscard]] double one() const { return 1; }
    [[nodiscard]] QString playbackStatus() const;
    [[nodiscard]] QString loopStatus() const { return state_.isLooping ? "Track" : "None"; }
    /// What is no loop status changes nothing.
    void setLoopStatus(const QString& status) const;
    [[nodiscard]] QVariantMap metadata() const;
    /// Microseconds; 0 without a song.
    [[nodiscard]] qlonglong position() const { return state_.song ? controls_.position().count() : 0; }
    [[nodiscard]] double volume() const { return state_.volume; }
    /// What is no volume is silence, as the interface wants it.
    void setVolume(double volume) const { controls_.setVolume(volume > 0 ? std::min(volume, 1.0) : 0.0); }
    [[nodiscard]] bool hasSong() const { return state_.song.has_value(); }

    Q_SIGNAL void Seeked(qlonglong Position);

    Q_SLOT void Next() const {}
    Q_SLOT void Previous() const {}
    Q_SLOT void Play() const { controls_.play(); }
    Q_SLOT void Pause() const { controls_.pause(); }
    Q_SLOT void PlayPause(const QDBusMessage& call) const;
    Q_SLOT void Stop() const { controls_.stop(); }
    Q_SLOT void Seek(qlonglong Offset) const;
    Q_SLOT void SetPosition(const QDBusObjectPath& TrackId, qlonglong Position) const;
    Q_SLOT void OpenUri(const QString& Uri, const QDBusMessage& call) const;

private:
    void refuse(const QDBusMessage& call, const QString& reason) const;

    const MediaPlayerControls& controls_;
    const MediaPlayerState& state_;
    QDBusConnection bus_;
};

} // namespace tambrel
