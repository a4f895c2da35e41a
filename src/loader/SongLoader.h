#pragma once

#include "PreparedVariant.h"
#include "SerialExecutor.h"
#include "TambrelLoadedFile.h"

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace tambrel {

class Timeline;

/// Makes the timeline of a whole Standard MIDI File: `Timeline::build`, which this room does not see. Called
/// on the loader's thread. `original` is null unless `song` is its Loudness variant. Throws
/// TambrelLoadCancelled once a stop is requested.
using TimelineBuilder = std::function<std::shared_ptr<const Timeline>(
    const MIDIData& song, const std::stop_token& stop, std::shared_ptr<const Timeline> original)>;

/// A file that has been read, and the same song ready for the player.
struct LoadedSong {
    TambrelLoadedFile file;
    PlayableSong song;
};

/// The result of a load: a song, or the error that it ended with (a TambrelLoadError or
/// TambrelLoadCancelled).
struct LoadOutcome {
    std::shared_ptr<LoadedSong> song;
    std::exception_ptr error;
};

/// Loads files off the main thread, one at a time. All large objects that it makes are freed in the
/// background. Main thread only.
class SongLoader {
public:
    explicit SongLoader(TimelineBuilder buildTimeline);

    /// Calls `then` on the main thread when the load is done, has failed or was stopped, unless the loader is
    /// gone by then.
    void load(const std::filesystem::path& file, std::stop_token stop, std::function<void(LoadOutcome)> then);

    /// Makes a variant of a song; calls `then` on the main thread with it, or with nothing when it could not
    /// be made or was stopped, unless the loader is gone by then.
    void prepare(VariantRequest request, std::stop_token stop,
                 std::function<void(std::optional<PreparedVariant>)> then);

private:
    const TimelineBuilder buildTimeline_;
    SerialExecutor executor_;
};

} // namespace tambrel
