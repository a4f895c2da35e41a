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
    std::filesystem::path screenshot; ///< --screenshot: the picture to write; empty for none.
    double at = 0;                    ///< --at: where the playhead stands in the picture, in seconds.
    std::vector<std::filesystem::path> files;
};

/// Reads the arguments that are left when the toolkit has taken its own. When the program has nothing more to
/// do (help, version, wrong usage), prints what there is to say and returns nothing, with the exit status in
/// `status`.
[[nodiscard]] std::optional<CommandLine> readCommandLine(int argc, char** argv, int& status);

/// True when the arguments ask for help or the version, which needs no display.
[[nodiscard]] bool asksForText(int argc, char** argv);

/// Has to run before the toolkit starts: a picture needs no display, and is painted at the scale of --scale.
void prepareForScreenshot(int argc, char** argv);

} // namespace tambrel
