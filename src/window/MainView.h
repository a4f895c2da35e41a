#pragma once

#include "DeferredUserAction.h"
#include "MIDIFileInfo.h"

#include <QString>
#include <QWidget>

#include <cstdint>
#include <functional>
#include <vector>

class QUrl;

namespace tambrel {

class Announcer;
class BlackLEDActivityView;
class DropTargetPanel;
class LoadedBlueRectangleView;
class MIDITrackBarsView;
class NameChangeTeller;
class RetroButton;
class RetroLabel;
class RetroTimelineView;
class SevenSegmentCounterView;
class SongSession;
struct TransportControls;

/// What the main view says of a song at rest at its beginning; as it stands, that there is none.
struct MainViewFacts {
    QString file = "DROP MIDI FILE";
    QString status = "READY";
    QString explanation = {}; ///< Of the status, in full; plain text.
    QString tempo = "---.--- BPS";
    QString key = "KEY --";
    std::int64_t trackCount = 0;
    double duration = 0; ///< Seconds.
    std::vector<MIDITrackPhraseLane> lanes = {};
    bool isLoaded = false;
};

/// What the user can ask of the main view.
struct MainViewActions {
    std::function<void()> playPause;
    std::function<void()> stop;
    std::function<void()> rtz;
    std::function<void()> toggleLoudness;
    std::function<void()> clear;
    std::function<void(double seconds)> seek;
    std::function<void(const QUrl& file)> open;
    UserActionLog log; ///< May be empty.
};

/// Everything in the main window, built and laid out. Shows what it is given and knows no song. Main thread
/// only.
class MainView : public QWidget {
public:
    explicit MainView(MainViewActions actions);

    /// Shows a song, or that there is none, all at once.
    void show(const MainViewFacts& facts);
    void showLoading();
    /// Says more beside the status, until that is another one.
    void explainStatus(const QString& explanation);
    /// Shows a sentence below the file for as long as no status has an explanation of its own; or none.
    void showNotice(const QString& notice);
    /// Says it to users who do not see the window.
    void say(const QString& text);

    /// The controls that follow what plays. They belong to this view.
    [[nodiscard]] TransportControls transportControls(SongSession& session, std::function<void()> beep) const;

private:
    void buildInterface();
    void buildExplanation();
    void showExplanation();
    void buildLabels();
    void buildButtons();
    void wireViews();
    void showStatus(const QString& title, const QString& explanation);
    void showTexts(const MainViewFacts& facts);

    const MainViewActions actions_;
    QString notice_;

    // Children, owned by this widget.
    DropTargetPanel* dropPanel_;
    RetroLabel* fileLabel_;
    RetroLabel* explanationLabel_;
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
    RetroButton* playPauseButton_;
    RetroButton* loudnessButton_;
    Announcer* announcer_;
    NameChangeTeller* timeTeller_;
};

} // namespace tambrel
