#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

namespace tambrel::cli {

/// Exit statuses of the program.
enum ExitStatus { allWell = 0, aFileFailed = 1, wrongUsage = 2 };

/// Writes "tambrel-midi: FILE: message" to standard error.
void complain(const std::filesystem::path& file, std::string_view message);

struct InfoOptions {
    bool json = false;
    std::vector<std::filesystem::path> files;
};
[[nodiscard]] ExitStatus runInfo(const InfoOptions& options);

struct ConvertOptions {
    bool loudness = false; ///< Convert the Loudness variant.
    bool force = false;    ///< Overwrite what stands at `output`.
    std::filesystem::path input;
    std::filesystem::path output;
};
/// A clip becomes the Standard MIDI File that is played for it, a Standard MIDI File its companion clip.
[[nodiscard]] ExitStatus runConvert(const ConvertOptions& options);
/// Writes the Loudness variant of what would be played.
[[nodiscard]] ExitStatus runLoudness(const ConvertOptions& options);

struct RenderCommandOptions {
    std::filesystem::path soundFont; ///< Empty for the default bank.
    double sampleRate = 48000;
    bool loudness = false; ///< Render the Loudness variant.
    std::filesystem::path input;
    std::filesystem::path output;
};
[[nodiscard]] ExitStatus runRender(const RenderCommandOptions& options);

} // namespace tambrel::cli
