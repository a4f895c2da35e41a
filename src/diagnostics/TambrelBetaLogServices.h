#pragma once

#include "ApplicationInfo.h"
#include "EmailDraft.h"
#include "MediumDateTime.h"
#include "SystemProfiler.h"
#include "TambrelDebugWindow.h"

#include <QSettings>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tambrel {

class TambrelBetaLog;

/// "Kestrune Software/Tambrel/Beta Logs" in the user's folder for application data, or in the temporary
/// folder when there is none.
[[nodiscard]] QString betaLogFolder(const QString& applicationData);
[[nodiscard]] QString standardBetaLogFolder();

/// A question with two answers.
struct ModalQuestion {
    std::string message;
    std::string informative;
    std::string firstButton; ///< The default one.
    std::string secondButton;
};

/// What the log needs of the program and the desktop. Its functions are called on the main thread; only `ask`
/// blocks it.
struct TambrelBetaLogServices {
    ApplicationInfo info;
    QSettings& settings; ///< Outlives the log.
    /// Asks modally; true when the first button was chosen, nothing when the application ends before the user
    /// has answered.
    std::function<std::optional<bool>(const ModalQuestion&)> ask;
    std::function<void(const QString& text)> copyToClipboard = [](const QString&) {};
    /// Hands a draft to the user's mail program, or calls `whenThereIsNone`, on the main thread.
    std::function<void(const EmailDraft&, std::function<void()> whenThereIsNone)> composeEmail =
        [](const EmailDraft&, const std::function<void()>& whenThereIsNone) { whenThereIsNone(); };
    std::function<void(const QUrl&)> openLink = [](const QUrl&) {};
    /// Shows a file, selected, in the file manager.
    std::function<void(const QUrl&)> revealFile = [](const QUrl&) {};
    std::function<void()> beep = [] {};
    /// Empty: there is no debugging window.
    std::function<std::unique_ptr<TambrelDebugWindow>(TambrelBetaLog&)> makeDebugWindow = {};
    SystemProfiler profiler = {};
    QString folder = standardBetaLogFolder();
    EnvironmentLookup environment = processEnvironment;
    std::function<std::chrono::system_clock::time_point()> now = std::chrono::system_clock::now;
};

} // namespace tambrel
