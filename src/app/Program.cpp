#include "Program.h"

#include "AppDialogs.h"
#include "AudioDrivers.h"
#include "DesktopApplication.h"
#include "DiagnosticServices.h"
#include "LocalPath.h"
#include "MainWindow.h"
#include "QtText.h"
#include "SessionBus.h"
#include "SoundBank.h"
#include "StartupNotification.h"
#include "SuddenExit.h"
#include "SynthesizerFactory.h"
#include "TambrelBetaLog.h"
#include "TambrelLoadError.h"
#include "TerminationSignals.h"
#include "ThreadPriority.h"
#include "Timeline.h"

#include <QApplication>
#include <QTimer>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <system_error>
#include <utility>

namespace tambrel {
namespace {

AfterLoad afterLoad(bool plays) {
    return plays ? AfterLoad::play : AfterLoad::wait;
}

constexpr const char* volumeKey = "Volume"; // 0 to 1.
constexpr const char* loopKey = "Loop";
constexpr const char* soundBankKey = "SoundBank"; // A path; absent for the system's default.

GeneralMIDIOptions engineOptions(const CommandLine& commandLine, const QSettings& settings) {
    GeneralMIDIOptions options{.soundBank = commandLine.soundBank,
                               .preferredSoundBank = settings.value(soundBankKey).toString().toStdString(),
                               .audioDrivers = commandLine.audioDrivers};
    if (!commandLine.screenshot.empty())
        options.audioDrivers = {std::string(silentDriverName)};
    return options;
}

std::shared_ptr<const Timeline> buildTimeline(const MIDIData& song, const std::stop_token& stop,
                                              std::shared_ptr<const Timeline> original) {
    try {
        return Timeline::build(song, stop, std::move(original));
    } catch (const TimelineCancelled&) {
        throw TambrelLoadCancelled();
    }
}

// A picture is no session of the user's: without its services the log is off.
TambrelBetaLog& programLog(QSettings& settings, const CommandLine& commandLine) {
    TambrelBetaLog& log = TambrelBetaLog::shared();
    if (commandLine.screenshot.empty())
        log.configure(diagnosticServices(settings));
    return log;
}

} // namespace

Program::Program(CommandLine commandLine, DesktopApplication& desktop)
    : commandLine_(std::move(commandLine)),
      desktop_(desktop),
      log_(programLog(settings_, commandLine_)),
      engine_(engineOptions(commandLine_, settings_)),
      delegate_(services(), log_) {
    engine_.setVolume(std::clamp(settings_.value(volumeKey, 1.0).toDouble(), 0.0, 1.0));
    engine_.setLooping(settings_.value(loopKey, false).toBool());
    engine_.onNotice = [this](const std::string& sentence) {
        log_.procedure("GeneralMIDIEngine.watchOutput", sentence);
    };
    serve();
}

Program::~Program() = default;

AppDelegateServices Program::services() {
    return {.view = {.makePlayer = [this](const PlayableSong& song) { return engine_.makePlayer(song); },
                     .buildTimeline = buildTimeline,
                     .beep = [] { QApplication::beep(); },
                     .chooseFile =
                         [this](const std::filesystem::path& loaded) {
                             return chooseMIDIFile(loaded, settings_);
                         },
                     .loadFinished = [this](const std::string& failure) { loadFinished(failure); }},
            .settings = settings_,
            .about = [this] { return aboutFacts(); },
            .showDebuggingWindow = [this] { log_.showDebugWindow(); },
            .isLooping = [this] { return engine_.isLooping(); },
            .setLooping = [this](bool isLooping) { setLooping(isLooping); },
            .didFinishLaunching = [this](MainViewController& view) { didFinishLaunching(view); },
            .purpose = picture_.isOn() ? LaunchPurpose::picture : LaunchPurpose::use};
}

void Program::serve() {
    desktop_.onActivate = [this](const LaunchContext& context) { bringToFront(context); };
    desktop_.onOpen = [this](const QStringList& uris, const LaunchContext& context) {
        delegate_.applicationOpen(uris, afterLoad(context.play), context.activationToken);
        endStartupNotification(*delegate_.window(), context.startupId);
    };
    desktop_.onAction = [this](const QString& action, const LaunchContext& context) {
        if (action == "open")
            bringToFront(context);
        else
            endStartupNotification(*delegate_.window(), context.startupId);
        // The caller is answered first: a user may take long to choose a file.
        QTimer::singleShot(0, &delegate_, [this, action] { delegate_.performAction(action); });
    };
}

void Program::bringToFront(const LaunchContext& context) {
    delegate_.raiseWindow(context.activationToken);
    endStartupNotification(*delegate_.window(), context.startupId);
}

int Program::run() {
    const TerminationSignals signalsEndNormally;
    const SuddenExit sessionEndsNormally([this] { delegate_.sessionWillEnd(); });
    if (!commandLine_.files.empty())
        delegate_.applicationOpenFiles(commandLine_.files, afterLoad(commandLine_.play && !picture_.isOn()));
    delegate_.applicationDidFinishLaunching();
    delegate_.window()->onClose = [this] { desktop_.release(); };
    const int status = QApplication::exec();
    fallSilent();
    delegate_.applicationWillTerminate();
    delegate_.window()->hide(); // Whatever is still to be finished, the user need not watch it.
    log_.close();
    if (engine_.isLoadingSoundBank())
        std::_Exit(status); // To finish loading a large bank would take seconds.
    return status;
}

// The rest of the end may take a while; nothing is heard or seen of the program meanwhile.
void Program::fallSilent() {
    desktop_.release();
    mediaControls_.reset();
    if (view_)
        view_->fallSilent();
}

void Program::didFinishLaunching(MainViewController& view) {
    view_ = &view;
    if (!picture_.isOn())
        mediaControls_.emplace(
            *delegate_.window(), [this] { delegate_.raiseWindow(); }, view,
            VolumeControl{[this] { return engine_.volume(); }, [this](double volume) { setVolume(volume); }},
            LoopControl{[this] { return engine_.isLooping(); },
                        [this](bool isLooping) { setLooping(isLooping); }},
            log_, sessionBus());
    engine_.onFailure = [this](const std::string& reason) { view_->playbackPreparationFailed(reason); };
    engine_.onOutputChange = [this] { delegate_.soundChanged(); };
    engine_.onOutputFailure = [this](const std::string& reason) { view_->playbackFailed(reason); };
    engine_.onUsualThread = [](std::uint64_t thread) { ThreadPriority().raise(thread); };
    engine_.onOutputLoss = [this](bool isLost) { view_->showOutputLoss(isLost); };
    if (picture_.isOn())
        picture_.begin(view);
}

void Program::loadFinished(const std::string& failure) {
    if (picture_.isOn())
        return picture_.take(*view_, failure);
    if (!failure.empty())
        return complain(failure);
    const TambrelLoadedFile& file = *view_->loadedFile();
    recentFiles_.add({fileURI(file.url), file.importSummary ? "audio/x-midi2-clip" : "audio/midi"});
}

AboutFacts Program::aboutFacts() {
    return {.info = ApplicationInfo::current(),
            .builtOn =
                "Qt " + std::string(qVersion()) + ", " + synthesizerVersion() + ", " + dateFormatterVersion(),
            .sound = soundFacts()};
}

SoundPageFacts Program::soundFacts() {
    SoundPageFacts facts{.banks = {{"System's default", ""}},
                         .bankInUse = [this] { return soundBankText(); },
                         .output = [this] { return outputText(); },
                         .volume = [this] { return engine_.volume(); },
                         .chooseBank = [this](const std::string& path) { chooseSoundBank(path); },
                         .setVolume = [this](double volume) { setVolume(volume); }};
    const auto& [named, preferred] = engine_.soundBankWish();
    const auto& wanted = named.empty() ? preferred : named;
    for (const SoundBankFile& bank : soundBanks()) {
        if (bank.path == wanted)
            facts.chosenBank = facts.banks.size();
        facts.banks.push_back({bank.name(), bank.path.string()});
    }
    return facts;
}

void Program::chooseSoundBank(const std::string& path) {
    path.empty() ? settings_.remove(soundBankKey) : settings_.setValue(soundBankKey, toQString(path));
    try {
        engine_.chooseSoundBank(path);
    } catch (const SoundBankError& error) {
        log_.procedure("GeneralMIDIEngine.chooseSoundBank", error.what());
    }
}

void Program::setVolume(double volume) {
    engine_.setVolume(volume);
    settings_.setValue(volumeKey, volume);
    delegate_.soundChanged();
    if (mediaControls_)
        mediaControls_->settingChanged();
}

void Program::setLooping(bool isLooping) {
    engine_.setLooping(isLooping);
    settings_.setValue(loopKey, isLooping);
    if (mediaControls_)
        mediaControls_->settingChanged();
}

std::string Program::outputText() const {
    const auto& named = commandLine_.audioDrivers;
    const auto drivers = named.empty() ? defaultAudioDrivers() : named;
    std::string inUse = engine_.output();
    if (drivers.size() == 1 && !inUse.empty())
        return inUse;
    std::string text =
        (inUse.empty() ? "None while nothing plays" : inUse) + "\nTried in turn: " + drivers.front();
    for (const std::string& driver : std::span(drivers).subspan(1))
        text += ", " + driver;
    return text;
}

// The bank's path, and where that leads to: a default bank is a link.
std::string Program::soundBankText() const {
    try {
        const auto bank =
            engine_.soundBank().empty() ? banksToTry(engine_.soundBankWish()).front() : engine_.soundBank();
        std::error_code isMissing;
        const auto file = std::filesystem::canonical(bank, isMissing);
        return isMissing || file == bank ? bank.string() : bank.string() + "\nis " + file.string();
    } catch (const SoundBankError& error) {
        return error.what();
    }
}

} // namespace tambrel
