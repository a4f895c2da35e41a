#pragma once

#include "BlackLEDActivityView.h"
#include "DropTargetPanel.h"
#include "FakePlayer.h"
#include "LoadedBlueRectangleView.h"
#include "MIDITrackBarsView.h"
#include "MainWindow.h"
#include "RecordedLog.h"
#include "RetroButton.h"
#include "RetroLabel.h"
#include "RetroTimelineView.h"
#include "SMFBuilder.h"
#include "SevenSegmentCounterView.h"
#include "TestFiles.h"

#include <gmock/gmock.h>

#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QUrl>

#include <map>
#include <memory>
#include <string>

namespace tambrel {

/// The real main window over players from any factory, driven through its controls like a user does.
class DrivenWindow {
public:
    /// What the interface shows, by the names of the views.
    using Interface = std::map<std::string, std::string>;

    explicit DrivenWindow(
        MIDIFilePlayerFactory makePlayer,
        std::function<void(const LoadedSong&)> adoptSong = [](const LoadedSong&) {},
        bool diagnosticsEnabled = true)
        : recorded(diagnosticsEnabled) {
        controller = new MainViewController(
            {.makePlayer = std::move(makePlayer),
             .adoptSong = std::move(adoptSong),
             .beep = [this] { ++beeps; },
             .chooseFile = [this] { return chosen; },
             .loadFinished = [this](const std::string& failure) { finished.push_back(failure); }},
            recorded.log);
        window = std::make_unique<MainWindow>(controller);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }

    template<class View = QWidget>
    [[nodiscard]] View& view(const char* name) const {
        return *window->findChild<View*>(name);
    }
    [[nodiscard]] std::string label(const char* name) const {
        return view<QLabel>(name).text().toStdString();
    }
    [[nodiscard]] std::string title(const char* name) const {
        return view<QAbstractButton>(name).text().toStdString();
    }

    void click(const char* button) const { QTest::mouseClick(&view(button), Qt::LeftButton); }
    /// Clicks the place on the timeline that means this fraction of the song.
    void clickTimeline(double fraction) const {
        auto& timeline = view("timeline");
        const double margin = 12;
        const int x = static_cast<int>(margin + fraction * (timeline.width() - 2 * margin));
        QTest::mouseClick(&timeline, Qt::LeftButton, {}, {x, timeline.height() / 2});
    }
    /// Returns true when the drop was taken.
    bool drop(const QUrl& url) const {
        QMimeData dragged;
        dragged.setUrls({url});
        auto& panel = view("dropPanel");
        const QPoint place = panel.mapTo(window.get(), panel.rect().center());
        QDragEnterEvent enter(place, Qt::CopyAction, &dragged, Qt::LeftButton, {});
        QCoreApplication::sendEvent(window->windowHandle(), &enter);
        QDropEvent event(place, Qt::CopyAction, &dragged, Qt::LeftButton, {});
        QCoreApplication::sendEvent(window->windowHandle(), &event);
        return event.isAccepted();
    }

    /// Waits until so many loads in all have been applied or have failed.
    [[nodiscard]] bool waitForLoads(std::size_t count) const {
        return QTest::qWaitFor([&] { return finished.size() >= count; }, 30'000);
    }
    [[nodiscard]] bool load(const std::filesystem::path& file) const {
        controller->load(file);
        return waitForLoads(finished.size() + 1);
    }

    [[nodiscard]] Interface shown() const {
        Interface all;
        for (const char* name : {"fileLabel", "statusLabel", "tempoLabel", "keyLabel", "tracksLabel",
                                 "lengthLabel", "progressLabel"})
            all[name] = label(name);
        const auto yes = [](bool is) { return std::string(is ? "yes" : "no"); };
        const auto& timeline = view<RetroTimelineView>("timeline");
        const auto& bars = view<MIDITrackBarsView>("trackBarsView");
        all["counter"] = view<SevenSegmentCounterView>("counterView").text().toStdString();
        all["timeline"] = std::to_string(timeline.position()) + " of " + std::to_string(timeline.duration());
        all["bars"] = std::to_string(bars.trackCount()) + " tracks, " + std::to_string(bars.lanes().size()) +
                      " lanes, at " + std::to_string(bars.progress());
        all["logo"] = yes(view("logoView").isVisible());
        all["gmModuleLabel"] = yes(view("gmModuleLabel").isVisible());
        all["drop panel loaded"] = yes(view<DropTargetPanel>("dropPanel").isLoaded());
        all["module loaded"] = yes(view<LoadedBlueRectangleView>("moduleZone").isLoaded());
        all["LED"] = yes(view<BlackLEDActivityView>("activityView").isAnimating());
        all["play"] = title("playPauseButton");
        all["loudness"] = title("loudnessButton") + ", " + yes(view("loudnessButton").isEnabled());
        return all;
    }

    RecordedLog recorded;
    int beeps = 0;
    std::optional<std::filesystem::path> chosen; ///< In the Open panel.
    std::vector<std::string> finished;           ///< The failure of each load that has ended, or "".
    MainViewController* controller = nullptr;
    std::unique_ptr<MainWindow> window;
};

/// What the window shows without a file.
inline const DrivenWindow::Interface emptyInterface{
    {"LED", "no"},
    {"bars", "0 tracks, 0 lanes, at 0.000000"},
    {"counter", "00:00:00.00"},
    {"drop panel loaded", "no"},
    {"fileLabel", "DROP MIDI FILE"},
    {"gmModuleLabel", "no"},
    {"keyLabel", "KEY --"},
    {"lengthLabel", "LENGTH 00:00:00.00"},
    {"logo", "no"},
    {"loudness", "Loudness, yes"},
    {"module loaded", "no"},
    {"play", "Play"},
    {"progressLabel", "PROGRESS 00:00:00.00"},
    {"statusLabel", "READY"},
    {"tempoLabel", "---.--- BPS"},
    {"timeline", "0.000000 of 0.000000"},
    {"tracksLabel", "0 Tracks"},
};

/// The same with some of it changed.
[[nodiscard]] inline DrivenWindow::Interface with(DrivenWindow::Interface changes,
                                                  DrivenWindow::Interface rest = emptyInterface) {
    changes.merge(rest);
    return changes;
}

/// A song of one second: a drum and a bass, in D major at 120 beats a minute when it says so.
[[nodiscard]] inline Bytes smallSong(bool saysTempoAndKey = true) {
    testing::TrackBuilder drum;
    if (saysTempoAndKey)
        drum.tempo(0, 500'000).key(0, 2, false);
    drum.noteOn(0, 9, 36).noteOff(960, 9, 36);
    return testing::smfBytes(
        1, 480, {drum, testing::TrackBuilder().program(0, 1, 33).noteOn(0, 1, 40).noteOff(480, 1, 40)});
}

} // namespace tambrel
