#pragma once

#include "MIDIData.h"

#include <cstddef>
#include <filesystem>
#include <stop_token>

namespace tambrel {

/// Reads regular files as a whole.
namespace WholeFile {

/// No song is larger: 2 GiB less one byte.
inline constexpr std::size_t largestSize = 0x7FFF'FFFF;

/// The bytes that the file has while it is read, wherever its end is by then. Folders, pipes and devices are
/// refused without waiting for anything. Throws `std::system_error`, `std::bad_alloc`, `std::runtime_error`
/// with the reason, or `TambrelLoadCancelled`.
[[nodiscard]] MIDIData read(const std::filesystem::path& file, const std::stop_token& stop = {});

} // namespace WholeFile
} // namespace tambrel
