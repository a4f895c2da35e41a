#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
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

struct RenderCommandOptions {
    std::filesystem::path soundFont; ///< Empty for the default bank.
    double sampleRate = 48000;
    std::filesystem::path input;
    std::filesystem::path output;
};
[[nodiscard]] ExitStatus runRender(const RenderCommandOptions& options);

} // namespace tambrel::cli
