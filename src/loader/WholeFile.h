#pragma once

#include "MIDIData.h"

#include <cstddef>
#include <filesystem>
#include <stop_token>

namespace tambrel {

/// Reads regular files as a whole. Any thread; blocks on the disk.
namespace WholeFile {

/// A larger file is refused: 2 GiB less one byte.
inline constexpr std::size_t largestSize = 0x7FFF'FFFF;

/// The bytes of the file up to its end, which may move while it is read. Folders, pipes and devices are
/// refused at once. Throws `std::system_error`, `std::bad_alloc`, `std::runtime_error` with the reason, or
/// `TambrelLoadCancelled`.
[[nodiscard]] MIDIData read(const std::filesystem::path& file, const std::stop_token& stop = {});
/// The same on a thread of its own, which is left behind when it stalls and a stop is requested: this returns
/// at once then. Costs a small file as much again.
[[nodiscard]] MIDIData readOrLeave(const std::filesystem::path& file, const std::stop_token& stop);

} // namespace WholeFile
} // namespace tambrel
