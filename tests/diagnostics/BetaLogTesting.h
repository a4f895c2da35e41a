#pragma once

#include "RecordingWindow.h"
#include "TestFiles.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

namespace tambrel {

/// A log on private folders, at a fixed time, with services that only record.
class BetaLogTest : public ::testing::Test {
protected:
    /// Ends the run as a crash would, but with everything written, and starts the next one. `answer` is the
    /// reply to its questions.
    void startRun(std::optional<bool> answer = true) {
        log.close();
        log.configure(services(answer));
    }

    [[nodiscard]] TambrelBetaLogServices services(std::optional<bool> answer = true) {
        return {.info = info,
                .settings = settings,
                .ask =
                    [this, answer](const ModalQuestion& question) {
                        asked.push_back(question.message + '/' + question.informative + '/' +
                                        question.firstButton + '/' + question.secondButton);
                        return answer;
                    },
                .copyToClipboard =
                    [this](const QString& text) {
                        order += "clipboard ";
                        clipboard = text.toStdString();
                    },
                .composeEmail =
                    [this](const EmailDraft& draft, const std::function<void()>& whenThereIsNone) {
                        order += "email ";
                        drafts.push_back(draft);
                        if (!hasMailService)
                            whenThereIsNone();
                    },
                .openLink =
                    [this](const QUrl& url) {
                        order += "link ";
                        links.push_back(url);
                    },
                .revealFile = [this](const QUrl& url) { links.push_back(url); },
                .beep = [this] { ++beeps; },
                .makeDebugWindow = RecordingWindow::maker([this](const auto& text) { window += text; }),
                .profiler = profiler,
                .folder = folder,
                .environment = [this](const char* name) { return environment(name); },
                .now = [] { return std::chrono::system_clock::from_time_t(time); }};
    }

    /// Returns when everything submitted so far has been done and reported back.
    static void settle(TambrelBetaLog& log) {
        log.waitUntilWritten();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 30'000);
    }

    void allowFile(bool allowed = true) {
        settings.setValue("TambrelBetaLogConsentAsked", true);
        settings.setValue("TambrelBetaLogFileEnabled", allowed);
    }

    [[nodiscard]] std::string line(const std::string& text) const { return '[' + stamp + "] " + text + '\n'; }

    static constexpr std::time_t time = 1'700'000'000;
    int argumentCount = 1;
    char argument[6] = "tests";
    char* arguments[2] = {argument, nullptr};
    const std::unique_ptr<QCoreApplication> application{
        QCoreApplication::instance() ? nullptr : new QCoreApplication(argumentCount, arguments)};
    QTemporaryDir home;
    QSettings settings{home.filePath("settings.ini"), QSettings::IniFormat};

    ApplicationInfo info{.diagnosticsSwitch = true};
    QString folder = home.filePath("data/Beta Logs");
    const QString logFile = folder + "/Tambrel-beta-log.txt";
    SystemProfiler profiler{.tools = {}};
    EnvironmentLookup environment = [](const char*) { return std::nullopt; };
    bool hasMailService = true;

    std::vector<std::string> asked;
    std::string window; ///< All that the debugging window was given.
    std::string order;  ///< What has left the program, in order.
    std::string clipboard;
    std::vector<EmailDraft> drafts;
    std::vector<QUrl> links;
    int beeps = 0;
    const std::string stamp = makeMediumDateTimeFormatter("C")(std::chrono::system_clock::from_time_t(time));
    TambrelBetaLog log; // Last, so that it ends first.
};

} // namespace tambrel
