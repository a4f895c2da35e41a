#include "CommandLine.h"
#include "GeneralMIDIEngine.h"
#include "MainWindow.h"
#include "TambrelBetaLog.h"
#include "TerminationSignals.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTimer>

#include <cstdlib>
#include <iostream>

namespace {

using namespace tambrel;

bool ask(const ModalQuestion& question) {
    QMessageBox box;
    box.setText(QString::fromStdString(question.message));
    box.setInformativeText(QString::fromStdString(question.informative));
    const QPushButton* first =
        box.addButton(QString::fromStdString(question.firstButton), QMessageBox::AcceptRole);
    box.addButton(QString::fromStdString(question.secondButton), QMessageBox::RejectRole);
    box.exec();
    return box.clickedButton() == static_cast<const QAbstractButton*>(first);
}

void wireFailures(GeneralMIDIEngine& engine, MainViewController& controller, TambrelBetaLog& log) {
    engine.onFailure = [&controller](const std::string& reason) {
        std::cerr << "tambrel: Could not prepare MIDI playback: " << reason << "\n";
        controller.playbackFailed(reason);
    };
    engine.onNotice = [&log](const std::string& sentence) {
        log.procedure("GeneralMIDIEngine.watchOutput", sentence);
    };
}

int run(const CommandLine& commandLine) {
    QSettings settings;
    TambrelBetaLog& log = TambrelBetaLog::shared();
    log.configure({.info = ApplicationInfo::current(), .settings = settings, .ask = ask});
    log.function("AppDelegate.applicationDidFinishLaunching", "Application launch procedure started");
    const TerminationSignals signalsEndNormally;

    GeneralMIDIEngine engine({.soundBank = commandLine.soundBank, .audioDrivers = commandLine.audioDrivers});
    auto* controller =
        new MainViewController([&engine](const MIDIData& song) { return engine.makePlayer(song); }, log);
    MainWindow window(controller);
    wireFailures(engine, *controller, log);
    window.show();

    // The window is painted before anything else takes time.
    QTimer::singleShot(0, &window, [&] {
        log.startSession();
        if (!commandLine.files.empty())
            controller->load(commandLine.files.front());
        if (commandLine.play)
            controller->playPause();
    });
    const int status = QApplication::exec();
    log.finishSession();
    log.close();
    if (engine.isLoadingSoundBank())
        std::_Exit(status); // A large bank takes seconds, and nobody waits for it any more.
    return status;
}

} // namespace

int main(int argc, char** argv) {
    int status = 0;
    if (asksForText(argc, argv)) {
        static_cast<void>(readCommandLine(argc, argv, status));
        return status;
    }
    QApplication::setOrganizationName("Kestrune Software");
    QApplication::setApplicationName("Tambrel");
    const QApplication application(argc, argv);
    const auto commandLine = readCommandLine(argc, argv, status);
    return commandLine ? run(*commandLine) : status;
}
