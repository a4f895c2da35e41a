#include "AppDialogs.h"

#include "AppDelegate.h"
#include "QtText.h"
#include "TambrelBetaLog.h"
#include "TambrelMIDIFileSupport.h"

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>

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

constexpr const char* folderKey = "OpenFolder";

QString firstFolder(const std::filesystem::path& loadedSong, const QSettings& settings) {
    if (!loadedSong.empty())
        return QFileInfo(QFile::decodeName(loadedSong.c_str())).absolutePath();
    return settings.value(folderKey).toString();
}

// Each letter in both cases: not every desktop's panel compares names without regard to case.
QString filterOfLoadableFiles() {
    QStringList patterns;
    for (const std::string_view extension : TambrelMIDIFileSupport::loadableExtensions()) {
        QString pattern = "*.";
        for (const QChar letter : toQString(extension))
            pattern += letter.isLetter() ? QString("[%1%2]").arg(letter).arg(letter.toUpper()) : letter;
        patterns << pattern;
    }
    return "MIDI files (" + patterns.join(' ') + ")";
}

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
std::optional<std::filesystem::path> chooseMIDIFile(const std::filesystem::path& loadedSong,
                                                    QSettings& settings) {
    if (QWidget* open = QApplication::activeModalWidget()) {
        open->raise();
        open->activateWindow();
        return std::nullopt;
    }
    QFileDialog panel(QApplication::activeWindow(), "Open MIDI File", firstFolder(loadedSong, settings),
                      filterOfLoadableFiles());
    panel.setFileMode(QFileDialog::ExistingFile);
    panel.setOption(QFileDialog::HideNameFilterDetails);
    while (panel.exec() == QDialog::Accepted) {
        const QString file = panel.selectedFiles().value(0);
        const std::filesystem::path path = QFile::encodeName(file).toStdString();
        if (AppDelegate::isSupportedMIDIURL(path)) {
            settings.setValue(folderKey, QFileInfo(file).absolutePath());
            return path;
        }
        QApplication::beep(); // The name was typed: the panel lists no such file.
    }
    return std::nullopt;
}

} // namespace tambrel
