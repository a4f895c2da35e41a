#pragma once

#include "MIDIData.h"
#include "TambrelLoadedFile.h"

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace tambrel::cli {

/// The name that stands for standard input and standard output.
inline constexpr const char* standardStream = "-";

/// Arguments that do not go together; `what` says why.
class UsageError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What a command reads.
struct InputOptions {
    std::vector<std::filesystem::path> operands;
    std::string namesFrom; ///< A file with further names, each ended by a zero byte; "-" for standard input.
};

/// The operands and what `namesFrom` lists. Main thread. Throws UsageError when nothing is named,
/// std::runtime_error with the reason when the list cannot be read.
[[nodiscard]] std::vector<std::filesystem::path> inputs(const InputOptions& options);

/// All that a file, a pipe or standard input holds. Throws TambrelLoadError, or TambrelLoadCancelled when the
/// program is interrupted. Any thread.
[[nodiscard]] MIDIData readInput(const std::filesystem::path& file);

/// The same, loaded as a song. Any thread.
[[nodiscard]] TambrelLoadedFile loadInput(const std::filesystem::path& file);

} // namespace tambrel::cli
