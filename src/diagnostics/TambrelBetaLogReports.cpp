#include "BugReportTexts.h"
#include "CharacterCount.h"
#include "MailtoLink.h"
#include "QtText.h"
#include "TambrelBetaLog.h"

#include <utility>

namespace tambrel {
namespace {

constexpr std::string_view reportedAppName = "Tambrel";

// Bytes. Programs pass a link on as one argument, for which Linux allows 128 KiB.
constexpr qsizetype longestLink = 120'000;

void openMailtoEmail(const EmailDraft& draft, const std::function<void(const QUrl&)>& openLink) {
    const auto link = mailtoLink(draft);
    if (link.isValid())
        openLink(link);
}

EmailDraft draftOf(std::string body, std::optional<QUrl> attachment = {}) {
    return {.recipient = std::string(TambrelBetaLog::emailAddress),
            .subject = std::string(TambrelBetaLog::emailSubject),
            .body = std::move(body),
            .attachment = std::move(attachment)};
}

bool fitsIntoALink(const EmailDraft& draft) {
    return mailtoLink(draft).toEncoded().size() <= longestLink;
}

// A character can have any number of bytes: a body that is too long for a link is cut to its end.
EmailDraft fittingDraft(const std::string& body, std::optional<QUrl> attachment = {}) {
    auto draft = draftOf(body, std::move(attachment));
    for (auto kept = characterCount(body) / 2; !fitsIntoALink(draft); kept /= 2)
        draft.body = endOfReport(body, kept);
    return draft;
}

} // namespace

TambrelBetaLog::Report::Report(std::string text) : utf8(std::move(text)), clipboardText(toQString(utf8)) {}

void TambrelBetaLog::emailCompleteBugReport() {
    inStore(
        [windowText = debugWindow_ ? debugWindow_->text() : std::string(), readsLog = fileLoggingEnabled(),
         appInfo = applicationInfoReport(), collectedAt = timestamp()](const TambrelBetaLogStore& files) {
            const auto logText = readsLog ? files.logText() : std::nullopt;
            return Report(
                emailBody(logText ? *logText : windowText, appInfo, files.macintoshInfoReport(collectedAt)));
        },
        [this](Report report) { emailBugReport(std::move(report)); });
}

void TambrelBetaLog::emailBugReport(Report report) {
    if (!hasMoreCharactersThan(report.utf8, mailtoBodyLimit) && fitsIntoALink(draftOf(report.utf8))) {
        composeEmail(report.utf8, {});
        return;
    }
    services_->copyToClipboard(report.clipboardText);
    auto shortBody = tailEmailBodyForOversizedReport(report.utf8, reportedAppName, directMailBodyLimit);
    inStore([body = std::move(report.utf8), time = fileTimestamp()](
                const TambrelBetaLogStore& files) { return files.writeEmailReportAttachment(body, time); },
            [this, shortBody = std::move(shortBody)](const TambrelBetaLogAttachmentWriteResult& written) {
                if (written.errorMessage)
                    debug("betaLOG email attachment write failed: " + *written.errorMessage);
                composeEmail(shortBody, written.url);
            });
}

void TambrelBetaLog::composeEmail(const std::string& body, std::optional<QUrl> attachment) {
    const auto draft = fittingDraft(body, std::move(attachment));
    // Without this log, which may be closed when they are called.
    services_->composeEmail(draft, [draft, open = services_->openLink] { openMailtoEmail(draft, open); });
    settlePreviousSession();
}

void TambrelBetaLog::emailDebugWindowText(std::string text) {
    if (!diagnosticsEnabled())
        return;
    log("User Clicked Email Debugging Window Text", "TambrelBetaLog.emailDebugWindowText");
    struct Mail {
        Report full;
        std::string body;
    };
    const auto collectedAt = timestamp();
    inStore(
        [text = std::move(text), appInfo = applicationInfoReport(), collectedAt,
         compact = compactMacintoshInfoReport(services_->profiler.computer(), collectedAt)](
            const TambrelBetaLogStore& files) {
            const auto report = normalizedDebugReportText(text);
            Report full(emailBody(report, appInfo, files.macintoshInfoReport(collectedAt)));
            auto body = hasMoreCharactersThan(full.utf8, directMailBodyLimit)
                            ? debugWindowEmailBody(report, appInfo, compact, directMailBodyLimit)
                            : full.utf8;
            return Mail{std::move(full), std::move(body)};
        },
        [this](const Mail& mail) {
            services_->copyToClipboard(mail.full.clipboardText);
            openMailtoEmail(fittingDraft(mail.body), services_->openLink);
        });
}

void TambrelBetaLog::revealBetaLogFile() {
    if (!diagnosticsEnabled())
        return;
    log("User Clicked Reveal Beta Log File", "TambrelBetaLog.revealBetaLogFile");
    inStore([isEnabled = fileLoggingEnabled()](
                const TambrelBetaLogStore& files) { return files.revealableLogURL(isEnabled); },
            [this](const std::optional<QUrl>& url) {
                if (url)
                    services_->revealFile(*url);
                else
                    services_->beep();
            });
}

} // namespace tambrel
