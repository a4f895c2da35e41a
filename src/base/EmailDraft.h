#pragma once

#include <QUrl>

#include <optional>
#include <string>

namespace tambrel {

/// An e-mail for the user to look over and to send. Texts are UTF-8. Any thread.
struct EmailDraft {
    std::string recipient;
    std::string subject;
    std::string body;
    std::optional<QUrl> attachment = {}; ///< A file: address. It says all that the body says.
};

} // namespace tambrel
