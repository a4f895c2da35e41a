#include "AppDialogs.h"

#include "QtText.h"
#include "TambrelBetaLog.h"
#include "TambrelMIDIFileSupport.h"

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

namespace tambrel {
namespace {

/// Notes whether the application is told to end. That closes a dialog as if the user had refused.
class QuitWatch : public QObject {
public:
    QuitWatch() { qApp->installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override {
        isQuitting = isQuitting || event->type() == QEvent::Quit;
        return false;
    }

    bool isQuitting = false;
};

} // namespace

std::optional<bool> askModally(const ModalQuestion& question) {
    QMessageBox box(QApplication::activeWindow());
    box.setWindowTitle(QApplication::applicationName());
    box.setText(toQString(question.message));
    box.setInformativeText(toQString(question.informative));
    QPushButton* first = box.addButton(toQString(question.firstButton), QMessageBox::AcceptRole);
    box.addButton(toQString(question.secondButton), QMessageBox::RejectRole);
    box.setDefaultButton(first);
    const QuitWatch watch;
    box.exec();
    if (watch.isQuitting || box.clickedButton() == nullptr)
        return std::nullopt;
    return box.clickedButton() == static_cast<QAbstractButton*>(first);
}

// A launcher may ask for the panel while it, or a question, is open.
std::optional<std::filesystem::path> chooseMIDIFile() {
    if (QWidget* open = QApplication::activeModalWidget()) {
        open->raise();
        open->activateWindow();
        return std::nullopt;
    }
    QStringList patterns;
    for (const std::string_view extension : TambrelMIDIFileSupport::loadableExtensions()) {
        const QString text = toQString(extension);
        patterns << "*." + text << "*." + text.toUpper();
    }
    const QString file = QFileDialog::getOpenFileName(QApplication::activeWindow(), "Open MIDI File", {},
                                                      "MIDI files (" + patterns.join(' ') + ")");
    if (file.isEmpty())
        return std::nullopt;
    return QFile::encodeName(file).toStdString();
}

} // namespace tambrel
