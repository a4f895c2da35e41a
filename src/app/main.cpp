#include "ApplicationInfo.h"
#include "AudioDrivers.h"
#include "CommandLine.h"
#include "DesktopApplication.h"
#include "HandOver.h"
#include "Program.h"
#include "QtText.h"
#include "RetroStyle.h"

#include <QApplication>

#include <fontconfig/fontconfig.h>

#include <cstdlib>
#include <iostream>
#include <thread>

int main(int argc, char** argv) {
    using namespace tambrel;
    prepareForAudioDrivers();
    int status = 0;
    const auto commandLine = readCommandLine(argc, argv, status);
    if (!commandLine)
        return status;
    complainOfUnsupportedFiles(*commandLine);
    prepareForScreenshot(*commandLine);
    const auto identifier = toQString(ApplicationInfo::current().identifier.value_or("tambrel"));
    DesktopApplication desktop(identifier);
    if (const auto done = handOver(*commandLine, desktop, LaunchContext::fromEnvironment()))
        return *done;
    if (!hasDisplay(argc, argv)) {
        std::cerr << "tambrel: There is no display.\n";
        return EXIT_FAILURE;
    }
    const std::jthread fonts([] { FcInit(); }); // Takes milliseconds, while the display is asked.
    QApplication::setOrganizationName("Kestrune Software");
    QApplication::setApplicationName("Tambrel");
    QApplication::setDesktopFileName(identifier);
    const QApplication application(argc, argv);
    QApplication::setStyle(new RetroStyle);
    return Program(*commandLine, desktop).run();
}
