#include "CommandLine.h"

#include "AudioDriver.h"
#include "LocalPath.h"

#include <CLI/CLI.hpp>

#include <QUrl>

#include <algorithm>
#include <iostream>
#include <span>

namespace tambrel {
namespace {

// A file manager may hand over an address instead of a path.
std::filesystem::path pathOf(const std::string& argument) {
    if (!argument.starts_with("file:"))
        return argument;
    return localPath(QUrl::fromEncoded(QByteArray::fromStdString(argument)));
}

} // namespace

std::optional<CommandLine> readCommandLine(int argc, char** argv, int& status) {
    constexpr int wrongUsage = 2;
    CommandLine result;
    std::string driver;
    std::vector<std::string> files;
    CLI::App program("Plays MIDI files.", "tambrel");
    program.set_version_flag("--version", "Tambrel " TAMBREL_VERSION);
    program.add_option("--soundfont", result.soundBank, "Sound bank instead of the system's default")
        ->envname("TAMBREL_SOUNDFONT");
    program
        .add_option("--audio-driver", driver,
                    "pulseaudio, alsa, jack, or silent to play nothing in real time")
        ->envname("TAMBREL_AUDIO_DRIVER")
        ->check(CLI::IsMember({"pulseaudio", "alsa", "jack", "silent"}));
    program.add_flag("--play", result.play, "Start playing as soon as the file is loaded");
    auto* screenshot =
        program.add_option("--screenshot", result.screenshot, "Write a PNG picture of the window and end");
    std::string scale; // Taken by prepareForScreenshot.
    program.add_option("--scale", scale, "Scale of the picture, such as 1.5")
        ->needs(screenshot)
        ->check(CLI::Range(0.5, 8.0));
    program.add_option("--at", result.at, "Playhead of the picture, in seconds")->needs(screenshot);
    program.add_option("FILE", files, "MIDI file to open");
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& success) {
        status = program.exit(success);
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        std::cerr << "tambrel: " << error.what() << "\nTry 'tambrel --help'.\n";
        status = wrongUsage;
        return std::nullopt;
    }
    if (!driver.empty())
        result.audioDrivers.push_back(driver);
    std::ranges::transform(files, std::back_inserter(result.files), pathOf);
    return result;
}

void prepareForScreenshot(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    const auto valueOf = [&](std::string_view option) -> const char* {
        for (std::size_t at = 1; at < arguments.size(); ++at) {
            const std::string_view argument = arguments[at];
            if (argument == option && at + 1 < arguments.size())
                return arguments[at + 1];
            if (argument.starts_with(option) && argument.substr(option.size()).starts_with('='))
                return arguments[at] + option.size() + 1;
        }
        return nullptr;
    };
    if (valueOf("--screenshot") == nullptr)
        return;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (const char* scale = valueOf("--scale"))
        qputenv("QT_SCALE_FACTOR", scale);
}

bool asksForText(int argc, char** argv) {
    return std::ranges::any_of(std::span(argv, static_cast<std::size_t>(argc)),
                               [](std::string_view argument) {
                                   return argument == "--help" || argument == "-h" || argument == "--version";
                               });
}

} // namespace tambrel
