#pragma once

#include "MIDIData.h"

#include <filesystem>

namespace tambrel::cli {

/// The bytes of a file, whole. Throws std::system_error.
[[nodiscard]] MIDIData readSong(const std::filesystem::path& file);

} // namespace tambrel::cli
