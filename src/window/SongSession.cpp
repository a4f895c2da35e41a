#include "SongSession.h"

#include "TambrelBetaLog.h"
#include "TimeText.h"
#include "UTF8.h"

#include <string_view>
#include <utility>

namespace tambrel {
namespace {

constexpr std::string_view loading = "MainViewController.load(url:)"; // As log lines have always named it.

} // namespace

SongSession::SongSession(SongSessionServices services, SongSessionEvents events, TambrelBetaLog& log)
    : services_(std::move(services)),
      events_(std::move(events)),
      log_(log),
      player_(services_.makePlayer, log),
      playbackState_(log),
      loader_(services_.buildTimeline) {}

SongSession::~SongSession() {
    loadCoordinator_.cancel();
}

void SongSession::load(const std::filesystem::path& url, AfterLoad after) {
    log_.function(loading, [&url] { return "Loading MIDI file " + UTF8::repaired(url.filename().native()); });
    const std::int64_t generation = loadCoordinator_.begin();
    afterLoad_ = after;
    isLoading_ = true;
    dropWhatWaits();
    events_.loading();
    const std::stop_source task;
    loadCoordinator_.setTask(task);
    loader_.load(url, task.get_token(),
                 [this, generation](const LoadOutcome& outcome) { takeOutcome(generation, outcome); });
}

void SongSession::takeOutcome(std::int64_t generation, const LoadOutcome& outcome) {
    if (generation == loadCoordinator_.generation()) {
        isLoading_ = false;
        try {
            if (outcome.error)
                std::rethrow_exception(outcome.error);
            apply(outcome.song);
            if (afterLoad_ == AfterLoad::play && player_.mode() != PlaybackMode::playing)
                events_.playWanted();
        } catch (const TambrelLoadCancelled&) { // What cancelled it has updated the interface.
        } catch (const std::exception& error) {
            fail(error);
        }
    }
}

void SongSession::apply(const std::shared_ptr<LoadedSong>& song) {
    const TambrelLoadedFile& file = song->file;
    logImport(file);
    dropWhatWaits();
    takePlaybackData(*song);
    events_.loaded(file);
    replaceSong(song);
    log_.procedure(loading, [&] {
        return "Loaded " + file.fileName + "; tracks " + std::to_string(file.info.displayTrackCount) +
               "; duration " + timeText(player_.duration());
    });
    events_.finished({});
}

void SongSession::logImport(const TambrelLoadedFile& file) {
    if (!file.importSummary)
        return;
    log_.function(loading, [&file] { return "Routed " + file.fileName + " through MIDI 2.0 clip importer"; });
    log_.procedure(loading,
                   [&file] { return "MIDI 2.0 import summary: " + file.importSummary->debugDescription(); });
}

// The generated companion leaves the record: the playback state decides how long it lives.
void SongSession::takePlaybackData(LoadedSong& song) {
    TambrelLoadedFile& file = song.file;
    playbackState_.replaceLoadedMIDI(song.song);
    if (file.importedMIDI2ClipData)
        playbackState_.cacheImportedMIDI2ClipCompanion(*file.importedMIDI2ClipData);
    else if (file.midi2ClipCompanionSummary)
        playbackState_.cacheGeneratedMIDI2ClipCompanion(file.midi2ClipCompanionData,
                                                        *file.midi2ClipCompanionSummary, false, loading);
    file.midi2ClipCompanionData.reset();
    try {
        player_.load(song.song);
    } catch (const std::exception& error) {
        throw TambrelLoadError::playbackPreparationFailed(TambrelLoadError::diagnosticReason(error));
    }
}

void SongSession::fail(const std::exception& error) {
    log_.function(loading, [&error] { return std::string("Error: ") + error.what(); });
    const auto* known = dynamic_cast<const TambrelLoadError*>(&error);
    if (known != nullptr)
        log_.procedure(loading, [known] { return known->diagnosticDescription(); });
    forgetSong();
    const TambrelLoadError shown =
        known != nullptr
            ? *known
            : TambrelLoadError::playbackPreparationFailed(TambrelLoadError::diagnosticReason(error));
    events_.failed(shown);
    replaceSong(nullptr);
    events_.finished(shown.diagnosticDescription());
}

void SongSession::playbackPreparationFailed(const std::string& reason) {
    cancelLoad();
    fail(TambrelLoadError::playbackPreparationFailed(reason));
}

void SongSession::clear() {
    cancelLoad();
    forgetSong();
    events_.cleared();
    replaceSong(nullptr);
}

void SongSession::cancelLoad() {
    loadCoordinator_.cancel();
    isLoading_ = false;
}

void SongSession::dropWhatWaits() {
    preparation_.cancel();
    events_.leaving();
}

void SongSession::forgetSong() {
    dropWhatWaits();
    player_.unload();
    playbackState_.reset();
}

// Last of all, after the player and the playback state have let go of the old song: while that is freed, the
// main thread has to wait when it needs memory from the system.
void SongSession::replaceSong(std::shared_ptr<const LoadedSong> song) {
    song_ = std::move(song);
    events_.changed();
}

} // namespace tambrel
