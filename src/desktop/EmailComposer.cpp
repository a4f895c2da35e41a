#include "EmailComposer.h"

#include "MailtoLink.h"

#include <QProcess>

#include <utility>

namespace tambrel {
namespace {

// One address, and not --subject and --body: the program prints their texts with the shell's echo, which
// takes backslashes for escapes.
QStringList xdgEmailArguments(const EmailDraft& draft) {
    QStringList arguments{"--utf8"};
    if (draft.attachment)
        arguments << "--attach" << draft.attachment->toLocalFile();
    return arguments << QString::fromLatin1(mailtoLink(draft).toEncoded());
}

} // namespace

void composeEmail(const EmailDraft& draft, std::vector<EmailWay> ways,
                  std::function<void()> whenNoneTakesIt) {
    if (ways.empty()) {
        whenNoneTakesIt();
        return;
    }
    const EmailWay first = std::move(ways.front());
    ways.erase(ways.begin());
    first(draft, [draft, rest = std::move(ways), none = std::move(whenNoneTakesIt)](bool isTaken) {
        if (!isTaken)
            composeEmail(draft, rest, none);
    });
}

EmailWay xdgEmailWay(QString program) {
    return [program = std::move(program)](const EmailDraft& draft, const std::function<void(bool)>& answer) {
        // Without an owner: at its end this program would kill what may well be the mail program.
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
