#include "ApplicationInfo.h"
#include "CommandLine.h"
#include "DesktopApplication.h"
#include "FontWarmUp.h"
#include "HandOver.h"
#include "Program.h"

#include <QAccessible>
#include <QApplication>

#include <cstdlib>

int main(int argc, char** argv) {
    using namespace tambrel;
    int status = 0;
    const auto commandLine = readCommandLine(argc, argv, status);
    if (!commandLine)
        return status;
    complainOfUnsupportedFiles(*commandLine);
    prepareForScreenshot(*commandLine);
    const auto identifier = QString::fromStdString(ApplicationInfo::current().identifier.value_or("tambrel"));
    FontWarmUp fonts;
    DesktopApplication desktop(identifier);
    if (handOver(*commandLine, desktop, LaunchContext::fromEnvironment()))
        return EXIT_SUCCESS;
    QApplication::setOrganizationName("Kestrune Software");
    QApplication::setApplicationName("Tambrel");
    QApplication::setDesktopFileName(identifier);
    const QApplication application(argc, argv);
    fonts.fillDatabase();
    static_cast<void>(QAccessible::isActive()); // Asks the bus, which takes its time.
    return Program(*commandLine, desktop).run();
}
