#pragma once

#include "SerialExecutor.h"
#include "TambrelLoadedFile.h"
#include "Timeline.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <stop_token>

namespace tambrel {

/// A file that has been read, and the same song ready for the player.
struct LoadedSong {
    TambrelLoadedFile file;
    std::shared_ptr<const Timeline> timeline;
};

/// What became of a load: a song, or the error that it ended with (a TambrelLoadError or
/// TambrelLoadCancelled).
struct LoadOutcome {
    std::shared_ptr<const LoadedSong> song;
    std::exception_ptr error;
};

/// Loads files off the main thread, one at a time. Main thread only.
class SongLoader {
public:
    /// Calls `then` on the main thread when the load is done, has failed or was stopped, unless the loader is
    /// gone by then.
    void load(const std::filesystem::path& file, std::stop_token stop, std::function<void(LoadOutcome)> then);

    /// Frees a song off the main thread, which a large one would hold up.
    void dispose(std::shared_ptr<const LoadedSong> song);

private:
    SerialExecutor executor_;
};

} // namespace tambrel
