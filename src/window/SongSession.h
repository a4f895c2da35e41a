#pragma once

#include "MIDIPlayerController.h"
#include "PlaybackChange.h"
#include "SongLoader.h"
#include "TambrelLoadCoordinator.h"
#include "TambrelLoadError.h"
#include "TambrelPlaybackState.h"
#include "VariantPreparation.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

namespace tambrel {

class TambrelBetaLog;

/// What becomes of a song when it is there.
enum class AfterLoad { wait, play };

/// What a song session needs from the world around it; all called on the main thread, the builder excepted.
struct SongSessionServices {
    MIDIFilePlayerFactory makePlayer;
    TimelineBuilder buildTimeline;
};

/// What a song session tells. Called from within the operation; must not command the session.
struct SongSessionEvents {
    /// Another song, or none, is about to come: drop what waits to be done with the present one.
    std::function<void()> leaving;
    std::function<void()> loading;
    /// Player and playback state hold the song, which rests at its beginning.
    std::function<void(const TambrelLoadedFile& file)> loaded;
    /// They hold none, for this reason.
    std::function<void(const TambrelLoadError& error)> failed;
    std::function<void()> cleared;
    /// After each of those three: another song is there, or there is none any more.
    std::function<void()> changed;
    /// After that, when a load has ended; an empty reason means success.
    std::function<void(const std::string& failure)> finished;
    /// The last of all: the song that has been loaded is to play.
    std::function<void()> playWanted;
};

/// The song of the window, from a requested file to a song that the player holds or an error. Owns the player
/// controller, the playback state and the load coordinator. Knows no view. Main thread only.
class SongSession {
public:
    /// `log` outlives the session.
    SongSession(SongSessionServices services, SongSessionEvents events, TambrelBetaLog& log);
    ~SongSession();
    SongSession(const SongSession&) = delete;
    SongSession& operator=(const SongSession&) = delete;

    /// Begins to load a file; what was being loaded is dropped.
    void load(const std::filesystem::path& url, AfterLoad after);
    [[nodiscard]] bool isLoading() const { return isLoading_; }
    /// What becomes of a song that is loading.
    [[nodiscard]] AfterLoad afterLoad() const { return afterLoad_; }
    void setAfterLoad(AfterLoad after) { afterLoad_ = after; }
    /// Stops all preparation of the present song; it does not begin to play by itself.
    void dropWhatWaits();
    /// Ends the song, and what is loading.
    void clear();
    /// The song that is loaded cannot be played after all: unloads it and says why.
    void playbackPreparationFailed(const std::string& reason);

    [[nodiscard]] MIDIPlayerController& player() { return player_; }
    [[nodiscard]] const MIDIPlayerController& player() const { return player_; }
    [[nodiscard]] TambrelPlaybackState& playbackState() { return playbackState_; }
    [[nodiscard]] const TambrelPlaybackState& playbackState() const { return playbackState_; }
    /// Makes ahead what the Loudness switch selects.
    [[nodiscard]] VariantPreparation& preparation() { return preparation_; }
    /// What has been loaded; null without a song.
    [[nodiscard]] const TambrelLoadedFile* loadedFile() const { return song_ ? &song_->file : nullptr; }

private:
    void takeOutcome(std::int64_t generation, const LoadOutcome& outcome);
    void apply(const std::shared_ptr<LoadedSong>& song);
    void logImport(const TambrelLoadedFile& file);
    void takePlaybackData(LoadedSong& song);
    void fail(const std::exception& error);
    void cancelLoad();
    void forgetSong();
    void replaceSong(std::shared_ptr<const LoadedSong> song);

    const SongSessionServices services_;
    const SongSessionEvents events_;
    TambrelBetaLog& log_;
    MIDIPlayerController player_;
    TambrelPlaybackState playbackState_;
    TambrelLoadCoordinator loadCoordinator_;
    std::shared_ptr<const LoadedSong> song_; // What the player holds.
    SongLoader loader_;
    VariantPreparation preparation_{loader_, playbackState_};
    AfterLoad afterLoad_ = AfterLoad::wait; // Of the newest load.
    bool isLoading_ = false;
};

} // namespace tambrel
