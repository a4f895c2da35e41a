#include "DesktopMediaControls.h"

#include "AppDelegate.h"
#include "ApplicationInfo.h"
#include "DecimalText.h"
#include "LocalPath.h"
#include "MainViewController.h"
#include "QtText.h"
#include "TambrelBetaLog.h"
#include "UTF8.h"

#include <QGuiApplication>

#include <cmath>
#include <utility>

namespace tambrel {
namespace {

using std::chrono::microseconds;

microseconds toMicroseconds(double seconds) {
    return microseconds(std::llround(seconds * 1e6));
}

double toSeconds(microseconds time) {
    return std::chrono::duration<double>(time).count();
}

MediaPlayerStatus status(PlaybackMode mode) {
    switch (mode) {
    case PlaybackMode::playing:
        return MediaPlayerStatus::playing;
    case PlaybackMode::paused:
        return MediaPlayerStatus::paused;
    case PlaybackMode::idle:
        break;
    }
    return MediaPlayerStatus::stopped;
}

QString title(const TambrelLoadedFile& file) {
    return toQString(std::filesystem::path(file.fileName).stem().string());
}

// A window of another system than X11 would have to be exported first.
QString portalIdentifier(const QWidget& window) {
    return QGuiApplication::platformName() == "xcb" ? "x11:" + QString::number(window.winId(), 16)
                                                    : QString();
}

} // namespace

DesktopMediaControls::DesktopMediaControls(QWidget& window, std::function<void()> raise,
                                           MainViewController& controller, VolumeControl volume,
                                           LoopControl loop, TambrelBetaLog& log, const QDBusConnection& bus)
    : window_(window),
      raise_(std::move(raise)),
      controller_(controller),
      volume_(std::move(volume)),
      loop_(std::move(loop)),
      log_(log),
      service_(toQString(ApplicationInfo::current().identifier.value_or("")), controls(), state(), bus),
      inhibitor_(portalIdentifier(window), "A song is playing", bus) {
    controller_.onPlaybackChange = [this](PlaybackChange change) { follow(change); };
    inhibitor_.setInhibiting(controller_.player().mode() == PlaybackMode::playing);
}

DesktopMediaControls::~DesktopMediaControls() {
    controller_.onPlaybackChange = nullptr;
}

void DesktopMediaControls::follow(PlaybackChange change) {
    if (change == PlaybackChange::position)
        return service_.positionJumped();
    if (change == PlaybackChange::song)
        ++songNumber_;
    service_.setState(state());
    inhibitor_.setInhibiting(controller_.player().mode() == PlaybackMode::playing);
}

MediaPlayerState DesktopMediaControls::state() const {
    MediaPlayerState now{.status = status(controller_.player().mode()),
                         .song = {},
                         .volume = volume_.get(),
                         .isLooping = loop_.get()};
    if (const TambrelLoadedFile* file = controller_.loadedFile())
        now.song = {.number = songNumber_,
                    .title = title(*file),
                    .address = fileURI(file->url).toLatin1(),
                    .length = toMicroseconds(controller_.player().duration())};
    return now;
}

MediaPlayerControls DesktopMediaControls::controls() {
    return {
        .play =
            [this] {
                note("play", "play");
                controller_.carryOutPlay();
            },
        .pause =
            [this] {
                note("pause", "pause");
                controller_.carryOutPause();
            },
        .playPause =
            [this] {
                note("playPause", "play or pause");
                return controller_.carryOutPlayPause();
            },
        .stop =
            [this] {
                note("stop", "stop");
                controller_.carryOutStop();
            },
        .seek =
            [this](microseconds place) {
                note("seek", "seek to " + decimalText(toSeconds(place)));
                controller_.seek(toSeconds(place));
            },
        .position = [this] { return toMicroseconds(controller_.player().position()); },
        .open = [this](const QUrl& url) { return open(url); },
        .setVolume = [this](double volume) { volume_.set(volume); },
        .setLooping =
            [this](bool isLooping) {
                note("setLooping", isLooping ? "loop" : "end the loop");
                loop_.set(isLooping);
            },
        .raise = raise_,
        .quit = [this] { window_.close(); },
    };
}

void DesktopMediaControls::note(const char* control, const std::string& wish) {
    log_.userAction([&] { return "Desktop asked to " + wish; },
                    std::string("DesktopMediaControls.") + control);
}

bool DesktopMediaControls::open(const QUrl& url) {
    const std::filesystem::path file = localPath(url);
    note("open", "open " + UTF8::repaired(file.filename().native()));
    if (!AppDelegate::isSupportedMIDIURL(file))
        return false;
    controller_.load(file, AfterLoad::play);
    return true;
}

} // namespace tambrel
