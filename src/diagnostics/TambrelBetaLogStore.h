#pragma once

#include "SystemProfiler.h"

#include <QString>
#include <QUrl>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tambrel {

/// A file operation failed; the text is the platform's localized description.
class TambrelBetaLogStoreError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What became of an attachment: one of the two is there.
struct TambrelBetaLogAttachmentWriteResult {
    std::optional<QUrl> url = {}; ///< A file: address.
    std::optional<std::string> errorMessage = {};
};

/// The log file, the session marker and the attachments of reports in one folder. The operations block on the
/// disk: call them from the log's serial executor, one at a time. Nothing is kept open between them. All
/// texts are UTF-8.
class TambrelBetaLogStore {
public:
    static constexpr std::string_view logName = "Tambrel-beta-log.txt";
    static constexpr std::string_view sessionMarkerName = "Tambrel-session-active.marker";

    struct StartResult {
        bool previousSessionWasActive = false; ///< The marker was there before it was rewritten.
        std::optional<std::string> errorMessage;
    };

    explicit TambrelBetaLogStore(const QString& folder, SystemProfiler profiler = {});

    /// Creates the folder and its parents, and a missing log file with the header. Throws
    /// TambrelBetaLogStoreError.
    void ensureLogFileExists(std::string_view initialLogText) const;

    /// Appends to an existing log file; a line that is not UTF-8 writes nothing. Throws
    /// TambrelBetaLogStoreError.
    void appendLine(std::string_view line) const;

    /// The two above in turn. Returns the description of the failure, if any.
    [[nodiscard]] std::optional<std::string> writeEntry(std::string_view initialLogText,
                                                        std::string_view line) const;

    /// Notes whether the marker exists, then makes the log file, replaces the marker and appends the line, as
    /// far as that goes without an error.
    [[nodiscard]] StartResult startSession(std::string_view initialLogText, std::string_view markerText,
                                           std::string_view startLine) const;

    /// Deletes the marker, if there is one.
    void finishSession() const;

    /// The whole log file; nothing when it cannot be read or is not UTF-8.
    [[nodiscard]] std::optional<std::string> logText() const;

    /// What the system profiler says, under a heading. Takes seconds at worst.
    [[nodiscard]] std::string macintoshInfoReport(std::string_view collectedAt) const;

    /// Creates the folder if need be. A file of the same time stamp, "yyyyMMdd-HHmmss", is replaced.
    [[nodiscard]] TambrelBetaLogAttachmentWriteResult
    writeEmailReportAttachment(std::string_view body, std::string_view timestamp) const;

    /// The log file, when there is one and file logging is enabled.
    [[nodiscard]] std::optional<QUrl> revealableLogURL(bool fileLoggingEnabled) const;

private:
    QString folder_;
    QString logPath_;
    QString markerPath_;
    SystemProfiler profiler_;
};

} // namespace tambrel
