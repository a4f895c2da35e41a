#include "BugReportTexts.h"

#include "CharacterCount.h"
#include "QtText.h"

#include <QString>

#include <algorithm>

namespace tambrel {
namespace {

constexpr std::int64_t leastTail = 800;
constexpr std::string_view entriesAreMissing =
    "[Earlier report entries were truncated for reliable email body delivery.]";

std::string header() {
    return "TYPE YOUR NOTES HERE:\n\nDo not enter any text below this line!\n\n" + std::string(75, '_') +
           "\n\n";
}

// The whole text, or its end after a notice.
std::string tail(std::string_view text, std::int64_t budget, std::string_view notice) {
    budget = std::max(budget, leastTail);
    if (!hasMoreCharactersThan(text, budget))
        return std::string(text);
    return std::string(notice).append("\n\n").append(lastCharacters(text, budget));
}

} // namespace

bool isBlank(std::string_view text) {
    const auto decoded = toQString(text);
    return std::ranges::all_of(decoded, [](QChar character) { return character.isSpace(); });
}

std::string emailBody(std::string_view reportText, std::string_view appInfo, std::string_view macintoshInfo) {
    const auto top = header();
    std::string body;
    body.reserve(top.size() + appInfo.size() + macintoshInfo.size() + reportText.size() + 4);
    return body.append(top)
        .append(appInfo)
        .append("\n\n")
        .append(macintoshInfo)
        .append("\n\n")
        .append(reportText);
}

std::string_view normalizedDebugReportText(std::string_view text) {
    return isBlank(text) ? "No debug entries recorded yet." : text;
}

std::string compactMacintoshInfoReport(const ComputerFacts& computer, std::string_view collectedAt) {
    return std::string("Macintosh Info:\nCollected: ").append(collectedAt).append("\n") + computer.report();
}

std::string tailEmailBodyForOversizedReport(std::string_view report, std::string_view appName,
                                            std::int64_t directMailBodyLimit) {
    const auto lead = std::string("TYPE YOUR NOTES HERE:\n\nThe full ").append(appName) +
                      " beta report is attached as a text file and copied to the Clipboard. "
                      "The latest report text is included below.\n";
    return lead + tail(report, directMailBodyLimit - characterCount(lead), entriesAreMissing);
}

std::string endOfReport(std::string_view report, std::int64_t characters) {
    return std::string(entriesAreMissing).append("\n\n").append(lastCharacters(report, characters));
}

std::string debugWindowEmailBody(std::string_view reportText, std::string_view appInfo,
                                 std::string_view compactMacintoshInfo, std::int64_t directMailBodyLimit) {
    const auto head =
        header().append(appInfo).append("\n\n").append(compactMacintoshInfo) + "\n\nDebug Console Text:";
    const std::string_view notice =
        "\n[The full Tambrel beta report was copied to the Clipboard before this email opened. "
        "If anything important is missing here, paste the Clipboard contents into this message.]";
    const auto budget = directMailBodyLimit - characterCount(head) - characterCount(notice);
    return head + tail(reportText, budget,
                       "[Earlier debug console entries were truncated for reliable email body delivery.]")
                      .append(notice);
}

} // namespace tambrel
