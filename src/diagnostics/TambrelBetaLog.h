#pragma once

#include "BetaLogStoreThread.h"
#include "BugReports.h"
#include "TambrelBetaLogServices.h"

#include <concepts>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tambrel {

/// The text of an entry: a text, or a callable that composes it when it is needed.
template<class T>
concept LogText =
    std::convertible_to<const T&, std::string_view> || std::is_invocable_r_v<std::string, const T&>;

/// The diagnostic log, the betaLOG: one line per entry, "[time stamp] message | procedure name", to the
/// debugging window and, when the user has agreed, to a file. Used on the main thread only. Texts are
/// UTF-8.
///
/// The lines of the log and the texts of its reports are a frozen interface: testers and their tools compare
/// them between versions, so a text changes only with the behaviour that it describes.
///
/// Whether diagnostics are enabled is asked on every call and before anything is composed: with diagnostics
/// off a call costs a few nanoseconds. A log that has not been configured is off. File failures show in the
/// debugging window only.
class TambrelBetaLog {
public:
    static constexpr const char* consentAskedKey = "TambrelBetaLogConsentAsked";
    static constexpr const char* fileLoggingEnabledKey = "TambrelBetaLogFileEnabled";

    /// The log of the program. The application configures it when it starts and closes it when it ends. It is
    /// never destroyed: the debugging window must not outlive Qt where a lost display ends the
    /// program.
    [[nodiscard]] static TambrelBetaLog& shared();

    TambrelBetaLog() = default;
    TambrelBetaLog(const TambrelBetaLog&) = delete;
    TambrelBetaLog& operator=(const TambrelBetaLog&) = delete;

    /// Once, or again after `close`. Needs a QCoreApplication that outlives the log or its `close`.
    void configure(TambrelBetaLogServices services);

    /// Waits until everything logged is in the file. The log is off from then on. A report that is still
    /// being composed is given up.
    void close();

    [[nodiscard]] bool diagnosticsEnabled() const {
        return services_ && services_->info.diagnosticsEnabled();
    }

    /// The entry of a procedure. An empty detail reads "Procedure Ran".
    template<LogText Detail = std::string_view>
    void procedure(std::string_view name, const Detail& detail = {}) {
        if (diagnosticsEnabled())
            logDetail(composed(detail), "Procedure Ran", name);
    }

    /// The entry of a function. An empty detail reads "Function Entered".
    template<LogText Detail = std::string_view>
    void function(std::string_view name, const Detail& detail = {}) {
        if (diagnosticsEnabled())
            logDetail(composed(detail), "Function Entered", name);
    }

    /// What the user did, carried out by the named procedure.
    template<LogText Message>
    void userAction(const Message& message, std::string_view function) {
        if (diagnosticsEnabled())
            logUserAction(composed(message), function);
    }

    /// An error that the named procedure met.
    void error(const std::exception& error, std::string_view function);

    enum class Launch { goesOn, isOver };
    /// Asks for consent when that has not been done, starts the session in the file, and offers a bug report
    /// when the previous one did not end. Does nothing under a unit-test runner. Once, when the program
    /// starts; Launch::isOver when the application ends before the user has answered.
    Launch startSession();

    /// The normal end of the session, before `close`; only the first call counts. A user action after it
    /// means that the program goes on, and begins another session. A crash that the user has not been able to
    /// report by then is offered again by the next run.
    void finishSession();

    /// Waits until everything logged is in the file, and goes on.
    void waitUntilWritten();

    /// Shows the debugging window, which is made when it is first shown and kept until `close`.
    void showDebugWindow();

    /// Hands the whole log, or else the debugging window's text, to the mail program, as `BugReports` says.
    /// Only while diagnostics are enabled.
    void emailCompleteBugReport();
    /// Reports this text, which is the debugging window's, as `BugReports` says.
    void emailDebugWindowText(std::string text);
    /// Shows the log file in the file manager; beeps when there is none.
    void revealBetaLogFile();

private:
    template<class Text>
    static decltype(auto) composed(const Text& text) {
        if constexpr (std::convertible_to<const Text&, std::string_view>)
            return std::string_view(text);
        else
            return text();
    }

    [[nodiscard]] BetaLogStoreThread& store();
    [[nodiscard]] BugReports& reports();
    [[nodiscard]] BugReportMoment thisMoment();
    // One entry; the caller has asked whether diagnostics are enabled.
    void log(std::string_view message, std::string_view function);
    // A line of the log's own, to the debugging window only.
    void debug(std::string_view text);
    void logDetail(std::string_view detail, std::string_view whenEmpty, std::string_view function);
    void logUserAction(std::string_view message, std::string_view function);
    void show(const std::string& line) const;
    [[nodiscard]] bool isRunningUnderXCTest() const;
    [[nodiscard]] bool fileLoggingEnabled() const;
    [[nodiscard]] std::string timestamp();
    [[nodiscard]] std::string applicationInfoReport();
    [[nodiscard]] std::string formattedLine(std::string_view message, std::string_view function);
    [[nodiscard]] std::string initialLogText();
    [[nodiscard]] Launch askForConsentOnce();
    void startSessionInStore();
    void sessionStarted(const TambrelBetaLogStore::StartResult& result);
    void offerBugReport();

    std::optional<TambrelBetaLogServices> services_;
    std::unique_ptr<TambrelDebugWindow> debugWindow_;
    bool isSessionFinished_ = false;
    DateTimeFormatter mediumDateTime_; ///< Made at the first time stamp.
    std::unique_ptr<BetaLogStoreThread> store_;
    std::optional<BugReports> reports_;
};

} // namespace tambrel
