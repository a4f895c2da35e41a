#pragma once

#include "FakePlayer.h"
#include "MIDITrackBarsView.h"
#include "MainWindow.h"
#include "RecordedLog.h"
#include "RetroLabel.h"
#include "RetroTimelineView.h"
#include "SMFBuilder.h"
#include "TestFiles.h"
#include "Timeline.h"

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QUrl>

#include <memory>
#include <string>

namespace tambrel {

/// The real main window over players from any factory, driven through its controls like a user does.
class DrivenWindow {
public:
    explicit DrivenWindow(MIDIFilePlayerFactory makePlayer, bool diagnosticsEnabled = true)
        : recorded(diagnosticsEnabled) {
        controller = new MainViewController(
            {.makePlayer = std::move(makePlayer),
             .buildTimeline = Timeline::build,
             .beep = [this] { ++beeps; },
             .chooseFile = [this](const std::filesystem::path&) { return chosen; },
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
    /// Turns the Loudness switch, and waits until Play finds what that selects.
    void turnLoudness() const {
        click("loudnessButton");
        EXPECT_TRUE(QTest::qWaitFor([this] { return !controller->playbackState().missingVariant(); }));
    }
    /// Clicks the place on the timeline that means this fraction of the song.
    void clickTimeline(double fraction) const {
        auto& timeline = view("timeline");
        const double margin = 12;
        const double x = margin + fraction * (timeline.width() - 2 * margin);
        QTest::mouseClick(&timeline, Qt::LeftButton, {}, {static_cast<int>(x), timeline.height() / 2});
    }
    /// Drags a file over the panel.
    void hover(const QUrl& url) {
        dragged.setUrls({url});
        QDragEnterEvent enter(middleOfPanel(), Qt::CopyAction, &dragged, Qt::LeftButton, {});
        QCoreApplication::sendEvent(window->windowHandle(), &enter);
    }
    void leave() const {
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(window->windowHandle(), &leave);
    }
    /// Returns true when the drop was taken.
    bool drop(const QUrl& url) {
        hover(url);
        QDropEvent event(middleOfPanel(), Qt::CopyAction, &dragged, Qt::LeftButton, {});
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

    /// The content as a picture.
    [[nodiscard]] QImage picture() const { return controller->view().grab().toImage(); }

    RecordedLog recorded;
    int beeps = 0;
    std::optional<std::filesystem::path> chosen; ///< In the Open panel.
    std::vector<std::string> finished;           ///< The failure of each load that has ended, or "".
    MainViewController* controller = nullptr;
    std::unique_ptr<MainWindow> window;

private:
    [[nodiscard]] QPoint middleOfPanel() const {
        auto& panel = view("dropPanel");
        return panel.mapTo(window.get(), panel.rect().center());
    }

    QMimeData dragged;
};

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
