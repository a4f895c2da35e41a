#pragma once

#include "MIDIPlayerController.h"

#include <QWidget>

#include <filesystem>

class QLabel;
class QPushButton;
class QSlider;

namespace tambrel {

class TambrelBetaLog;

/// The content of the main window: the facts of the loaded song and the transport. Owns the player
/// controller.
class MainViewController : public QWidget {
public:
    static constexpr int contentSize = 480; ///< Width and height in points.

    MainViewController(MIDIFilePlayerFactory makePlayer, TambrelBetaLog& log);

    /// Opens a file; a failure is shown instead of its facts.
    void load(const std::filesystem::path& file);
    /// Asks for a file and opens it.
    void openFile();
    void playPause();
    void stop();
    void rtz();
    /// What was loaded cannot be played after all: unloads it and says so.
    void playbackFailed(const std::string& reason);

private:
    void buildInterface();
    void wirePlayer();
    void showProgress(double position, double duration);
    void showMode(PlaybackMode mode);
    void resetInterface(const QString& fileText, const QString& statusText);

    TambrelBetaLog& log_;
    MIDIPlayerController player_;
    QLabel* statusLabel_ = nullptr;
    QLabel* fileLabel_ = nullptr;
    QLabel* tempoLabel_ = nullptr;
    QLabel* keyLabel_ = nullptr;
    QLabel* tracksLabel_ = nullptr;
    QLabel* lengthLabel_ = nullptr;
    QLabel* progressLabel_ = nullptr;
    QSlider* timeline_ = nullptr;
    QPushButton* playPauseButton_ = nullptr;
};

} // namespace tambrel
