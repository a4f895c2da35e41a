#pragma once

#include "MPRISService.h"
#include "PlaybackChange.h"
#include "SuspendInhibitor.h"

#include <QDBusConnection>

#include <cstdint>
#include <functional>
#include <string>

class QWidget;

namespace tambrel {

class MainViewController;
class TambrelBetaLog;

/// The volume of the user, from 0 to 1.
struct VolumeControl {
    std::function<double()> get;
    std::function<void(double)> set;
};

/// How a song's beginning again at its end is read and set.
struct LoopControl {
    std::function<bool()> get;
    std::function<void(bool)> set;
};

/// Joins the main view to the desktop: media keys and player controls do what the buttons do, through the
/// same transport and with log lines of their own, and the computer does not suspend itself while a song
/// plays. Main thread only.
class DesktopMediaControls {
public:
    /// All outlive the controls; `window` is the one that has the main view in it, and has been shown.
    /// `raise` brings it to the front.
    DesktopMediaControls(QWidget& window, std::function<void()> raise, MainViewController& controller,
                         VolumeControl volume, LoopControl loop, TambrelBetaLog& log,
                         const QDBusConnection& bus);
    ~DesktopMediaControls();
    DesktopMediaControls(const DesktopMediaControls&) = delete;
    DesktopMediaControls& operator=(const DesktopMediaControls&) = delete;

    /// Tells the desktop: the volume or the loop.
    void settingChanged() { service_.setState(state()); }

private:
    void follow(PlaybackChange change);
    [[nodiscard]] MediaPlayerState state() const;
    [[nodiscard]] MediaPlayerControls controls();
    void note(const char* control, const std::string& wish);
    [[nodiscard]] bool open(const QUrl& url);

    QWidget& window_;
    std::function<void()> raise_;
    MainViewController& controller_;
    VolumeControl volume_;
    LoopControl loop_;
    TambrelBetaLog& log_;
    std::uint64_t songNumber_ = 0;
    MPRISService service_;
    SuspendInhibitor inhibitor_;
};

} // namespace tambrel
