#pragma once

#include "SongPageFacts.h"
#include "SongSession.h"
#include "SpokenStatus.h"
#include "TambrelTransportCoordinator.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tambrel {

class MainView;
class TambrelBetaLog;

/// What the main view needs from the world around it; all called on the main thread, the builder excepted.
struct MainViewServices {
    MIDIFilePlayerFactory makePlayer;
    TimelineBuilder buildTimeline;
    std::function<void()> beep;
    /// Asks for one of the files that can be loaded; nothing when the user cancels. `loaded` is the song that
    /// is there, or empty.
    std::function<std::optional<std::filesystem::path>(const std::filesystem::path& loaded)> chooseFile;
    /// Called when a file has been loaded, or has failed to (an empty reason means success). May be empty.
    std::function<void(const std::string& failure)> loadFinished;
    /// Called when another song is there, or none any more. May be empty.
    std::function<void()> songChanged = {};
};

/// Joins the content of the main window to the song session and the transport: carries out what the user asks
/// of the view and the menus, and has the view show what came of it. Main thread only.
class MainViewController {
public:
    /// `log` outlives the controller. The view belongs to whoever shows it, and outlives the controller.
    MainViewController(MainViewServices services, TambrelBetaLog& log);
    MainViewController(const MainViewController&) = delete;
    MainViewController& operator=(const MainViewController&) = delete;

    [[nodiscard]] QWidget& view() const;

    /// Told of every change from within the operation that causes it; may read the controller and must not
    /// command it.
    std::function<void(PlaybackChange)> onPlaybackChange;

    /// Begins to load a file; what was being loaded is dropped. A song that is to play does not when the
    /// user stops or pauses while it is loading.
    void load(const std::filesystem::path& url, AfterLoad after = AfterLoad::wait);
    // What the buttons and the menu do; each logs the click.
    void openFile();
    void clearLoadedMIDI();
    void playPause();
    void stop();
    void rtz();
    // The same, for whoever else asks. A song that is loading is played when it is there, unless it was to
    // play already.
    /// Asks for a file and loads it.
    void carryOutOpen();
    /// False without a song to play.
    bool carryOutPlayPause();
    void carryOutPlay();
    void carryOutPause();
    void carryOutStop();
    /// Ends what plays, and what is to play when it is loaded, for the program ends.
    void fallSilent();
    void toggleLoudness();
    /// Moves the playhead, in seconds.
    void seek(double position) { session_.player().seek(position); }

    /// The song that is loaded cannot be played after all: unloads it and says why.
    void playbackPreparationFailed(const std::string& reason) { session_.playbackPreparationFailed(reason); }
    /// The sound output was lost and is waited for, or that is over.
    void showOutputLoss(bool isLost);

    /// Says something beside the status, which stays.
    void explain(const std::string& text);
    /// The song is to play and cannot be heard: it rests where it is, and the window says why.
    void playbackFailed(const std::string& reason);

    [[nodiscard]] const MIDIPlayerController& player() const { return session_.player(); }
    /// What has been loaded; null without a song.
    [[nodiscard]] const TambrelLoadedFile* loadedFile() const { return session_.loadedFile(); }
    [[nodiscard]] const TambrelPlaybackState& playbackState() const { return session_.playbackState(); }
    /// For who wants to know more of the song than the window shows.
    [[nodiscard]] std::optional<SongPageFacts> songFacts() const;

private:
    [[nodiscard]] MainView* makeView();
    [[nodiscard]] SongSessionEvents sessionEvents();
    void noteStop();
    void showLoaded(const TambrelLoadedFile& file);
    void showFailure(const TambrelLoadError& error);
    void report(PlaybackChange change);

    MainViewServices services_;
    TambrelBetaLog& log_;
    MainView* const view_;
    SpokenStatus spokenStatus_;
    SongSession session_;
    TambrelTransportCoordinator transportCoordinator_;
};

} // namespace tambrel
