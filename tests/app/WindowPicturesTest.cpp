#include "DrivenWindow.h"
#include "ExpectedPicture.h"
#include "RetroStyle.h"
#include "TambrelAboutPanel.h"
#include "TambrelMenuBuilder.h"
#include "ViewProbe.h"

#include <QBackingStore>
#include <QMenuBar>
#include <QPlainTextEdit>

namespace tambrel {
namespace {

using testing::clipBytes;
using testing::smfBytes;
using testing::TrackBuilder;

/// A song of many tracks, each with two phrases at places of its own.
Bytes manyTracks(unsigned count) {
    std::vector<TrackBuilder> tracks{TrackBuilder().tempo(0, 616'438).key(0, -3, true)};
    for (unsigned i = 1; i < count; ++i) {
        TrackBuilder& track = tracks.emplace_back();
        for (const unsigned wait : {240 * i, 9600 - 360 * i})
            for (unsigned note = 0; note < 4 + i; ++note)
                track.noteOn(note == 0 ? wait : 120, 1, 40).noteOff(120, 1, 40);
    }
    return smfBytes(1, 480, tracks);
}

/// The whole window, as a screen shows it: what was due to be repainted, and nothing else, is painted anew.
class WindowPicturesTest : public ::testing::Test {
protected:
    WindowPicturesTest() {
        QApplication::setStyle(new RetroStyle);
        TambrelMenuBuilder::install(*driven.window->menuBar(), {});
        driven.window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(driven.window.get()));
        EXPECT_TRUE(QTest::qWaitFor([&] { return driven.window->height() > 480; }));
    }

    [[nodiscard]] QWidget& view(const char* name) const { return driven.view(name); }

    void expectPicture(const QString& name) const {
        paintWhatIsDue(*driven.window);
        const QString scale = qEnvironmentVariable("QT_SCALE_FACTOR", "1");
        const auto* screen = dynamic_cast<QImage*>(driven.window->backingStore()->paintDevice());
        ASSERT_TRUE(screen);
        EXPECT_TRUE(isExpected(*screen, name + "@" + scale));
    }

    void load(const char* name, const Bytes& bytes, double duration) {
        script.duration = duration;
        ASSERT_TRUE(driven.load(files.write(name, bytes)));
    }
    void showAt(double seconds) {
        script.position = seconds;
        driven.controller->seek(seconds);
    }

    TestFiles files;
    PlayerScript script;
    DrivenWindow driven{script.factory()};
};

TEST_F(WindowPicturesTest, LooksInEveryStateAsItDidWhenSomebodyLooked) {
    expectPicture("empty");

    driven.hover(QUrl("file:///song.mid"));
    expectPicture("hovering");
    driven.leave();

    load("still.mid", smfBytes(1, 480, std::vector<TrackBuilder>(3)), 10);
    driven.controller->load(files.write("next.mid", smallSong()));
    advance(view("activityView"), 2);
    expectPicture("loading");
    ASSERT_TRUE(driven.waitForLoads(2));

    load("A clip.midi2", clipBytes({0xF0200000, 0, 0, 0, 0x20903C64, 0x00400060, 0x20803C00}), 3723.04);
    expectPicture("loaded");

    load("Many tracks (II).mid", manyTracks(12), 240);
    driven.turnLoudness();
    driven.click("playPauseButton");
    showAt(83.45);
    advance(view("activityView"), 3);
    QTest::mousePress(&view("stopButton"), Qt::LeftButton);
    expectPicture("playing");
    QTest::mouseRelease(&view("stopButton"), Qt::LeftButton, {}, {-9, -9});

    driven.click("playPauseButton");
    QTest::keyClick(driven.window.get(), Qt::Key_Tab);
    expectPicture("paused");

    ASSERT_TRUE(driven.load(files.write("bad.mid", {'M', 'T'})));
    expectPicture("failed");

    load("שיר <b>ארוך< מאוד & ארוך עוד יותר, ולא נגמר לעולם.mid", manyTracks(20), 36'000);
    view("timeline").setFocus();
    showAt(28'099.86);
    expectPicture("crowded");
}

TEST_F(WindowPicturesTest, ShowsThePagesOfTheInfoPanelAsTheyWereWhenSomebodyLooked) {
    const AboutFacts facts{.info = {.shortVersion = "1.2", .build = "34"},
                           .builtOn = "Qt, FluidSynth and ICU",
                           .sound = {.banks = {{"System's default", ""}},
                                     .bankInUse = [] { return std::string("/banks/default.sf2"); },
                                     .output = [] { return std::string("pulseaudio, else alsa, else jack"); },
                                     .volume = [] { return 0.8; },
                                     .chooseBank = {},
                                     .setVolume = {}},
                           .song =
                               SongPageFacts{{{"File", "Many tracks (II).mid"}}, MIDIData(manyTracks(12))}};
    const std::pair<InfoPage, const char*> rows[] = {{InfoPage::song, "song"},
                                                     {InfoPage::sound, "sound"},
                                                     {InfoPage::keys, "keys"},
                                                     {InfoPage::tambrel, "tambrel"}};
    for (const auto& [page, name] : rows) {
        TambrelAboutPanel::show(*driven.window, facts, page);
        auto& panel = *driven.window->findChild<QDialog*>("aboutPanel");
        ASSERT_TRUE(QTest::qWaitForWindowActive(&panel));
        auto& song = *panel.findChild<QPlainTextEdit*>("Song");
        ASSERT_TRUE(QTest::qWaitFor([&] { return song.toPlainText().contains("Division"); }));
        EXPECT_TRUE(isExpected(panel.grab().toImage(),
                               QString("info-%1@").arg(name) + qEnvironmentVariable("QT_SCALE_FACTOR", "1")));
    }
}

} // namespace
} // namespace tambrel
