#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tambrel {

/// What the user has asked for when starting the program.
struct CommandLine {
    std::filesystem::path soundBank; ///< --soundfont or TAMBREL_SOUNDFONT; empty for the default bank.
    std::vector<std::string>
        audioDrivers;                 ///< --audio-driver or TAMBREL_AUDIO_DRIVER; empty for the defaults.
    bool play = false;                ///< --play: start as soon as the file is there.
    bool newInstance = false;         ///< --new-instance: open a window whatever else is running.
    std::filesystem::path screenshot; ///< --screenshot: the picture to write; empty for none.
    std::string scale;                ///< --scale: of the picture; empty for the system's.
    double at = 0;                    ///< --at: where the playhead stands in the picture, in seconds.
    bool playing = false;             ///< --playing: the song plays on from there in the picture.
    std::vector<std::filesystem::path> files;
};

/// Reads the arguments and leaves Qt its own. For help, version and wrong usage, prints the text and returns
/// nothing, with the exit status in `status`. Main thread, like all here.
[[nodiscard]] std::optional<CommandLine> readCommandLine(int argc, char** argv, int& status);

/// Says something on the standard error stream in the program's name.
void complain(const std::string& message);

/// Has to run before Qt starts: a picture needs no display, and is painted at the scale of --scale.
/// Of what Qt has to say, only failures are passed on then.
void prepareForScreenshot(const CommandLine& commandLine);

/// Whether the environment or Qt's own options name a display, or a platform that may need none.
/// Qt would end the program by a crash otherwise.
[[nodiscard]] bool hasDisplay(int argc, char** argv);

} // namespace tambrel
