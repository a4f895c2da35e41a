#include "BlackLEDActivityView.h"
#include "DrivenWindow.h"

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using testing::smfBytes;
using testing::TrackBuilder;

/// Does something in the moment in which the outcome of a load reaches the main thread.
class AtArrival : public QObject {
public:
    explicit AtArrival(std::function<void()> act) : act_(std::move(act)) { qApp->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::SockAct && act_)
            std::exchange(act_, nullptr)();
        return false;
    }
    [[nodiscard]] bool wait() const {
        return QTest::qWaitFor([this] { return !act_; });
    }

private:
    std::function<void()> act_;
};

class MainViewControllerTest : public ::testing::Test {
protected:
    /// Loads a song and plays it, with Loudness, to its middle.
    void playLoud(const std::filesystem::path& song) {
        ASSERT_TRUE(driven->load(song));
        driven->turnLoudness();
        driven->click("playPauseButton");
        script.position = 5;
    }

    TestFiles files;
    PlayerScript script;
    std::optional<DrivenWindow> driven{script.factory()};
    const QImage empty = driven->picture();
    const std::filesystem::path a = files.write("a.mid", smallSong());
    const std::filesystem::path b = files.write("b.mid", smallSong(false));
};

TEST_F(MainViewControllerTest, TakesEverythingBackWhenALoadFails) {
    const std::tuple<const char*, std::filesystem::path, const char*, const char*, const char*> rows[] = {
        {"Unreadable File", files.path("none.mid"), "", "Could not read the selected file.",
         "Could not read none.mid: No such file or directory"},
        {"Invalid MIDI 2.0", files.write("bad.clip", {'n', 'o'}), "", "The MIDI 2.0 clip is not playable.",
         "Invalid MIDI 2.0 clip: "},
        {"Invalid MIDI File", files.write("bad.mid", {'n', 'o'}), "", "The file is not valid MIDI data.",
         "Malformed MIDI data: The file is too short to contain a Standard MIDI header."},
        {"Unsupported Format", files.write("two.mid", smfBytes(2, 480, {TrackBuilder()})), "",
         "MIDI format 2 is not supported.",
         "Unsupported Standard MIDI File format 2; expected format 0 or 1."},
        {"Playback Error", b, "no bank", "Could not prepare MIDI playback.",
         "Could not prepare MIDI playback: no bank"},
    };
    for (const auto& [title, file, refusal, message, diagnosis] : rows) {
        SCOPED_TRACE(title);
        script.refusal.clear();
        playLoud(b);
        driven->beeps = 0;
        script.refusal = refusal;
        ASSERT_TRUE(driven->load(file));
        EXPECT_EQ(driven->label("fileLabel"), message);
        EXPECT_EQ(driven->label("statusLabel"), title);
        EXPECT_EQ(driven->beeps, 1);
        EXPECT_EQ(script.alive, 0);
        EXPECT_FALSE(driven->controller->playbackState().originalMIDIData());
        EXPECT_THAT(driven->finished.back(), HasSubstr(diagnosis));
    }
}

TEST_F(MainViewControllerTest, KeepsOnlyPhrasesThatCanBeToldApart) {
    constexpr int count = 30'000;
    TrackBuilder crowded;
    for (int i = 0; i < count; ++i)
        crowded.noteOn(3, 0, 60); // Each a phrase of its own, at one tick a quarter note.
    ASSERT_TRUE(driven->load(files.write("crowded.mid", smfBytes(1, 1, {crowded}))));
    const auto& phrases = driven->view<MIDITrackBarsView>("trackBarsView").lanes().at(0).phrases;
    EXPECT_LE(phrases.size(), 8193U);
    EXPECT_GT(phrases.size(), 4000U);
    EXPECT_EQ(phrases.front().start, 1.0 / count);
    EXPECT_GE(phrases.back().end, 1);
}

TEST_F(MainViewControllerTest, DropsALoadThatIsOvertakenClearedOrHasNoPlayerLeft) {
    driven->controller->load(a);
    ASSERT_TRUE(driven->load(b)); // In turn: what became of the first has been told by then.
    EXPECT_EQ(driven->label("fileLabel"), "b.mid");
    driven->controller->load(a);
    ASSERT_TRUE(AtArrival([this] { driven->click("clearButton"); }).wait());
    EXPECT_EQ(driven->picture(), empty);
    driven->controller->load(a);
    ASSERT_TRUE(AtArrival([this] { driven->controller->playbackPreparationFailed("no device"); }).wait());
    EXPECT_EQ(driven->label("statusLabel"), "Playback Error");
    ASSERT_TRUE(driven->load(files.path("none.mid")));
    EXPECT_THAT(driven->finished,
                ElementsAre("", "Could not prepare MIDI playback: no device", HasSubstr("none.mid")));
    EXPECT_EQ(driven->beeps, 2);
    EXPECT_THAT(script.songs, SizeIs(1));
}

