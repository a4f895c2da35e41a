#pragma once

#include "TambrelLoadError.h"
#include "TambrelLoadedFile.h"

#include <filesystem>
#include <stop_token>

namespace tambrel {

/// Turns a file into a record that can be played. Slow: meant for a thread that nobody waits for. Keeps no
/// state. Throws `TambrelLoadError`, or `TambrelLoadCancelled` when a stop was requested.
namespace TambrelFileLoader {

[[nodiscard]] TambrelLoadedFile load(const std::filesystem::path& url, const std::stop_token& stop = {});

/// The same for a file whose content is already in memory; `url` only says what it is called.
[[nodiscard]] TambrelLoadedFile loadBytes(const MIDIData& data, const std::filesystem::path& url,
                                          const std::stop_token& stop = {});

} // namespace TambrelFileLoader
} // namespace tambrel
