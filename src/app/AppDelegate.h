#pragma once

#include "MainViewController.h"
#include "PendingRequests.h"
#include "TambrelAboutPanel.h"
#include "WindowPlacement.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QMenuBar;
class QSettings;

namespace tambrel {

class FirstPaint;
class MainWindow;

/// What the program has been started for. A picture is no session: the user is asked nothing, and neither the
/// window's place nor the session is recorded.
enum class LaunchPurpose { use, picture };

/// What the delegate needs from the world around it; all called on the main thread.
struct AppDelegateServices {
    MainViewServices view;
    QSettings& settings; ///< Outlives the delegate.
    /// What the About / Get Info panel says.
    std::function<AboutFacts()> about;
    /// Opens the Debugging Window.
    std::function<void()> showDebuggingWindow;
    /// Whether a song begins again at its end.
    std::function<bool()> isLooping;
    std::function<void(bool)> setLooping;
    /// Called once, when launching is over and just before the files are opened that have been handed over by
    /// then: the place for everything that may come after the window has been painted. May be empty.
    std::function<void(MainViewController&)> didFinishLaunching;
    LaunchPurpose purpose = LaunchPurpose::use;
};

/// Starts and ends the program's one window, and opens what the desktop hands over. Main thread only.
///
/// Launching has two halves: the window is built and shown at once, and the rest follows when it has been
/// painted. Files that are handed over before that are kept, and the first of them is opened then.
class AppDelegate : public QObject {
public:
    /// `log` outlives the delegate.
    AppDelegate(AppDelegateServices services, TambrelBetaLog& log);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();
    /// When the event loop has ended.
    void applicationWillTerminate();
    /// When the program may be ended without further notice: the same, and all is written on return.
    void sessionWillEnd();

    // The desktop hands over addresses, one file, or several. `after` is of the one that is opened; for
    // `activationToken` see raiseWindow.
    void applicationOpen(const QStringList& uris, AfterLoad after = AfterLoad::wait,
                         const QString& activationToken = {});
    bool applicationOpenFile(const std::filesystem::path& path); ///< True whatever happens.
    void applicationOpenFiles(const std::vector<std::filesystem::path>& paths,
                              AfterLoad after = AfterLoad::wait);

    /// Carries out "play-pause", "stop" or "open", which the desktop asks for; no other name does anything.
    void performAction(const QString& name);

    /// Brings the window to the front, also from an icon; `activationToken` is what the one who wants that
    /// has got from the compositor. Nothing before there is a window.
    void raiseWindow(const QString& activationToken = {});

    /// Has songs begin again at their end, or not any more.
    void toggleLoop();
    void showInfo(InfoPage page = InfoPage::song);
    /// The volume, the sound bank or the output is another: an open panel shows it.
    void soundChanged();
    void showDebuggingWindow();

    /// Present from launch to the end of the delegate.
    [[nodiscard]] MainWindow* window() const { return window_.get(); }

    /// True when the extension is one of those that can be loaded. Looks at the name only.
    [[nodiscard]] static bool isSupportedMIDIURL(const std::filesystem::path& url);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void installRuntimeAppIcon();
    [[nodiscard]] QMenuBar* installMenu();
    void finishLaunching();
    void openMIDIURLs(const std::vector<std::filesystem::path>& urls, AfterLoad after,
                      const QString& activationToken = {});
    void explainRefusal(const std::vector<std::filesystem::path>& urls);
    void openPendingMIDIURLs();
    void songChanged();

    AppDelegateServices services_;
    TambrelBetaLog& log_;
    std::unique_ptr<MainWindow> window_;
    MainViewController* mainViewController_ = nullptr; ///< The window's, once launching is over.
    std::optional<WindowPlacement> placement_;         ///< Of the window; absent for a picture.
    PendingRequests pending_;                          ///< Until launching is over.
    bool hasSession_ = false;                          ///< The log's.
    std::unique_ptr<FirstPaint> firstPaint_;
};

} // namespace tambrel
