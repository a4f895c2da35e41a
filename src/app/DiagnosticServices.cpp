#include "DiagnosticServices.h"

#include "AppDialogs.h"
#include "EmailComposer.h"
#include "FileRevealer.h"
#include "PortalEmail.h"
#include "SessionBus.h"
#include "TambrelDebugWindowController.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>

#include <utility>

namespace tambrel {
namespace {

void openWithDesktop(const QUrl& link) {
    QDesktopServices::openUrl(link);
}

void composeWithDesktop(const EmailDraft& draft, std::function<void()> whenThereIsNone) {
    const QString bodyFile = standardBetaLogFolder() + "/Tambrel-beta-report.txt";
    composeEmail(draft, {emailByPortal(sessionBus()), emailByXdgEmail(bodyFile)}, std::move(whenThereIsNone));
}

} // namespace

TambrelBetaLogServices diagnosticServices(QSettings& settings) {
    return {.info = ApplicationInfo::current(),
            .settings = settings,
            .ask = askModally,
            .copyToClipboard = [](const QString& text) { QApplication::clipboard()->setText(text); },
            .composeEmail = composeWithDesktop,
            .openLink = openWithDesktop,
            .revealFile = [](const QUrl& file) { revealFile(sessionBus(), file, openWithDesktop); },
            .beep = [] { QApplication::beep(); },
            .makeDebugWindow =
                [](TambrelBetaLog& log) { return std::make_unique<TambrelDebugWindowController>(log); }};
}

} // namespace tambrel
