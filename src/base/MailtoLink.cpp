#include "MailtoLink.h"

#include "QtText.h"

#include <QByteArray>
#include <QString>

namespace tambrel {
namespace {

QByteArray encoded(const std::string& text) {
    return QUrl::toPercentEncoding(toQString(text).replace("\r\n", "\n").replace('\n', "\r\n"));
}

} // namespace

QUrl mailtoLink(const EmailDraft& draft) {
    return QUrl::fromEncoded("mailto:" + QByteArray::fromStdString(draft.recipient) +
                                 "?subject=" + encoded(draft.subject) + "&body=" + encoded(draft.body),
                             QUrl::StrictMode);
}

} // namespace tambrel
