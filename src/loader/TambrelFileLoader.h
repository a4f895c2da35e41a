#pragma once

#include "TambrelLoadError.h"
#include "TambrelLoadedFile.h"
#include "WholeFile.h"

#include <filesystem>
#include <functional>
#include <stop_token>

namespace tambrel {

/// Turns a file into a record that can be played. Any thread; slow, so not the main thread. Keeps no state.
/// Throws `TambrelLoadError`, or `TambrelLoadCancelled` when a stop was requested.
namespace TambrelFileLoader {

/// Called on the loading thread with the data to play, as soon as it is known to be whole: the timeline can
/// then be built beside the rest of the load.
using PlaybackDataHook = std::function<void(const MIDIData& playbackData)>;

/// `WholeFile::readOrLeave`, or `WholeFile::read` where no user waits at a window.
using FileReader = MIDIData (*)(const std::filesystem::path& file, const std::stop_token& stop);

[[nodiscard]] TambrelLoadedFile load(const std::filesystem::path& url, const std::stop_token& stop = {},
                                     const PlaybackDataHook& onPlaybackData = {},
                                     FileReader reader = WholeFile::readOrLeave);

/// The same for a file whose content is already in memory; `url` only says what it is called.
[[nodiscard]] TambrelLoadedFile loadBytes(const MIDIData& data, const std::filesystem::path& url,
                                          const std::stop_token& stop = {},
                                          const PlaybackDataHook& onPlaybackData = {});

} // namespace TambrelFileLoader
} // namespace tambrel
