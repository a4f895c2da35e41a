#pragma once

#include "BetaLogStoreThread.h"

#include <QString>
#include <QUrl>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tambrel {

/// What a report says of the moment at which it was asked for.
struct BugReportMoment {
    std::string collectedAt;     ///< The user's date and time.
    std::string applicationInfo; ///< Name, version and switches, without a final newline.
    bool fileLoggingEnabled = false;
};

/// Composes the reports of the betaLOG and hands them to the mail program. Main thread only; the texts, which
/// take a while for a large log, are made on the store's thread.
class BugReports {
public:
    /// `services` and `store` outlive the reports, which end with the store's last result. `debug` takes a
    /// line for the debugging window.
    BugReports(const TambrelBetaLogServices& services, BetaLogStoreThread& store,
               std::function<void(std::string_view)> debug)
        : services_(services), store_(store), debug_(std::move(debug)) {}

    /// Hands the whole log, or else the debugging window's text, to the mail program. A report that is too
    /// long for an e-mail is attached and copied to the clipboard.
    void emailLog(const BugReportMoment& moment, std::string windowText);
    /// Copies a report with this text to the clipboard and opens a mail link with as much of it as fits.
    void emailWindow(const BugReportMoment& moment, std::string windowText);

private:
    /// A report in the two forms that leave the program.
    struct Report {
        explicit Report(std::string text);
        std::string utf8;
        QString clipboardText;
    };

    void email(Report report);
    void composeEmail(const std::string& body, std::optional<QUrl> attachment);
    [[nodiscard]] std::string fileTimestamp() const;

    const TambrelBetaLogServices& services_;
    BetaLogStoreThread& store_;
    std::function<void(std::string_view)> debug_;
};

} // namespace tambrel
