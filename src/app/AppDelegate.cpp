#include "AppDelegate.h"

#include "FirstPaint.h"
#include "LocalPath.h"
#include "MainWindow.h"
#include "PictureView.h"
#include "TambrelBetaLog.h"
#include "TambrelMIDIFileSupport.h"
#include "TambrelMenuBuilder.h"
#include "UTF8.h"

#include <QApplication>
#include <QFile>
#include <QFileOpenEvent>
#include <QIcon>
#include <QMenuBar>
#include <QSettings>

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>
#include <utility>

namespace tambrel {
namespace {

constexpr std::string_view opening = "AppDelegate.openMIDIURLs";

std::filesystem::path locationOf(const QString& uri) {
    return localPath(QUrl::fromEncoded(uri.toUtf8()));
}

} // namespace

AppDelegate::AppDelegate(AppDelegateServices services, TambrelBetaLog& log)
    : services_(std::move(services)), log_(log) {
    qApp->installEventFilter(this);
    connect(qApp, &QApplication::commitDataRequest, this, [this] { sessionWillEnd(); });
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    log_.function("AppDelegate.applicationDidFinishLaunching", "Application launch procedure started");
    log_.procedure("AppDelegate.installRuntimeAppIcon", "Installing runtime app icon if available");
    QMenuBar* menuBar = installMenu();
    services_.view.songChanged = [this] { songChanged(); };
    window_ = std::make_unique<MainWindow>(new MainViewController(services_.view, log_));
    window_->setMenuBar(menuBar);
    if (services_.purpose == LaunchPurpose::use)
        placement_.emplace(*window_, services_.settings);
    firstPaint_ = std::make_unique<FirstPaint>(*window_, [this] { finishLaunching(); });
    window_->show();
}

// From a theme, or from a drawing that has to be rendered: nothing to keep the user waiting for.
void AppDelegate::installRuntimeAppIcon() {
    const QString drawing = ":/TambrelAppIcon.svg";
    QIcon icon = QIcon::fromTheme(QApplication::desktopFileName());
    if (icon.isNull() && QFile::exists(drawing))
        icon = PictureView::icon(drawing);
    if (!icon.isNull())
        QApplication::setWindowIcon(icon);
}

QMenuBar* AppDelegate::installMenu() {
    log_.procedure("TambrelMenuBuilder.install", "Building application menus");
    const auto inView = [this](auto action) {
        return [this, action] {
            if (mainViewController_)
                action(*mainViewController_);
        };
    };
    MenuTargets targets{.showAbout = [this] { showInfo(InfoPage::tambrel); },
                        .showInfo = [this] { showInfo(); },
                        .showHelp = [this] { showInfo(InfoPage::keys); },
                        .openFile = inView(std::mem_fn(&MainViewController::openFile)),
                        .playPause = inView(std::mem_fn(&MainViewController::playPause)),
                        .rtz = inView(std::mem_fn(&MainViewController::rtz)),
                        .stop = inView(std::mem_fn(&MainViewController::stop)),
                        .toggleLoop = [this] { toggleLoop(); },
                        .isLooping = services_.isLooping,
                        .showDebuggingWindow = {}};
    if (log_.diagnosticsEnabled())
        targets.showDebuggingWindow = [this] { showDebuggingWindow(); };
    auto* bar = new QMenuBar;
    TambrelMenuBuilder::install(*bar, targets);
    return bar;
}

void AppDelegate::finishLaunching() {
    if (placement_)
        placement_->follow();
    installRuntimeAppIcon();
    hasSession_ = services_.purpose == LaunchPurpose::use;
    if (hasSession_ &&
        log_.startSession() == TambrelBetaLog::Launch::isOver) // May ask; what arrives is kept.
        return;
    mainViewController_ = &window_->controller();
    if (services_.didFinishLaunching)
        services_.didFinishLaunching(*mainViewController_);
    if (const std::string explanation = pending_.takeExplanation(); !explanation.empty())
        mainViewController_->explain(explanation);
    openPendingMIDIURLs();
    for (const QString& action : pending_.takeActions())
        performAction(action);
}

void AppDelegate::applicationWillTerminate() {
    if (placement_)
        placement_->keep();
    services_.settings.sync();
    if (hasSession_) // Else a crash before this run is still to be offered, by the next.
        log_.finishSession();
}

// The end may not be waited for. If the user stops it after all, the log begins another session.
void AppDelegate::sessionWillEnd() {
    applicationWillTerminate();
    log_.waitUntilWritten();
}

void AppDelegate::applicationOpen(const QStringList& uris, AfterLoad after, const QString& activationToken) {
    log_.userAction(
        [&] { return "Opened Tambrel from Finder with " + std::to_string(uris.size()) + " URL(s)"; },
        "AppDelegate.application(_:open:)");
    std::vector<std::filesystem::path> urls;
    std::ranges::transform(uris, std::back_inserter(urls), locationOf);
    openMIDIURLs(urls, after, activationToken);
}

bool AppDelegate::applicationOpenFile(const std::filesystem::path& path) {
    log_.userAction([&] { return "Opened Tambrel with file " + UTF8::repaired(path.native()); },
                    "AppDelegate.application(_:openFile:)");
    openMIDIURLs({path}, AfterLoad::wait);
    return true;
}

void AppDelegate::applicationOpenFiles(const std::vector<std::filesystem::path>& paths, AfterLoad after) {
    log_.userAction([&] { return "Opened Tambrel with " + std::to_string(paths.size()) + " file(s)"; },
                    "AppDelegate.application(_:openFiles:)");
    openMIDIURLs(paths, after);
}

bool AppDelegate::isSupportedMIDIURL(const std::filesystem::path& url) {
    return TambrelMIDIFileSupport::hasExtension(url.native(), TambrelMIDIFileSupport::loadableExtensions());
}

void AppDelegate::openMIDIURLs(const std::vector<std::filesystem::path>& urls, AfterLoad after,
                               const QString& activationToken) {
    raiseWindow(activationToken); // Whatever comes of it, the user who opens something looks here.
    log_.function(opening, [&] { return "Evaluating " + std::to_string(urls.size()) + " incoming URL(s)"; });
    std::vector<std::filesystem::path> supported;
    std::ranges::copy_if(urls, std::back_inserter(supported), isSupportedMIDIURL);
    if (supported.empty()) {
        log_.procedure(opening, "No supported MIDI URLs found");
        services_.view.beep();
        explainRefusal(urls);
        return;
    }
    if (!mainViewController_) {
        pending_.add(std::move(supported), after);
        log_.procedure(opening, "Main window not ready; queued MIDI URLs");
        return;
    }
    const std::filesystem::path& first = supported.front();
    log_.procedure(opening, [&] { return "Loading " + UTF8::repaired(first.filename().native()); });
    mainViewController_->load(first, after);
}

void AppDelegate::explainRefusal(const std::vector<std::filesystem::path>& urls) {
    if (urls.empty())
        return;
    const std::string name = UTF8::repaired(urls.front().filename().native());
    const std::string why = (name.empty() ? "" : name + ": ") + "Not a file that Tambrel opens.";
    if (mainViewController_)
        mainViewController_->explain(why);
    else
        pending_.setExplanation(why);
}

void AppDelegate::openPendingMIDIURLs() {
    const auto [files, after] = pending_.takeFiles();
    if (files.empty())
        return;
    log_.function("AppDelegate.openPendingMIDIURLs", "Opening queued MIDI URL(s)");
    openMIDIURLs(files, after);
}

void AppDelegate::performAction(const QString& name) {
    if (!mainViewController_)
        return pending_.addAction(name);
    log_.userAction([&] { return "Desktop asked for " + name.toStdString(); }, "AppDelegate.performAction");
    if (name == "play-pause")
        mainViewController_->carryOutPlayPause();
    else if (name == "stop")
        mainViewController_->carryOutStop();
    else if (name == "open")
        mainViewController_->carryOutOpen();
}

void AppDelegate::raiseWindow(const QString& activationToken) {
    if (!window_)
        return;
    // Qt takes the token from the environment, and removes it when it has used it.
    if (!activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->raise();
    window_->activateWindow();
}

void AppDelegate::toggleLoop() {
    const bool isLooping = !services_.isLooping();
    log_.userAction(isLooping ? "Enabled Loop" : "Disabled Loop", "AppDelegate.toggleLoop");
    services_.setLooping(isLooping);
}

void AppDelegate::showInfo(InfoPage page) {
    AboutFacts facts = services_.about();
    if (mainViewController_)
        facts.song = mainViewController_->songFacts();
    TambrelAboutPanel::show(*window_, facts, page);
}

void AppDelegate::songChanged() {
    if (auto* panel = TambrelAboutPanel::of(*window_); panel != nullptr && mainViewController_ != nullptr)
        panel->showSong(mainViewController_->songFacts());
}

void AppDelegate::soundChanged() {
    if (auto* panel = window_ ? TambrelAboutPanel::of(*window_) : nullptr)
        panel->refreshSound();
}

void AppDelegate::showDebuggingWindow() {
    if (services_.showDebuggingWindow)
        services_.showDebuggingWindow();
}

bool AppDelegate::eventFilter(QObject*, QEvent* event) {
    if (event->type() != QEvent::FileOpen)
        return false;
    const auto& request = static_cast<const QFileOpenEvent&>(*event);
    return applicationOpenFile(localPath(request.url()));
}

} // namespace tambrel
