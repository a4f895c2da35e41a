#include "HandOver.h"

#include "AppDelegate.h"
#include "CommandLine.h"
#include "DesktopApplication.h"
#include "LocalPath.h"

#include <iostream>

namespace tambrel {

void complainOfUnsupportedFiles(const CommandLine& commandLine) {
    for (const auto& file : commandLine.files)
        if (!AppDelegate::isSupportedMIDIURL(file))
            std::cerr << "tambrel: " << file.string() << ": Not a file that Tambrel opens.\n";
}

bool handOver(const CommandLine& commandLine, DesktopApplication& desktop, const LaunchContext& context) {
    if (commandLine.newInstance || !commandLine.screenshot.empty())
        return false;
    QStringList uris;
    for (const auto& file : commandLine.files)
        uris << fileURI(file);
    LaunchContext wanted = context;
    wanted.play = commandLine.play;
    // The other one may be about to end: then its name is free at the second attempt.
    constexpr int attempts = 2;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (desktop.claim() != DesktopApplication::Standing::another)
            return false;
        if (desktop.handOver(uris, wanted))
            return true;
    }
    return false;
}

} // namespace tambrel
