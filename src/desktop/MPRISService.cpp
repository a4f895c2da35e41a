#include "MPRISService.h"

#include <QCoreApplication>
#include <QDBusMessage>

#include <utility>

namespace tambrel {
namespace {

constexpr const char* path = "/org/mpris/MediaPlayer2";
constexpr const char* sharedName = "org.mpris.MediaPlayer2.tambrel";

// All other properties are constant, or have to be asked for.
constexpr const char* changing[] = {"PlaybackStatus", "LoopStatus", "Metadata", "CanPlay",
                                    "CanPause",       "CanSeek",    "Volume"};

} // namespace

MPRISService::MPRISService(const QString& desktopEntry, MediaPlayerControls controls, MediaPlayerState state,
                           QDBusConnection bus)
    : bus_(std::move(bus)),
      controls_(std::move(controls)),
      state_(std::move(state)),
      root_(new MPRISRoot(*this, controls_, desktopEntry)),
      player_(new MPRISPlayer(*this, controls_, state_, bus_)),
      announcedStatus_(state_.status) {
    static_cast<void>(changes());
    // Registers the object before it claims the name: listeners ask as soon as the name appears.
    if (bus_.isConnected() && bus_.registerObject(path, this, QDBusConnection::ExportAdaptors))
        claimName();
}

MPRISService::~MPRISService() {
    if (!name_.isEmpty())
        bus_.unregisterService(name_);
    bus_.unregisterObject(path);
}

void MPRISService::claimName() {
    const QString own = QString("%1.instance%2").arg(sharedName).arg(QCoreApplication::applicationPid());
    for (const QString& name : {QString(sharedName), own}) {
        if (bus_.registerService(name)) {
            name_ = name;
            return;
        }
    }
}

void MPRISService::setState(MediaPlayerState state) {
    // Listeners expect a stopped song to begin at 0.
    if (announcedStatus_ == MediaPlayerStatus::stopped && state.status == MediaPlayerStatus::playing &&
        controls_.position().count() > 0)
        jumped_ = true;
    state_ = std::move(state);
    announceLater();
}

void MPRISService::positionJumped() {
    jumped_ = true;
    announceLater();
}

void MPRISService::announceLater() {
    if (!std::exchange(isAnnouncing_, true))
        QMetaObject::invokeMethod(
            this, [this] { announce(); }, Qt::QueuedConnection);
}

void MPRISService::announce() {
    isAnnouncing_ = false;
    announcedStatus_ = state_.status;
    const QVariantMap changed = changes();
    if (!changed.isEmpty()) {
        auto signal =
            QDBusMessage::createSignal(path, "org.freedesktop.DBus.Properties", "PropertiesChanged");
        bus_.send(signal << "org.mpris.MediaPlayer2.Player" << changed << QStringList());
    }
    if (std::exchange(jumped_, false))
        emit player_->Seeked(player_->position());
}

QVariantMap MPRISService::changes() {
    QVariantMap changed;
    for (const char* name : changing) {
        const QVariant value = player_->property(name);
        if (std::exchange(announced_[name], value) != value)
            changed[name] = value;
    }
    return changed;
}

} // namespace tambrel
