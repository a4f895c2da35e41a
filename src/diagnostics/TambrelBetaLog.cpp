#include "TambrelBetaLog.h"

#include <QDir>
#include <QStandardPaths>

#include <cassert>
#include <utility>

namespace tambrel {

QString betaLogFolder(const QString& applicationData) {
    const QString base = applicationData.isEmpty() ? QDir::tempPath() : applicationData;
    return base + QStringLiteral("/Kestrune Software/Tambrel/Beta Logs");
}

QString standardBetaLogFolder() {
    return betaLogFolder(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
}

TambrelBetaLog& TambrelBetaLog::shared() {
    static TambrelBetaLog& log = *new TambrelBetaLog;
    return log;
}

void TambrelBetaLog::configure(TambrelBetaLogServices services) {
    assert(!services_);
    services_.emplace(std::move(services));
}

void TambrelBetaLog::close() {
    store_.reset();
    reports_.reset();
    mediumDateTime_ = nullptr;
    debugWindow_.reset();
    isSessionFinished_ = false;
    services_.reset();
}

void TambrelBetaLog::error(const std::exception& error, std::string_view function) {
    if (diagnosticsEnabled())
        log(std::string("Error: ").append(error.what()), function);
}

TambrelBetaLog::Launch TambrelBetaLog::startSession() {
    if (!diagnosticsEnabled() || isRunningUnderXCTest())
        return Launch::goesOn;
    if (askForConsentOnce() == Launch::isOver)
        return Launch::isOver;
    if (fileLoggingEnabled())
        startSessionInStore();
    else
        debug("betaLOG file logging disabled. Debugging Window logging remains available.");
    return Launch::goesOn;
}

void TambrelBetaLog::startSessionInStore() {
    store().run([header = initialLogText(), marker = "Session active since " + timestamp() + '\n',
                 line = formattedLine("Application Session Started", "TambrelBetaLog.startSession")](
                    TambrelBetaLogStore& files) { return files.startSession(header, marker, line); },
                [this](const TambrelBetaLogStore::StartResult& result) { sessionStarted(result); });
}

void TambrelBetaLog::finishSession() {
    if (!diagnosticsEnabled() || std::exchange(isSessionFinished_, true))
        return;
    log("Application Session Ended Normally", "TambrelBetaLog.finishSession");
    store().run([](TambrelBetaLogStore& files) { files.finishSession(); });
}

void TambrelBetaLog::waitUntilWritten() {
    if (store_)
        store_->wait();
}

void TambrelBetaLog::showDebugWindow() {
    if (!diagnosticsEnabled() || !services_->makeDebugWindow)
        return;
    if (!debugWindow_) {
        debugWindow_ = services_->makeDebugWindow(*this);
        debugWindow_->append("Tambrel Debugging Window opened.\n");
    }
    debugWindow_->showInFront();
    log("User Opened Debugging Window", "TambrelBetaLog.showDebugWindow");
}

void TambrelBetaLog::log(std::string_view message, std::string_view function) {
    auto line = formattedLine(message, function);
    show(line);
    if (!fileLoggingEnabled())
        return;
    store().run([header = initialLogText(), line = std::move(line)](
                    const TambrelBetaLogStore& files) { return files.writeEntry(header, line); },
                [this](const std::optional<std::string>& failure) {
                    if (failure)
                        debug("betaLOG write failed: " + *failure);
                });
}

void TambrelBetaLog::debug(std::string_view text) {
    show('[' + timestamp().append("] ").append(text) + '\n');
}

bool TambrelBetaLog::fileLoggingEnabled() const {
    return services_->settings.value(fileLoggingEnabledKey, false).toBool();
}

std::string TambrelBetaLog::timestamp() {
    if (!mediumDateTime_)
        mediumDateTime_ = makeMediumDateTimeFormatter(timeLocale(services_->environment));
    return mediumDateTime_(services_->now());
}

std::string TambrelBetaLog::applicationInfoReport() {
    const auto& info = services_->info;
    const std::string unknown = "Unknown";
    const auto name = info.displayName ? info.displayName : info.name;
    return "Tambrel App Info:\nApp Name: " + name.value_or("Tambrel") +
           "\nVersion: " + info.shortVersion.value_or(unknown) + "\nBuild: " + info.build.value_or(unknown) +
           "\nBundle Identifier: " + info.identifier.value_or(unknown) +
           "\nDiagnostics Enabled: " + (diagnosticsEnabled() ? "YES" : "NO") + "\nCollected: " + timestamp();
}

BetaLogStoreThread& TambrelBetaLog::store() {
    if (!store_)
        store_ = std::make_unique<BetaLogStoreThread>(*services_);
    return *store_;
}

BugReports& TambrelBetaLog::reports() {
    if (!reports_)
        reports_.emplace(*services_, store(), [this](std::string_view text) { debug(text); });
    return *reports_;
}

BugReportMoment TambrelBetaLog::thisMoment() {
    return {.collectedAt = timestamp(),
            .applicationInfo = applicationInfoReport(),
            .fileLoggingEnabled = fileLoggingEnabled()};
}

void TambrelBetaLog::emailCompleteBugReport() {
    reports().emailLog(thisMoment(), debugWindow_ ? debugWindow_->text() : std::string());
}

void TambrelBetaLog::emailDebugWindowText(std::string text) {
    if (!diagnosticsEnabled())
        return;
    log("User Clicked Email Debugging Window Text", "TambrelBetaLog.emailDebugWindowText");
    reports().emailWindow(thisMoment(), std::move(text));
}

void TambrelBetaLog::revealBetaLogFile() {
    if (!diagnosticsEnabled())
        return;
    log("User Clicked Reveal Beta Log File", "TambrelBetaLog.revealBetaLogFile");
    store().run([isEnabled = fileLoggingEnabled()](
                    const TambrelBetaLogStore& files) { return files.revealableLogURL(isEnabled); },
                [this](const std::optional<QUrl>& url) {
                    if (url)
                        services_->revealFile(*url);
                    else
                        services_->beep();
                });
}

void TambrelBetaLog::logDetail(std::string_view detail, std::string_view whenEmpty,
                               std::string_view function) {
    log(detail.empty() ? whenEmpty : detail, function);
}

void TambrelBetaLog::logUserAction(std::string_view message, std::string_view function) {
    if (std::exchange(isSessionFinished_, false) && fileLoggingEnabled())
        startSessionInStore();
    log(std::string("User Action: ").append(message), function);
}

void TambrelBetaLog::show(const std::string& line) const {
    if (debugWindow_)
        debugWindow_->append(line);
}

bool TambrelBetaLog::isRunningUnderXCTest() const {
    return services_->environment("XCTestConfigurationFilePath").has_value();
}

std::string TambrelBetaLog::formattedLine(std::string_view message, std::string_view function) {
    return '[' + timestamp().append("] ").append(message).append(" | ").append(function) + '\n';
}

std::string TambrelBetaLog::initialLogText() {
    return "Tambrel betaLOG\nCreated: " + timestamp() +
           "\nPurpose: crash and freeze reports for Kestrune Software beta testing.\n\n" +
           applicationInfoReport() + '\n';
}

TambrelBetaLog::Launch TambrelBetaLog::askForConsentOnce() {
    auto& settings = services_->settings;
    if (settings.value(consentAskedKey, false).toBool())
        return Launch::goesOn;
    const auto allowed = services_->ask(
        {.message = "Allow Tambrel to create a beta log file?",
         .informative = "The beta log is used only for crashes and freezes. You can still use the Debugging "
                        "Window if you choose not to create a file.",
         .firstButton = "Allow",
         .secondButton = "Not Now"});
    if (!allowed)
        return Launch::isOver;
    settings.setValue(consentAskedKey, true);
    settings.setValue(fileLoggingEnabledKey, *allowed);
    // At once: after a crash the next run must not ask again.
    settings.sync();
    return Launch::goesOn;
}

void TambrelBetaLog::sessionStarted(const TambrelBetaLogStore::StartResult& result) {
    if (result.errorMessage)
        debug("betaLOG file setup failed: " + *result.errorMessage);
    if (!result.previousSessionWasActive)
        return;
    log("Possible previous crash or forced quit detected", "TambrelBetaLog.startSession");
    offerBugReport();
}

void TambrelBetaLog::offerBugReport() {
    const auto accepted =
        services_->ask({.message = "Tambrel may not have closed normally last time.",
                        .informative = "Would you like to email the beta log to Kestrune Software?",
                        .firstButton = "Email Report",
                        .secondButton = "Not Now"});
    if (!accepted)
        return; // The next run asks again.
    if (*accepted)
        emailCompleteBugReport();
    else
        store().run([](TambrelBetaLogStore& files) { files.settlePreviousSession(); });
}

} // namespace tambrel
