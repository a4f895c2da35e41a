#pragma once

#include "EmailDraft.h"

#include <functional>
#include <vector>

namespace tambrel {

/// Shows the user a draft to send, in one way. Answers once, at once or later: true when the user has seen
/// the draft, false when this way fails. Does not block; main thread.
using EmailSender = std::function<void(const EmailDraft&, std::function<void(bool isTaken)> answer)>;

/// Tries the senders in turn until one takes the draft. `whenNoneTakesIt` may be called later. Main thread.
void composeEmail(const EmailDraft& draft, std::vector<EmailSender> senders,
                  std::function<void()> whenNoneTakesIt);

/// Starts `xdg-email`, or the program named, which hands the draft to the user's mail program.
[[nodiscard]] EmailSender emailByXdgEmail(QString program = "xdg-email");

} // namespace tambrel
