#include "HandOver.h"

#include "AppDelegate.h"
#include "CommandLine.h"
#include "DesktopApplication.h"
#include "LocalPath.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <system_error>

namespace tambrel {
namespace {

// Says of the others that there are no such files, where the user who named them looks.
QStringList addressesOfThoseThatExist(const std::vector<std::filesystem::path>& files) {
    QStringList uris;
    for (const auto& file : files) {
        std::error_code error;
        if (AppDelegate::isSupportedMIDIURL(file) &&
            std::filesystem::status(file, error).type() == std::filesystem::file_type::not_found)
            complain(file.string() + ": No such file or directory");
        else
            uris << fileURI(file);
    }
    return uris;
}

} // namespace

void complainOfUnsupportedFiles(const CommandLine& commandLine) {
    for (const auto& file : commandLine.files)
        if (!AppDelegate::isSupportedMIDIURL(file))
            std::cerr << "tambrel: " << file.string() << ": Not a file that Tambrel opens.\n";
}

std::optional<int> handOver(const CommandLine& commandLine, DesktopApplication& desktop,
                            const LaunchContext& context) {
    if (commandLine.newInstance || !commandLine.screenshot.empty() ||
        desktop.claim() != DesktopApplication::Standing::another)
        return std::nullopt;
    const QStringList uris = addressesOfThoseThatExist(commandLine.files);
    const bool areAllThere = uris.size() == static_cast<qsizetype>(commandLine.files.size());
    if (uris.isEmpty() && !areAllThere)
        return EXIT_FAILURE;
    LaunchContext wanted = context;
    wanted.play = commandLine.play;
    // The other one may be about to end: then its name is free at the second attempt.
    constexpr int attempts = 2;
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        const auto answer = desktop.handOver(uris, wanted);
        if (answer == DesktopApplication::Answer::taken)
            return areAllThere ? EXIT_SUCCESS : EXIT_FAILURE;
        if (desktop.claim() != DesktopApplication::Standing::another)
            break;
        if (answer == DesktopApplication::Answer::none) {
            complain("The window that is open does not answer; this is another one.");
            break;
        }
    }
    return std::nullopt;
}

} // namespace tambrel
