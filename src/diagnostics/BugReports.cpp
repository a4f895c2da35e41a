#include "BugReports.h"

#include "BugReportTexts.h"
#include "CharacterCount.h"
#include "MailtoLink.h"
#include "QtText.h"

#include <QDateTime>

#include <chrono>
#include <utility>

namespace tambrel {
namespace {

constexpr std::string_view emailAddress = "support@kestrune.example";
constexpr std::string_view emailSubject = "Tambrel Bug Report!";
constexpr std::string_view reportedAppName = "Tambrel";

// Characters.
constexpr std::int64_t mailtoBodyLimit = 6000;
constexpr std::int64_t directMailBodyLimit = 3500;

// Bytes. Programs pass a link on as one argument, for which Linux allows 128 KiB.
constexpr qsizetype longestLink = 120'000;

void openMailtoEmail(const EmailDraft& draft, const std::function<void(const QUrl&)>& openLink) {
    const auto link = mailtoLink(draft);
    if (link.isValid())
        openLink(link);
}

EmailDraft draftOf(std::string body, std::optional<QUrl> attachment = {}) {
    return {.recipient = std::string(emailAddress),
            .subject = std::string(emailSubject),
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

BugReports::Report::Report(std::string text) : utf8(std::move(text)), clipboardText(toQString(utf8)) {}

void BugReports::emailLog(const BugReportMoment& moment, std::string windowText) {
    store_.run(
        [moment, windowText = std::move(windowText)](const TambrelBetaLogStore& files) {
            const auto logText = moment.fileLoggingEnabled ? files.logText() : std::nullopt;
            return Report(emailBody(logText ? *logText : windowText, moment.applicationInfo,
                                    files.macintoshInfoReport(moment.collectedAt)));
        },
        [this](Report report) { email(std::move(report)); });
}

void BugReports::email(Report report) {
    if (!hasMoreCharactersThan(report.utf8, mailtoBodyLimit) && fitsIntoALink(draftOf(report.utf8))) {
        composeEmail(report.utf8, {});
        return;
    }
    services_.copyToClipboard(report.clipboardText);
    auto shortBody = tailEmailBodyForOversizedReport(report.utf8, reportedAppName, directMailBodyLimit);
    store_.run([body = std::move(report.utf8), time = fileTimestamp()](
                   const TambrelBetaLogStore& files) { return files.writeEmailReportAttachment(body, time); },
               [this, shortBody = std::move(shortBody)](const TambrelBetaLogAttachmentWriteResult& written) {
                   if (written.errorMessage)
                       debug_("betaLOG email attachment write failed: " + *written.errorMessage);
                   composeEmail(shortBody, written.url);
               });
}

void BugReports::composeEmail(const std::string& body, std::optional<QUrl> attachment) {
    const auto draft = fittingDraft(body, std::move(attachment));
    // Without the log, which may be closed when they are called.
    services_.composeEmail(draft, [draft, open = services_.openLink] { openMailtoEmail(draft, open); });
    store_.run([](TambrelBetaLogStore& files) { files.settlePreviousSession(); });
}

void BugReports::emailWindow(const BugReportMoment& moment, std::string windowText) {
    struct Mail {
        Report full;
        std::string body;
    };
    store_.run(
        [moment, text = std::move(windowText),
         compact = compactMacintoshInfoReport(services_.profiler.computer(), moment.collectedAt)](
            const TambrelBetaLogStore& files) {
            const auto report = normalizedDebugReportText(text);
            Report full(
                emailBody(report, moment.applicationInfo, files.macintoshInfoReport(moment.collectedAt)));
            auto body =
                hasMoreCharactersThan(full.utf8, directMailBodyLimit)
                    ? debugWindowEmailBody(report, moment.applicationInfo, compact, directMailBodyLimit)
                    : full.utf8;
            return Mail{std::move(full), std::move(body)};
        },
        [this](const Mail& mail) {
            services_.copyToClipboard(mail.full.clipboardText);
            openMailtoEmail(fittingDraft(mail.body), services_.openLink);
        });
}

// "yyyyMMdd-HHmmss".
std::string BugReports::fileTimestamp() const {
    using std::chrono::milliseconds;
    const auto now = std::chrono::floor<milliseconds>(services_.now()).time_since_epoch();
    return QDateTime::fromMSecsSinceEpoch(now.count()).toString(u"yyyyMMdd-HHmmss").toStdString();
}

} // namespace tambrel
