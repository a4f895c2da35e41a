#include "EmailComposer.h"

#include "MailtoLink.h"

#include <QProcess>
#include <QSaveFile>

#include <utility>

namespace tambrel {
namespace {

// One mailto: link, not --subject: xdg-email prints that with the shell's echo, which takes backslashes for
// escapes.
QStringList xdgEmailArguments(const EmailDraft& draft, const QString& attachment) {
    EmailDraft withoutText = draft;
    withoutText.body.clear();
    return {"--utf8", "--attach", attachment, QString::fromLatin1(mailtoLink(withoutText).toEncoded())};
}

bool isWritten(const QByteArray& text, const QString& path) {
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && // A commit does not report a full disk.
           file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) &&
           file.write(text) == text.size() && file.commit();
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

EmailSender emailByXdgEmail(QString bodyFile, QString program) {
    return [bodyFile = std::move(bodyFile),
            program = std::move(program)](const EmailDraft& draft, const std::function<void(bool)>& answer) {
        if (!draft.attachment && !isWritten(QByteArray::fromStdString(draft.body), bodyFile)) {
            answer(false);
            return;
        }
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
        process->start(
            program, xdgEmailArguments(draft, draft.attachment ? draft.attachment->toLocalFile() : bodyFile));
    };
}

} // namespace tambrel
