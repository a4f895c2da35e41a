#include "MainViewController.h"

#include "DecimalText.h"
#include "LocalPath.h"
#include "MainView.h"
#include "QtText.h"
#include "TambrelBetaLog.h"
#include "TimeText.h"
#include "UTF8.h"

#include <QUrl>

#include <string_view>
#include <utility>

namespace tambrel {
namespace {

constexpr std::string_view openingFile = "MainViewController.openFile";

MainViewFacts factsOf(const TambrelLoadedFile& file, double duration) {
    const MIDIFileInfo& info = file.info;
    MainViewFacts facts{.file = toQString(file.fileName),
                        .status = toQString(file.loadedStatus),
                        .trackCount = info.displayTrackCount,
                        .duration = duration,
                        .lanes = info.timelineLanes,
                        .isLoaded = true};
    if (info.tempoBPM)
        facts.tempo = QString::asprintf("%.3f BPS", *info.tempoBPM);
    if (info.keySignature)
        facts.key = "KEY " + toQString(*info.keySignature);
    return facts;
}

std::string companionText(const TambrelLoadedFile& file) {
    const auto& summary = file.midi2ClipCompanionSummary;
    if (file.importedMIDI2ClipData)
        return "the file itself";
    return summary && summary->hasChannelVoice() ? std::to_string(summary->byteCount) + " bytes" : "none";
}

std::vector<SongFact> fileFacts(const TambrelLoadedFile& file, double duration) {
    const MIDIFileInfo& info = file.info;
    std::vector<SongFact> facts{
        {"File", UTF8::repaired(file.url.native())},
        {"Status", file.loadedStatus},
        {"Format", std::to_string(info.format)},
        {"Tracks",
         std::to_string(info.displayTrackCount) + (info.wasExplodedFromFormat0 ? " (one per channel)" : "")},
        {"Key", info.keySignature.value_or("-")},
        {"Length", timeText(duration)},
        {"MIDI 2.0", companionText(file)},
    };
    if (const auto& import = file.importSummary)
        facts.push_back({"Import", std::to_string(import->importedPackets) + " of " +
                                       std::to_string(import->totalPackets) + " packets, " +
                                       std::to_string(import->unsupportedPackets) + " dropped"});
    return facts;
}

} // namespace

MainViewController::MainViewController(MainViewServices services, TambrelBetaLog& log)
    : services_(std::move(services)),
      log_(log),
      view_(makeView()),
      spokenStatus_([this](const QString& text) { view_->say(text); }),
      session_({services_.makePlayer, services_.buildTimeline}, sessionEvents(), log),
      transportCoordinator_(view_->transportControls(session_, services_.beep), log) {
    transportCoordinator_.wirePlayer();
    session_.player().onChange = [this](PlaybackChange change) { report(change); };
}

QWidget& MainViewController::view() const {
    return *view_;
}

MainView* MainViewController::makeView() {
    log_.procedure("MainViewController.loadView", "Creating Tambrel root view");
    log_.procedure("MainViewController.viewDidLoad", "Main controller view loaded");
    log_.procedure("MainViewController.buildInterface",
                   "Building controls, labels, drop target, and transport");
    const auto seekTo = [this](double position) {
        log_.procedure("MainViewController.timeline.onSeek",
                       [position] { return "Timeline requested seek to " + decimalText(position); });
        seek(position);
    };
    const auto open = [this](const QUrl& url) {
        log_.procedure("MainViewController.dropPanel.onFile",
                       [&url] { return "Drop panel requested load for " + url.fileName().toStdString(); });
        load(localPath(url));
    };
    UserActionLog logUser;
    if (log_.diagnosticsEnabled())
        logUser = [this](auto action, auto procedure) { log_.userAction(action, procedure); };
    return new MainView({.playPause = [this] { playPause(); },
                         .stop = [this] { stop(); },
                         .rtz = [this] { rtz(); },
                         .toggleLoudness = [this] { toggleLoudness(); },
                         .clear = [this] { clearLoadedMIDI(); },
                         .seek = seekTo,
                         .open = open,
                         .log = std::move(logUser)});
}

SongSessionEvents MainViewController::sessionEvents() {
    return {.leaving = [this] { transportCoordinator_.dropWaitingPlay(); },
            .loading = [this] { view_->showLoading(); },
            .loaded = [this](const TambrelLoadedFile& file) { showLoaded(file); },
            .failed = [this](const TambrelLoadError& error) { showFailure(error); },
            .cleared =
                [this] {
                    transportCoordinator_.updateLoudnessButton();
                    view_->show(MainViewFacts());
                    spokenStatus_.songChanged("Cleared");
                },
            .changed =
                [this] {
                    report(PlaybackChange::song);
                    if (services_.songChanged)
                        services_.songChanged();
                },
            .finished =
                [this](const std::string& failure) {
                    if (services_.loadFinished)
                        services_.loadFinished(failure);
                },
            .playWanted = [this] { transportCoordinator_.carryOutPlayPause(); }};
}

void MainViewController::showLoaded(const TambrelLoadedFile& file) {
    transportCoordinator_.updateLoudnessButton();
    const MainViewFacts facts = factsOf(file, player().duration());
    view_->show(facts);
    spokenStatus_.songChanged(facts.status + ": " + facts.file);
}

void MainViewController::showFailure(const TambrelLoadError& error) {
    transportCoordinator_.updateLoudnessButton();
    view_->show({.file = toQString(error.userMessage()),
                 .status = toQString(error.statusTitle()),
                 .explanation = toQString(error.diagnosticDescription())});
    spokenStatus_.songChanged(
        toQString(std::string(error.statusTitle()) + ": " + error.diagnosticDescription()));
    services_.beep();
}

void MainViewController::showOutputLoss(bool isLost) {
    const QString notice = "Sound output lost; waiting for it to come back";
    view_->showNotice(isLost ? notice : QString());
    view_->say(isLost ? notice : QString("Sound output is back"));
}

void MainViewController::load(const std::filesystem::path& url, AfterLoad after) {
    session_.load(url, after);
}

void MainViewController::openFile() {
    log_.userAction("Clicked Open MIDI File menu item", openingFile);
    carryOutOpen();
}

void MainViewController::carryOutOpen() {
    const auto file = services_.chooseFile(loadedFile() ? loadedFile()->url : std::filesystem::path());
    if (!file) {
        log_.procedure(openingFile, "Open MIDI File panel cancelled");
        return;
    }
    log_.procedure(openingFile,
                   [&file] { return "Open panel selected " + UTF8::repaired(file->filename().native()); });
    load(*file);
}

void MainViewController::clearLoadedMIDI() {
    log_.userAction("Clicked Clear loaded MIDI button", "MainViewController.clearLoadedMIDI");
    session_.clear();
}

void MainViewController::playPause() {
    if (player().mode() == PlaybackMode::playing)
        session_.setAfterLoad(AfterLoad::wait);
    transportCoordinator_.playPause();
}

bool MainViewController::carryOutPlayPause() {
    const bool isToPlay = session_.isLoading() && session_.afterLoad() == AfterLoad::play;
    if (player().mode() == PlaybackMode::playing || isToPlay)
        carryOutPause();
    else
        carryOutPlay();
    return session_.isLoading() || loadedFile() != nullptr;
}

void MainViewController::carryOutPlay() {
    if (player().mode() == PlaybackMode::playing)
        return;
    if (session_.isLoading())
        session_.setAfterLoad(AfterLoad::play);
    else
        transportCoordinator_.carryOutPlayPause();
}

void MainViewController::carryOutPause() {
    session_.setAfterLoad(AfterLoad::wait);
    if (player().mode() == PlaybackMode::playing)
        transportCoordinator_.carryOutPlayPause();
}

void MainViewController::stop() {
    noteStop();
    transportCoordinator_.stop();
}

void MainViewController::carryOutStop() {
    noteStop();
    transportCoordinator_.carryOutStop();
}

void MainViewController::noteStop() {
    session_.setAfterLoad(AfterLoad::wait);
    spokenStatus_.stopping();
}

void MainViewController::rtz() {
    transportCoordinator_.rtz();
}

void MainViewController::fallSilent() {
    session_.setAfterLoad(AfterLoad::wait);
    session_.dropWhatWaits();
    if (player().mode() == PlaybackMode::playing)
        session_.player().stop();
}

void MainViewController::explain(const std::string& text) {
    view_->explainStatus(toQString(text));
    spokenStatus_.songChanged(toQString(text));
}

void MainViewController::playbackFailed(const std::string& reason) {
    spokenStatus_.songChanged(toQString(transportCoordinator_.playbackFailed(reason)));
}

void MainViewController::toggleLoudness() {
    transportCoordinator_.toggleLoudness();
}

std::optional<SongPageFacts> MainViewController::songFacts() const {
    const TambrelLoadedFile* file = loadedFile();
    if (file == nullptr)
        return std::nullopt;
    return SongPageFacts{fileFacts(*file, player().duration()), file->playbackData};
}

void MainViewController::report(PlaybackChange change) {
    if (change == PlaybackChange::mode)
        spokenStatus_.modeChanged(player().mode());
    if (onPlaybackChange)
        onPlaybackChange(change);
}

} // namespace tambrel
