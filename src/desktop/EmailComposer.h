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

/// Starts `xdg-email`, or the program named, which hands the draft to the user's mail program. The mail has
/// no text of its own, since every user of the computer sees the arguments of programs: the draft's
/// attachment is attached, which is to say all that the body says; where there is none, the body as
/// `bodyFile`, for its user's eyes only, in a folder that is there. Fails when that cannot be written.
[[nodiscard]] EmailSender emailByXdgEmail(QString bodyFile, QString program = "xdg-email");

} // namespace tambrel
