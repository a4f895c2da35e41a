#pragma once

#include "EmailDraft.h"

#include <functional>
#include <vector>

namespace tambrel {

/// One way to bring a draft before the user. It answers once, at once or later: true when the user has seen
/// the draft, false when this way leads nowhere. Nothing blocks; main thread.
using EmailWay = std::function<void(const EmailDraft&, std::function<void(bool isTaken)> answer)>;

/// Tries the ways in turn until one takes the draft. `whenNoneTakesIt` may come after the call.
void composeEmail(const EmailDraft& draft, std::vector<EmailWay> ways, std::function<void()> whenNoneTakesIt);

/// Starts `xdg-email`, or the program named, which hands the draft to the user's mail program.
[[nodiscard]] EmailWay xdgEmailWay(QString program = "xdg-email");

} // namespace tambrel