TEST_F(MainViewControllerTest, PlaysOnUntilTheNextSongIsThere) {
    playLoud(b);
    driven->controller->load(a);
    EXPECT_EQ(driven->label("statusLabel"), "Loading");
    EXPECT_TRUE(script.playing);
    ASSERT_TRUE(driven->waitForLoads(2));
    EXPECT_EQ(driven->label("fileLabel"), "a.mid");
    EXPECT_EQ(driven->title("loudnessButton"), "Loudness");
    EXPECT_FALSE(script.playing);
    EXPECT_EQ(script.alive, 1);

    driven->controller->load(b);
    driven.reset(); // The user quits.
    QCoreApplication::processEvents();
    EXPECT_EQ(script.alive, 0);
}

TEST_F(MainViewControllerTest, PlaysASongThatWasOpenedToPlayUnlessTheUserEndsThat) {
    const std::tuple<const char*, bool, PlaybackMode> rows[] = {
        {"stopButton", false, PlaybackMode::idle},
        {"playPauseButton", true, PlaybackMode::idle},
        {"rtzButton", true, PlaybackMode::playing},
    };
    for (const auto& [button, playsBefore, mode] : rows) {
        ASSERT_TRUE(driven->load(b));
        if (playsBefore)
            driven->click("playPauseButton");
        driven->controller->load(a, AfterLoad::play);
        driven->click(button);
        ASSERT_TRUE(driven->waitForLoads(driven->finished.size() + 1));
        EXPECT_EQ(driven->controller->player().mode(), mode) << button;
    }
}

TEST_F(MainViewControllerTest, PlaysWithLoudnessAsSoonAsTheVariantIsThere) {
    const auto& player = driven->controller->player();
    ASSERT_TRUE(driven->load(a));
    driven->turnLoudness();
    static_cast<void>(driven->recorded.taken());
    driven->click("playPauseButton");
    EXPECT_EQ(player.mode(), PlaybackMode::playing) << "at once, since it is there";
    const auto lines = driven->recorded.taken();

    ASSERT_TRUE(driven->load(a));
    driven->click("loudnessButton");
    static_cast<void>(driven->recorded.taken());
    driven->click("playPauseButton");
    EXPECT_EQ(player.mode(), PlaybackMode::idle);
    EXPECT_EQ(driven->label("statusLabel"), "Loading");
    EXPECT_TRUE(driven->view<BlackLEDActivityView>("activityView").isAnimating());
    EXPECT_TRUE(QTest::qWaitFor([&] { return player.mode() == PlaybackMode::playing; }));
    EXPECT_EQ(driven->label("statusLabel"), "Loudness On");
    EXPECT_EQ(driven->recorded.taken(), lines);
}

TEST_F(MainViewControllerTest, TakesBackAPlayThatWaitsForTheVariant) {
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"Stop", [this] { driven->click("stopButton"); }},
        {"the switch turned back", [this] { driven->click("loudnessButton"); }},
        {"Clear", [this] { driven->click("clearButton"); }},
        {"another file", [this] { driven->controller->load(b); }},
        {"the end of the program", [this] { driven->controller->fallSilent(); }},
    };
    for (const auto& [name, takeBack] : rows) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(driven->load(a));
        driven->click("loudnessButton");
        driven->click("playPauseButton");
        ASSERT_EQ(driven->label("statusLabel"), "Loading");
        takeBack();
        EXPECT_EQ(driven->view<BlackLEDActivityView>("activityView").isAnimating(),
                  driven->label("statusLabel") == "Loading");
        driven->controller->load(b); // Comes after whatever has been begun.
        ASSERT_TRUE(QTest::qWaitFor([&] { return driven->label("fileLabel") == "b.mid"; }));
        EXPECT_THAT(script.calls, ::testing::Not(::testing::Contains("play")));
        EXPECT_EQ(driven->controller->player().mode(), PlaybackMode::idle);
    }
}

TEST_F(MainViewControllerTest, LoadsWhatIsDroppedAndWhatIsChosen) {
    const QByteArray folder = QUrl::fromLocalFile(files.path("").c_str()).toEncoded();
    files.write("100% #\xFF.mid", smallSong());
    EXPECT_TRUE(driven->drop(QUrl::fromEncoded(folder + "100%25%20%23%FF.mid")));
    ASSERT_TRUE(driven->waitForLoads(1));
    EXPECT_EQ(driven->label("fileLabel"), "100% #\uFFFD.mid");
    driven->controller->openFile(); // Cancelled.
    driven->chosen = b;
    driven->controller->openFile();
    ASSERT_TRUE(driven->waitForLoads(2));
    EXPECT_EQ(driven->label("fileLabel"), "b.mid");
}

} // namespace
} // namespace tambrel
