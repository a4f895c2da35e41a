#pragma once

#include "AppDelegate.h"
#include "CommandLine.h"
#include "DesktopMediaControls.h"
#include "GeneralMIDIEngine.h"
#include "PictureMode.h"
#include "RecentFiles.h"

#include <QSettings>

#include <optional>
#include <string>

namespace tambrel {

class DesktopApplication;
class TambrelBetaLog;
struct LaunchContext;

/// The whole program put together: the engine, the log, the delegate with its window, and what the command
/// line and the desktop ask of them. Needs a QApplication. Main thread.
class Program {
public:
    /// `desktop` outlives the program.
    Program(CommandLine commandLine, DesktopApplication& desktop);
    ~Program();

    /// Runs until the user or the session ends it; the exit status.
    [[nodiscard]] int run();

private:
    [[nodiscard]] AppDelegateServices services();
    void serve();
    void bringToFront(const LaunchContext& context);
    void fallSilent();
    void didFinishLaunching(MainViewController& view);
    void loadFinished(const std::string& failure);
    [[nodiscard]] AboutFacts aboutFacts();
    [[nodiscard]] SoundPageFacts soundFacts();
    void chooseSoundBank(const std::string& path);
    void setVolume(double volume);
    void setLooping(bool isLooping);
    [[nodiscard]] std::string soundBankText() const;
    [[nodiscard]] std::string outputText() const;

    const CommandLine commandLine_;
    PictureMode picture_{commandLine_};
    DesktopApplication& desktop_;
    QSettings settings_;
    TambrelBetaLog& log_;
    GeneralMIDIEngine engine_;
    AppDelegate delegate_;               // Destroyed before the engine, which its players are on.
    MainViewController* view_ = nullptr; // The window's, once launching is over.
    std::optional<DesktopMediaControls> mediaControls_;
    RecentFiles recentFiles_;
};

} // namespace tambrel
