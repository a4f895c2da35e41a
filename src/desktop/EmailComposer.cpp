#include "EmailComposer.h"

#include "MailtoLink.h"

#include <QProcess>

#include <utility>

namespace tambrel {
namespace {

// One mailto: link, not --subject and --body: xdg-email prints these with the shell's echo, which takes
// backslashes for escapes.
QStringList xdgEmailArguments(const EmailDraft& draft) {
    QStringList arguments{"--utf8"};
    if (draft.attachment)
        arguments << "--attach" << draft.attachment->toLocalFile();
    return arguments << QString::fromLatin1(mailtoLink(draft).toEncoded());
}

} // namespace

void composeEmail(const EmailDraft& draft, std::vector<EmailSender> senders,
                  std::function<void()> whenNoneTakesIt) {
    if (senders.empty()) {
        whenNoneTakesIt();
        return;
    }
    const EmailSender first = std::move(senders.front());
    senders.erase(senders.begin());
    first(draft, [draft, rest = std::move(senders), none = std::move(whenNoneTakesIt)](bool isTaken) {
        if (!isTaken)
            composeEmail(draft, rest, none);
    });
}

EmailSender emailByXdgEmail(QString program) {
    return [program = std::move(program)](const EmailDraft& draft, const std::function<void(bool)>& answer) {
        // Without a parent: it would be killed when Tambrel ends, and may be the mail program itself.
        auto* process = new QProcess;
        process->setProcessChannelMode(QProcess::ForwardedChannels);
        process->setStandardInputFile(QProcess::nullDevice());
        QObject::connect(process, &QProcess::errorOccurred, process,
                         [process, answer](QProcess::ProcessError error) {
                             if (error != QProcess::FailedToStart)
                                 return;
                             process->deleteLater();
                             answer(false);
                         });
        QObject::connect(process, &QProcess::finished, process,
                         [process, answer](int status, QProcess::ExitStatus exit) {
                             process->deleteLater();
                             answer(exit == QProcess::NormalExit && status == 0);
                         });
        process->start(program, xdgEmailArguments(draft));
    };
}

} // namespace tambrel
