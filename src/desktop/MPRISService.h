#pragma once

#include "MPRISAdaptors.h"
#include "SessionBus.h"

#include <QObject>
#include <QVariantMap>

namespace tambrel {

/// The media player as the desktop sees it: `org.mpris.MediaPlayer2` (MPRIS 2.2) on the session bus, which is
/// what media keys and the desktop's player controls talk to. Named `org.mpris.MediaPlayer2.tambrel`,
/// followed by `.instance` and the process number when another program has that name already.
///
/// Changes are announced together, once the operation that caused them is over: listeners see no states in
/// between. Without a change nothing is sent; without the session bus nothing happens. Main thread only.
class MPRISService : public QObject {
public:
    /// `desktopEntry` is the name of the program's desktop file, without its extension.
    MPRISService(const QString& desktopEntry, MediaPlayerControls controls, MediaPlayerState state,
                 QDBusConnection bus = sessionBus());
    ~MPRISService() override;

    /// What the player shows from now on. To be called before the player starts to play.
    void setState(MediaPlayerState state);
    /// The playhead has jumped.
    void positionJumped();

private:
    void claimName();
    void announceLater();
    void announce();
    [[nodiscard]] QVariantMap changes();

    QDBusConnection bus_;
    QString name_; ///< Empty while there is none.
    MediaPlayerControls controls_;
    MediaPlayerState state_;
    MPRISRoot* root_;     ///< A child.
    MPRISPlayer* player_; ///< A child.
    MediaPlayerStatus announcedStatus_;
    QVariantMap announced_; ///< What listeners have been told.
    bool jumped_ = false;
    bool isAnnouncing_ = false;
};

} // namespace tambrel
