#include "AppDialogs.h"
#include "CommandLine.h"
#include "DiagnosticServices.h"
#include "FirstPaint.h"
#include "GeneralMIDIEngine.h"
#include "MainWindow.h"
#include "TambrelBetaLog.h"
#include "TerminationSignals.h"

#include <QApplication>
#include <QPixmap>
#include <QSettings>

#include <cstdlib>
#include <iostream>

namespace {

using namespace tambrel;

void complain(const std::string& message) {
    std::cerr << "tambrel: " << message << "\n";
}

GeneralMIDIOptions engineOptions(const CommandLine& commandLine) {
    GeneralMIDIOptions options{.soundBank = commandLine.soundBank, .audioDrivers = commandLine.audioDrivers};
    if (!commandLine.screenshot.empty())
        options.audioDrivers = {std::string(silentDriverName)};
    return options;
}

// Called when the file is there, or when its error is shown instead: both make a picture.
void takeScreenshot(MainViewController& controller, const CommandLine& commandLine,
                    const std::string& failure) {
    if (!failure.empty())
        complain(failure);
    else if (commandLine.at > 0)
        controller.seek(commandLine.at);
    const bool written =
        controller.grab().save(QString::fromStdString(commandLine.screenshot.string()), "PNG");
    if (!written)
        complain(commandLine.screenshot.string() + ": The picture could not be written.");
    QApplication::exit(written && failure.empty() ? EXIT_SUCCESS : EXIT_FAILURE);
}

int run(const CommandLine& commandLine) {
    QSettings settings;
    TambrelBetaLog& log = TambrelBetaLog::shared();
    log.configure(diagnosticServices(settings));
    log.function("AppDelegate.applicationDidFinishLaunching", "Application launch procedure started");
    const TerminationSignals signalsEndNormally;

    GeneralMIDIEngine engine(engineOptions(commandLine));
    MainViewController* controller = nullptr;
    const auto loadFinished = [&](const std::string& failure) {
        if (!commandLine.screenshot.empty())
            takeScreenshot(*controller, commandLine, failure);
        else if (!failure.empty())
            complain(failure);
        else if (commandLine.play && controller->player().mode() == PlaybackMode::idle)
            controller->playPause();
    };
    controller = new MainViewController(
        {.makePlayer = [&engine](const MIDIData& song) { return engine.makePlayer(song); },
         .adoptSong =
             [&engine](const LoadedSong& song) {
                 engine.adoptTimeline(song.file.playbackData, song.timeline);
             },
         .beep = [] { QApplication::beep(); },
         .chooseFile = chooseMIDIFile,
         .loadFinished = loadFinished},
        log);
    MainWindow window(controller);
    engine.onFailure = [controller](const std::string& reason) {
        controller->playbackPreparationFailed(reason);
    };
    engine.onNotice = [&log](const std::string& sentence) {
        log.procedure("GeneralMIDIEngine.watchOutput", sentence);
    };
    const FirstPaint beginning(window, [&] {
        log.startSession();
        if (!commandLine.files.empty())
            controller->load(commandLine.files.front());
        else if (!commandLine.screenshot.empty())
            loadFinished({});
    });
    window.show();
    const int status = QApplication::exec();
    window.hide(); // Whatever is still to be finished, the user need not watch it.
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
    prepareForScreenshot(argc, argv);
    QApplication::setOrganizationName("Kestrune Software");
    QApplication::setApplicationName("Tambrel");
    const QApplication application(argc, argv);
    const auto commandLine = readCommandLine(argc, argv, status);
    return commandLine ? run(*commandLine) : status;
}
