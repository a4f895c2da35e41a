#include "AppDialogs.h"

#include "TambrelBetaLog.h"
#include "TambrelMIDIFileSupport.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

namespace tambrel {

bool askModally(const ModalQuestion& question) {
    QMessageBox box(QApplication::activeWindow());
    box.setText(QString::fromStdString(question.message));
    box.setInformativeText(QString::fromStdString(question.informative));
    QPushButton* first = box.addButton(QString::fromStdString(question.firstButton), QMessageBox::AcceptRole);
    box.addButton(QString::fromStdString(question.secondButton), QMessageBox::RejectRole);
    box.setDefaultButton(first);
    box.exec();
    return box.clickedButton() == static_cast<QAbstractButton*>(first);
}

std::optional<std::filesystem::path> chooseMIDIFile() {
    QStringList patterns;
    for (const std::string_view extension : TambrelMIDIFileSupport::loadableExtensions()) {
        const QString text = QString::fromUtf8(extension.data(), static_cast<qsizetype>(extension.size()));
        patterns << "*." + text << "*." + text.toUpper();
    }
    const QString file = QFileDialog::getOpenFileName(QApplication::activeWindow(), "Open MIDI File", {},
                                                      "MIDI files (" + patterns.join(' ') + ")");
    if (file.isEmpty())
        return std::nullopt;
    return QFile::encodeName(file).toStdString();
}

} // namespace tambrel
