#pragma once

#include "SessionMarker.h"
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

/// The address of an attachment, or why it was not written.
struct TambrelBetaLogAttachmentWriteResult {
    std::optional<QUrl> url = {}; ///< A file: address.
    std::optional<std::string> errorMessage = {};
};

/// The log file, the session marker and the attachments of reports in one folder. The operations block on the
/// disk: call them on the store's thread, which is the log's serial executor. Nothing but the marker is kept
/// open between them. All texts are UTF-8.
class TambrelBetaLogStore {
public:
    static constexpr std::string_view logName = "Tambrel-beta-log.txt";

    struct StartResult {
        /// The marker was there before it was rewritten, and not because another run is going on.
        bool previousSessionWasActive = false;
        std::optional<std::string> errorMessage;
    };

    explicit TambrelBetaLogStore(const QString& folder, SystemProfiler profiler = {});

    /// Creates the folder and its parents, and a missing log file with the header. Throws
    /// TambrelBetaLogStoreError.
    void ensureLogFileExists(std::string_view initialLogText) const;

    /// Appends to an existing log file; a line that is not UTF-8 writes nothing, nor does one that there is
    /// no room for. Throws TambrelBetaLogStoreError.
    void appendLine(std::string_view line) const;

    /// The two above in turn. Returns the description of the failure, if any.
    [[nodiscard]] std::optional<std::string> writeEntry(std::string_view initialLogText,
                                                        std::string_view line) const;

    /// Notes whether a marker exists, then makes the log file, replaces the marker and appends the line, as
    /// far as that goes without an error. The markers of other runs that are going on are left alone.
    [[nodiscard]] StartResult startSession(std::string_view initialLogText, std::string_view markerText,
                                           std::string_view startLine);

    /// The crash that `startSession` has found is dealt with: the next run need not ask again.
    void settlePreviousSession();

    /// Deletes this run's marker, if there is one and the previous session has been settled.
    void finishSession();

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
    SessionMarker marker_;
    bool previousIsUnsettled_ = false;
    SystemProfiler profiler_;
};

} // namespace tambrel
