#pragma once

#include "EmailDraft.h"

namespace tambrel {

/// The "mailto" address (RFC 6068) of a draft without its attachment: subject and body percent-encoded, line
/// breaks as CR LF. Invalid when the recipient's address makes no link. Pure, any thread.
[[nodiscard]] QUrl mailtoLink(const EmailDraft& draft);

} // namespace tambrel
