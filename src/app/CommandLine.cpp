#include "CommandLine.h"

#include "LocalPath.h"

#include <CLI/CLI.hpp>

#include <QUrl>

#include <algorithm>
#include <array>
#include <iostream>
#include <span>
#include <string_view>

namespace tambrel {
namespace {

// A file manager may hand over an address instead of a path.
std::filesystem::path pathOf(const std::string& argument) {
    if (!argument.starts_with("file:"))
        return argument;
    const auto path = localPath(QUrl::fromEncoded(QByteArray::fromStdString(argument)));
    return path.empty() ? std::filesystem::path(argument) : path;
}

/// How many arguments an option of Qt takes up from here on; 0 when it is none. One or two dashes
/// begin it.
std::size_t qtOptionLength(std::string_view argument) {
    constexpr std::array<std::string_view, 4> alone{"reverse", "nograb", "dograb", "widgetcount"};
    constexpr std::array<std::string_view, 15> withValue{
        "platform", "platformpluginpath", "platformtheme", "plugin",       "qwindowgeometry",
        "geometry", "qwindowicon",        "icon",          "qwindowtitle", "title",
        "style",    "stylesheet",         "display",       "name",         "session"};
    if (!argument.starts_with('-'))
        return 0;
    argument.remove_prefix(argument.starts_with("--") ? 2 : 1);
    if (argument.starts_with("style=") || argument.starts_with("stylesheet=") ||
        std::ranges::find(alone, argument) != alone.end())
        return 1;
    return std::ranges::find(withValue, argument) != withValue.end() ? 2 : 0;
}

/// The program's name and the arguments that are not Qt's.
std::vector<char*> ownArguments(std::span<char*> arguments) {
    std::vector<char*> own;
    for (std::size_t at = 0; at < arguments.size();) {
        const std::size_t length = at == 0 ? 0 : qtOptionLength(arguments[at]);
        if (length == 0)
            own.push_back(arguments[at]);
        at += std::max<std::size_t>(length, 1);
    }
    return own;
}

// Qt warns of what a platform without a display cannot do, which is nothing to the user.
void passFailuresOn(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtCriticalMsg || type == QtFatalMsg)
        complain(message.toStdString());
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
    program.add_flag("--new-instance", result.newInstance, "Open a window of its own, whatever is running");
    auto* screenshot =
        program.add_option("--screenshot", result.screenshot, "Write a PNG picture of the window and end");
    program.add_option("--scale", result.scale, "Scale of the picture, such as 1.5")
        ->needs(screenshot)
        ->check(CLI::Range(0.5, 8.0));
    program.add_option("--at", result.at, "Playhead of the picture, in seconds")->needs(screenshot);
    program.add_flag("--playing", result.playing, "Play the song in the picture")->needs(screenshot);
    program.add_option("FILE", files, "MIDI files, of which the first that can be is opened");
    program.footer("The options of Qt programs are understood too, such as -platform and -style.");
    const auto own = ownArguments({argv, static_cast<std::size_t>(argc)});
    try {
        program.parse(static_cast<int>(own.size()), own.data());
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

void complain(const std::string& message) {
    std::cerr << "tambrel: " << message << "\n";
}

bool hasDisplay(int argc, char** argv) {
    constexpr std::array<const char*, 4> variables{"DISPLAY", "WAYLAND_DISPLAY", "WAYLAND_SOCKET",
                                                   "QT_QPA_PLATFORM"};
    constexpr std::array<std::string_view, 4> options{"-display", "--display", "-platform", "--platform"};
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    return !std::ranges::all_of(variables, qEnvironmentVariableIsEmpty) ||
           std::ranges::find_first_of(arguments, options) != arguments.end();
}

void prepareForScreenshot(const CommandLine& commandLine) {
    if (commandLine.screenshot.empty())
        return;
    qInstallMessageHandler(passFailuresOn);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!commandLine.scale.empty())
        qputenv("QT_SCALE_FACTOR", QByteArray::fromStdString(commandLine.scale));
}

} // namespace tambrel
