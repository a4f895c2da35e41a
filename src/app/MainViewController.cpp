#include "MainViewController.h"

#include "BlackLEDActivityView.h"
#include "DecimalText.h"
#include "DropTargetPanel.h"
#include "FramedZone.h"
#include "LoadedBlueRectangleView.h"
#include "LocalPath.h"
#include "MIDITrackBarsView.h"
#include "MainViewLayout.h"
#include "PictureView.h"
#include "RetroButton.h"
#include "RetroLabel.h"
#include "RetroTheme.h"
#include "RetroTimelineView.h"
#include "SevenSegmentCounterView.h"
#include "TambrelBetaLog.h"
#include "TimeText.h"
#include "UTF8.h"
#include "ViewAccessibility.h"

#include <QPalette>
#include <QUrl>

#include <array>
#include <string_view>
#include <utility>

namespace tambrel {
namespace {

constexpr const char* noFile = "DROP MIDI FILE";
constexpr const char* ready = "READY";
constexpr const char* noTempo = "---.--- BPS";
constexpr const char* noKey = "KEY --";
constexpr const char* noTracks = "0 Tracks";
constexpr const char* noTime = "00:00:00.00";
constexpr const char* noLength = "LENGTH 00:00:00.00";
constexpr const char* noProgress = "PROGRESS 00:00:00.00";

constexpr std::string_view loading = "MainViewController.load(url:)";

QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string displayName(const std::filesystem::path& url) {
    return UTF8::repaired(url.filename().native());
}

template<class View, class... Arguments>
View* addView(QWidget* parent, const char* name, const QRect& place, Arguments&&... arguments) {
    auto* view = new View(std::forward<Arguments>(arguments)..., parent);
    view->setObjectName(name);
    view->setGeometry(place);
    return view;
}

RetroLabel* addLabel(QWidget* parent, const char* name, const QRect& place, const QString& text,
                     const QFont& font = RetroTheme::display()) {
    return addView<RetroLabel>(parent, name, place, text, font, Qt::AlignCenter);
}

} // namespace

MainViewController::MainViewController(MainViewServices services, TambrelBetaLog& log)
    : services_(std::move(services)), log_(log), player_(services_.makePlayer, log), playbackState_(log) {
    log_.procedure("MainViewController.loadView", "Creating Tambrel root view");
    setObjectName("view");
    setFixedSize(MainViewLayout::contentSize, MainViewLayout::contentSize);
    QPalette paper = palette();
    paper.setColor(QPalette::Window, RetroTheme::paper());
    setPalette(paper);
    setAutoFillBackground(true);

    log_.procedure("MainViewController.viewDidLoad", "Main controller view loaded");
    buildInterface();
    transportCoordinator_.emplace(TransportControls{.player = player_,
                                                    .playbackState = playbackState_,
                                                    .counterView = *counterView_,
                                                    .progressLabel = *progressLabel_,
                                                    .statusLabel = *statusLabel_,
                                                    .timeline = *timeline_,
                                                    .trackBarsView = *trackBarsView_,
                                                    .activityView = *activityView_,
                                                    .playPauseButton = *playPauseButton_,
                                                    .loudnessButton = *loudnessButton_,
                                                    .beep = services_.beep},
                                  log_);
    transportCoordinator_->wirePlayer();
    player_.onChange = [this](PlaybackChange change) { report(change); };
}

MainViewController::~MainViewController() {
    loadCoordinator_.cancel();
}

// The order of the children is the order in which Tab and assistive software go through them.
void MainViewController::buildInterface() {
    log_.procedure("MainViewController.buildInterface",
                   "Building controls, labels, drop target, and transport");
    namespace Layout = MainViewLayout;
    titleLabel_ = addLabel(this, "titleLabel", Layout::title, "TAMBREL", RetroTheme::title());
    statusLabel_ = addLabel(this, "statusLabel", Layout::status, ready);
    ledZone_ = addView<FramedZone>(this, "ledZone", Layout::ledZone);
    activityView_ = addView<BlackLEDActivityView>(this, "activityView", Layout::activity);
    dropPanel_ = new DropTargetPanel(log_, this);
    dropPanel_->setObjectName("dropPanel");
    dropPanel_->setGeometry(Layout::dropPanel);
    fileLabel_ = addLabel(dropPanel_, "fileLabel", Layout::file.translated(-Layout::dropPanel.topLeft()),
                          noFile, RetroTheme::songName());
    fileLabel_->setOverflow(RetroLabelOverflow::shrinkThenTruncate);
    counterView_ = addView<SevenSegmentCounterView>(this, "counterView", Layout::counter);
    moduleZone_ = addView<LoadedBlueRectangleView>(this, "moduleZone", Layout::moduleZone);
    makeAccessible<PictureView, AccessibleView<QAccessible::Graphic>>();
    logoView_ = addView<PictureView>(this, "logoView", Layout::logo, QString(":/MIDI_LOGO.svg"));
    logoView_->setAccessibleName("MIDI logo");
    buildLabels();
    timeline_ = new RetroTimelineView(log_, this);
    timeline_->setObjectName("timeline");
    timeline_->setGeometry(Layout::timeline);
    trackBarsView_ = addView<MIDITrackBarsView>(this, "trackBarsView", Layout::trackBars);
    buildButtons();
    wireViews();
    showLoaded(false);
}

void MainViewController::buildLabels() {
    namespace Layout = MainViewLayout;
    gmModuleLabel_ = addLabel(this, "gmModuleLabel", Layout::gmModule, "GM Module", RetroTheme::module());
    tempoLabel_ = addLabel(this, "tempoLabel", Layout::tempo, noTempo);
    keyLabel_ = addLabel(this, "keyLabel", Layout::key, noKey);
    tracksLabel_ = addLabel(this, "tracksLabel", Layout::tracks, noTracks);
    lengthLabel_ = addLabel(this, "lengthLabel", Layout::length, noLength);
    progressLabel_ = addLabel(this, "progressLabel", Layout::progress, noProgress);
}

void MainViewController::buildButtons() {
    struct Row {
        const char* name;
        const char* title;
        void (MainViewController::*action)();
    };
    constexpr std::array<Row, MainViewLayout::buttons.size()> rows{{
        {"playPauseButton", "Play", &MainViewController::playPause},
        {"stopButton", "Stop", &MainViewController::stop},
        {"rtzButton", "RTZ", &MainViewController::rtz},
        {"loudnessButton", "Loudness", &MainViewController::toggleLoudness},
        {"clearButton", "Clear", &MainViewController::clearLoadedMIDI},
    }};
    std::array<RetroButton*, rows.size()> buttons{};
    for (std::size_t at = 0; at < rows.size(); ++at) {
        buttons[at] = addView<RetroButton>(this, rows[at].name, MainViewLayout::buttons[at], rows[at].title,
                                           [this, action = rows[at].action] { (this->*action)(); });
        buttons[at]->setAutoDefault(true); // Return presses it, and not the space bar alone.
    }
    playPauseButton_ = buttons[0];
    loudnessButton_ = buttons[3];
}

void MainViewController::wireViews() {
    timeline_->onSeek = [this](double position) {
        log_.procedure("MainViewController.timeline.onSeek",
                       [position] { return "Timeline requested seek to " + decimalText(position); });
        player_.seek(position);
    };
    dropPanel_->onFile = [this](const QUrl& url) {
        log_.procedure("MainViewController.dropPanel.onFile",
                       [&url] { return "Drop panel requested load for " + url.fileName().toStdString(); });
        load(localPath(url));
    };
}

void MainViewController::openFile() {
    constexpr std::string_view name = "MainViewController.openFile";
    log_.userAction("Clicked Open MIDI File menu item", name);
    const auto file = services_.chooseFile();
    if (!file) {
        log_.procedure(name, "Open MIDI File panel cancelled");
        return;
    }
    log_.procedure(name, [&file] { return "Open panel selected " + displayName(*file); });
    load(*file);
}

void MainViewController::playPause() {
    if (player_.mode() == PlaybackMode::playing)
        afterLoad_ = AfterLoad::wait;
    transportCoordinator_->playPause();
}
void MainViewController::stop() {
    afterLoad_ = AfterLoad::wait;
    transportCoordinator_->stop();
}
void MainViewController::rtz() {
    transportCoordinator_->rtz();
}
void MainViewController::fallSilent() {
    afterLoad_ = AfterLoad::wait;
    if (player_.mode() == PlaybackMode::playing)
        player_.stop();
}
void MainViewController::toggleLoudness() {
    transportCoordinator_->toggleLoudness();
}

void MainViewController::load(const std::filesystem::path& url, AfterLoad after) {
    log_.function(loading, [&url] { return "Loading MIDI file " + displayName(url); });
    const std::int64_t generation = loadCoordinator_.begin();
    afterLoad_ = after;
    showStatus("Loading");
    activityView_->setAnimating(true);
    const std::stop_source task;
    loadCoordinator_.setTask(task);
    loader_.load(url, task.get_token(),
                 [this, generation](LoadOutcome outcome) { takeOutcome(generation, std::move(outcome)); });
}

void MainViewController::takeOutcome(std::int64_t generation, LoadOutcome outcome) {
    if (generation == loadCoordinator_.generation()) {
        try {
            if (outcome.error)
                std::rethrow_exception(outcome.error);
            applyLoadedFile(outcome.song);
            if (afterLoad_ == AfterLoad::play && player_.mode() != PlaybackMode::playing)
                playPause();
        } catch (const TambrelLoadCancelled&) { // Whoever cancelled has seen to the interface.
        } catch (const std::exception& error) {
            handleLoadFailure(error);
        }
    }
    if (outcome.song && outcome.song != song_)
        loader_.dispose(std::move(outcome.song));
}

void MainViewController::applyLoadedFile(const std::shared_ptr<const LoadedSong>& song) {
    const TambrelLoadedFile& file = song->file;
    if (file.importSummary) {
        log_.function(loading,
                      [&file] { return "Routed " + file.fileName + " through MIDI 2.0 clip importer"; });
        log_.procedure(loading, [&file] {
            return "MIDI 2.0 import summary: " + file.importSummary->debugDescription();
        });
    }
    takePlaybackData(*song);
    showLoadedFile(file);
    replaceSong(song);
    log_.procedure(loading, [&] {
        return "Loaded " + file.fileName + "; tracks " + std::to_string(file.info.displayTrackCount) +
               "; duration " + timeText(player_.duration());
    });
    if (services_.loadFinished)
        services_.loadFinished({});
}

void MainViewController::takePlaybackData(const LoadedSong& song) {
    const TambrelLoadedFile& file = song.file;
    playbackState_.replaceLoadedMIDI(file.playbackData);
    transportCoordinator_->updateLoudnessButton();
    if (file.importedMIDI2ClipData)
        playbackState_.cacheImportedMIDI2ClipCompanion(*file.importedMIDI2ClipData);
    else if (file.midi2ClipCompanionSummary)
        playbackState_.cacheGeneratedMIDI2ClipCompanion(file.midi2ClipCompanionData,
                                                        *file.midi2ClipCompanionSummary, false, loading);
    try {
        services_.adoptSong(song);
        player_.load(file.playbackData);
    } catch (const std::exception& error) {
        throw TambrelLoadError::playbackPreparationFailed(TambrelLoadError::diagnosticReason(error));
    }
}

void MainViewController::showLoadedFile(const TambrelLoadedFile& file) {
    const MIDIFileInfo& info = file.info;
    fileLabel_->setText(toQString(file.fileName));
    fileLabel_->show();
    showStatus(toQString(file.loadedStatus));
    tempoLabel_->setText(info.tempoBPM ? QString::asprintf("%.3f BPS", *info.tempoBPM) : noTempo);
    keyLabel_->setText(info.keySignature ? "KEY " + toQString(*info.keySignature) : noKey);
    tracksLabel_->setText(QString::number(info.displayTrackCount) + " Tracks");
    trackBarsView_->setTrackCount(info.displayTrackCount);
    trackBarsView_->setLanes(info.timelineLanes);
    trackBarsView_->setProgress(0);
    lengthLabel_->setText("LENGTH " + toQString(timeText(player_.duration())));
    progressLabel_->setText(noProgress);
    counterView_->setText(noTime);
    showLoaded(true);
    activityView_->setAnimating(false);
}

void MainViewController::handleLoadFailure(const std::exception& error) {
    log_.function(loading, [&error] { return std::string("Error: ") + error.what(); });
    const auto* known = dynamic_cast<const TambrelLoadError*>(&error);
    if (known != nullptr)
        log_.procedure(loading, [known] { return known->diagnosticDescription(); });
    player_.unload();
    playbackState_.reset();
    transportCoordinator_->updateLoudnessButton();
    const TambrelLoadError shown =
        known != nullptr
            ? *known
            : TambrelLoadError::playbackPreparationFailed(TambrelLoadError::diagnosticReason(error));
    resetLoadedMIDIInterface(toQString(shown.userMessage()), toQString(shown.statusTitle()));
    showStatus(toQString(shown.statusTitle()), toQString(shown.diagnosticDescription()));
    services_.beep();
    replaceSong(nullptr);
    if (services_.loadFinished)
        services_.loadFinished(shown.diagnosticDescription());
}

void MainViewController::playbackPreparationFailed(const std::string& reason) {
    loadCoordinator_.cancel();
    handleLoadFailure(TambrelLoadError::playbackPreparationFailed(reason));
}

void MainViewController::clearLoadedMIDI() {
    log_.userAction("Clicked Clear loaded MIDI button", "MainViewController.clearLoadedMIDI");
    loadCoordinator_.cancel();
    player_.unload();
    playbackState_.reset();
    transportCoordinator_->updateLoudnessButton();
    resetLoadedMIDIInterface(noFile, ready);
    replaceSong(nullptr);
}

void MainViewController::resetLoadedMIDIInterface(const QString& fileText, const QString& statusText) {
    showLoaded(false);
    fileLabel_->setText(fileText);
    fileLabel_->show();
    showStatus(statusText);
    tempoLabel_->setText(noTempo);
    keyLabel_->setText(noKey);
    tracksLabel_->setText(noTracks);
    lengthLabel_->setText(noLength);
    progressLabel_->setText(noProgress);
    counterView_->setText(noTime);
    timeline_->setDuration(0);
    timeline_->setPosition(0);
    trackBarsView_->setTrackCount(0);
    trackBarsView_->setLanes({});
    trackBarsView_->setProgress(0);
    activityView_->setAnimating(false);
    playPauseButton_->setText("Play");
    loudnessButton_->setEnabled(true);
}

void MainViewController::showStatus(const QString& title, const QString& explanation) {
    statusLabel_->setText(title);
    statusLabel_->setToolTip(explanation.toHtmlEscaped()); // A file name may look like markup.
    statusLabel_->setAccessibleDescription(explanation);
}

void MainViewController::showLoaded(bool isLoaded) {
    dropPanel_->setLoaded(isLoaded);
    moduleZone_->setLoaded(isLoaded);
    logoView_->setVisible(isLoaded);
    gmModuleLabel_->setVisible(isLoaded);
}

// The old song is freed off the main thread, after the player and the playback state have let go of it, and
// last of all: meanwhile the main thread has to wait when it needs memory from the system.
void MainViewController::replaceSong(std::shared_ptr<const LoadedSong> song) {
    if (auto old = std::exchange(song_, std::move(song)))
        loader_.dispose(std::move(old));
    report(PlaybackChange::song);
}

void MainViewController::report(PlaybackChange change) const {
    if (onPlaybackChange)
        onPlaybackChange(change);
}

} // namespace tambrel
