#pragma once

#include "ComputerFacts.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace tambrel {

// The texts of bug reports, in UTF-8. Limits count characters as a reader does; nothing is cut inside one.
// Pure, any thread.

/// True for a text of nothing but white space and newlines.
[[nodiscard]] bool isBlank(std::string_view text);

/// A report with room for the user's notes above it.
[[nodiscard]] std::string emailBody(std::string_view reportText, std::string_view appInfo,
                                    std::string_view macintoshInfo);

/// The text unchanged, or a sentence in its place when it is blank.
[[nodiscard]] std::string_view normalizedDebugReportText(std::string_view text);

[[nodiscard]] std::string compactMacintoshInfoReport(const ComputerFacts& computer,
                                                     std::string_view collectedAt);

/// The body of an e-mail that has the whole report attached: a lead and the end of the report. It has up to
/// `directMailBodyLimit` characters and the sentence that says what is missing, but 800 of the report always.
[[nodiscard]] std::string tailEmailBodyForOversizedReport(std::string_view report, std::string_view appName,
                                                          std::int64_t directMailBodyLimit);

/// The last `characters` of a report that is longer, after a sentence that says so.
[[nodiscard]] std::string endOfReport(std::string_view report, std::int64_t characters);

/// The body of an e-mail about the debugging window when the full one exceeds the limit: a head, the end of
/// the window's text, and where to find the rest.
[[nodiscard]] std::string debugWindowEmailBody(std::string_view reportText, std::string_view appInfo,
                                               std::string_view compactMacintoshInfo,
                                               std::int64_t directMailBodyLimit);

} // namespace tambrel
