#pragma once

#include "MIDIPlayerController.h"
#include "SongLoader.h"
#include "TambrelLoadCoordinator.h"
#include "TambrelLoadError.h"
#include "TambrelPlaybackState.h"
#include "TambrelTransportCoordinator.h"

#include <QWidget>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace tambrel {

class BlackLEDActivityView;
class DropTargetPanel;
class LoadedBlueRectangleView;
class MIDITrackBarsView;
class RetroButton;
class RetroLabel;
class RetroTimelineView;
class SevenSegmentCounterView;
class TambrelBetaLog;

/// What the main view needs from the world around it; all called on the main thread.
struct MainViewServices {
    MIDIFilePlayerFactory makePlayer;
    /// Receives the timeline of a song just before its player is made.
    std::function<void(const LoadedSong&)> adoptSong;
    std::function<void()> beep;
    /// Asks for one of the files that can be loaded; nothing when the user cancels.
    std::function<std::optional<std::filesystem::path>()> chooseFile;
    /// Called when a file has been loaded, or has failed to (an empty reason means success). May be empty.
    std::function<void(const std::string& failure)> loadFinished;
};

/// What becomes of a song when it is there.
enum class AfterLoad { wait, play };

/// The content of the main window. Builds every control, owns the player controller, the playback state and
/// the load coordinator, and carries a file from a requested location to a song that is ready to play, or to
/// an error display. Main thread only.
class MainViewController : public QWidget {
public:
    /// `log` outlives the controller.
    MainViewController(MainViewServices services, TambrelBetaLog& log);
    ~MainViewController() override;

    /// Told of every change from within the operation that causes it; may read the controller and must not
    /// command it.
    std::function<void(PlaybackChange)> onPlaybackChange;

    /// Begins to load a file; what was being loaded is dropped. A song that is to play does not when the
    /// user stops or pauses while it is loading.
    void load(const std::filesystem::path& url, AfterLoad after = AfterLoad::wait);
    /// Asks for a file and loads it.
    void openFile();
    void clearLoadedMIDI();
    void playPause();
    void stop();
    void rtz();
    /// Ends what plays, and what is to play when it is loaded, for the program ends.
    void fallSilent();
    void toggleLoudness();
    /// Moves the playhead, in seconds.
    void seek(double position) { player_.seek(position); }

    /// The song that is loaded cannot be played after all: unloads it and says why.
    void playbackPreparationFailed(const std::string& reason);

    [[nodiscard]] const MIDIPlayerController& player() const { return player_; }
    /// What has been loaded; null without a song.
    [[nodiscard]] const TambrelLoadedFile* loadedFile() const { return song_ ? &song_->file : nullptr; }
    [[nodiscard]] const TambrelPlaybackState& playbackState() const { return playbackState_; }

private:
    void buildInterface();
    void buildLabels();
    void buildButtons();
    void wireViews();
    void takeOutcome(std::int64_t generation, LoadOutcome outcome);
    void applyLoadedFile(const std::shared_ptr<const LoadedSong>& song);
    void takePlaybackData(const LoadedSong& song);
    void showLoadedFile(const TambrelLoadedFile& file);
    void handleLoadFailure(const std::exception& error);
    void resetLoadedMIDIInterface(const QString& fileText, const QString& statusText);
    void showStatus(const QString& title, const QString& explanation = {});
    void showLoaded(bool isLoaded);
    void replaceSong(std::shared_ptr<const LoadedSong> song);
    void report(PlaybackChange change) const;

    MainViewServices services_;
    TambrelBetaLog& log_;
    MIDIPlayerController player_;
    TambrelPlaybackState playbackState_;
    TambrelLoadCoordinator loadCoordinator_;
    std::shared_ptr<const LoadedSong> song_; // What the player holds.
    SongLoader loader_;
    AfterLoad afterLoad_ = AfterLoad::wait; ///< Of the newest load.

    // Children, owned by this widget.
    DropTargetPanel* dropPanel_;
    RetroLabel* titleLabel_;
    RetroLabel* fileLabel_;
    RetroLabel* statusLabel_;
    SevenSegmentCounterView* counterView_;
    QWidget* logoView_;
    RetroLabel* tempoLabel_;
    RetroLabel* keyLabel_;
    RetroLabel* tracksLabel_;
    RetroLabel* lengthLabel_;
    RetroLabel* progressLabel_;
    RetroLabel* gmModuleLabel_;
    RetroTimelineView* timeline_;
    BlackLEDActivityView* activityView_;
    MIDITrackBarsView* trackBarsView_;
    LoadedBlueRectangleView* moduleZone_;
    QWidget* ledZone_;
    RetroButton* playPauseButton_;
    RetroButton* loudnessButton_;

    std::optional<TambrelTransportCoordinator> transportCoordinator_;
};

} // namespace tambrel
