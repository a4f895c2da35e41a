#include "DrivenWindow.h"

namespace tambrel {
namespace {

using testing::clipBytes;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using testing::smfBytes;
using ::testing::StartsWith;
using testing::TrackBuilder;
using Interface = DrivenWindow::Interface;
using Texts = std::vector<std::string>;

const std::string loading = " | MainViewController.load(url:)";

// A clip of one note that sounds for 96 ticks.
const std::vector<std::uint32_t> oneNote{0xF0200000, 0, 0, 0, 0x20903C64, 0x00400060, 0x20803C00};

class MainViewControllerTest : public ::testing::Test {
protected:
    MainViewControllerTest() { driven.emplace(script.factory()); }

    /// What the main view controller itself has logged, and what views that the user has touched have.
    [[nodiscard]] Texts lines() {
        auto taken = driven->recorded.settled();
        std::erase_if(taken, [](const std::string& line) {
            return line.find("| MIDIPlayerController.") != std::string::npos ||
                   line.find("| TambrelPlaybackState.") != std::string::npos ||
                   line.find("| TambrelTransportCoordinator.") != std::string::npos;
        });
        return taken;
    }

    static Interface loaded(const std::string& name, Interface changes = {}) {
        changes.merge(Interface{{"fileLabel", name},
                                {"statusLabel", "Loaded"},
                                {"tempoLabel", "120.000 BPS"},
                                {"keyLabel", "KEY D major"},
                                {"tracksLabel", "2 Tracks"},
                                {"lengthLabel", "LENGTH 00:00:10.00"},
                                {"bars", "2 tracks, 2 lanes, at 0.000000"},
                                {"timeline", "0.000000 of 10.000000"},
                                {"logo", "yes"},
                                {"gmModuleLabel", "yes"},
                                {"drop panel loaded", "yes"},
                                {"module loaded", "yes"}});
        return with(std::move(changes));
    }

    /// Loads a song and plays it, with Loudness, to its middle.
    void playLoud(const std::filesystem::path& song) {
        ASSERT_TRUE(driven->load(song));
        driven->click("loudnessButton");
        driven->click("playPauseButton");
        script.position = 5;
    }

    TestFiles files;
    PlayerScript script;
    std::optional<DrivenWindow> driven;
    const std::filesystem::path a = files.write("a.mid", smallSong());
    const std::filesystem::path b = files.write("b.mid", smallSong(false));
};

const Interface withoutTempoAndKey{{"tempoLabel", "---.--- BPS"}, {"keyLabel", "KEY --"}};

TEST_F(MainViewControllerTest, ShowsTheFactsOfALoadedFile) {
    EXPECT_EQ(driven->shown(), emptyInterface);
    const struct {
        const char* name;
        std::filesystem::path file;
        Interface shown;
    } rows[] = {
        {"a song with tempo and key", a, loaded("a.mid")},
        {"a song without", b, loaded("b.mid", withoutTempoAndKey)},
        {"a clip", files.write("c.midi2", clipBytes(oneNote)),
         loaded("c.midi2", {{"statusLabel", "Loaded MIDI 2.0"},
                            {"keyLabel", "KEY --"},
                            {"bars", "2 tracks, 1 lanes, at 0.000000"}})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        driven->controller->load(row.file);
        EXPECT_EQ(driven->label("statusLabel"), "Loading");
        EXPECT_EQ(driven->shown()["LED"], "yes");
        ASSERT_TRUE(driven->waitForLoads(driven->finished.size() + 1));
        EXPECT_EQ(driven->shown(), row.shown);
    }
    EXPECT_EQ(script.alive, 1);
}

TEST_F(MainViewControllerTest, LogsItsBeginningAndALoadStepByStep) {
    ASSERT_TRUE(driven->load(a));
    Texts logged = driven->recorded.taken();
    ASSERT_THAT(logged, SizeIs(13));
    EXPECT_THAT(logged[6], HasSubstr("MIDI 2.0 companion ready for MainViewController.load(url:); bytes "));
    logged.erase(logged.begin() + 6);
    const std::string player = " | MIDIPlayerController.load(data:position:modeAfterLoad:)";
    EXPECT_THAT(logged,
                ElementsAre("Creating Tambrel root view | MainViewController.loadView",
                            "Main controller view loaded | MainViewController.viewDidLoad",
                            "Building controls, labels, drop target, and transport | "
                            "MainViewController.buildInterface",
                            "Connecting MIDI player callbacks to the interface | "
                            "TambrelTransportCoordinator.wirePlayer",
                            "Loading MIDI file a.mid" + loading,
                            "Replacing loaded playback snapshot | TambrelPlaybackState.replaceLoadedMIDI",
                            "Loading MIDI playback data | MIDIPlayerController.load(data:)",
                            "Resetting AVMIDIPlayer before load" + player,
                            "Playback state changed to idle | TambrelTransportCoordinator.updatePlaybackMode",
                            "Loaded MIDI duration 00:00:10.00 | TambrelTransportCoordinator.player.onLoaded",
                            "AVMIDIPlayer loaded; duration 10.0" + player,
                            "Loaded a.mid; tracks 2; duration 00:00:10.00" + loading));

    ASSERT_TRUE(driven->load(files.write("c.clip", clipBytes(oneNote))));
    EXPECT_THAT(lines(), ElementsAre("Loading MIDI file c.clip" + loading,
                                     "Routed c.clip through MIDI 2.0 clip importer" + loading,
                                     StartsWith("MIDI 2.0 import summary: packets 4; imported 2; "),
                                     "Loaded c.clip; tracks 2; duration 00:00:10.00" + loading));
}

TEST_F(MainViewControllerTest, TakesEverythingBackWhenALoadFails) {
    const struct {
        const char* title;
        std::filesystem::path file;
        const char* refusal;
        const char* message;
        const char* diagnosis;
    } rows[] = {
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
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        script.refusal.clear();
        playLoud(b);
        driven->beeps = 0;
        script.refusal = row.refusal;
        static_cast<void>(lines());
        ASSERT_TRUE(driven->load(row.file));
        EXPECT_EQ(driven->shown(), with({{"fileLabel", row.message}, {"statusLabel", row.title}}));
        EXPECT_EQ(driven->beeps, 1);
        EXPECT_EQ(script.alive, 0);
        EXPECT_FALSE(driven->controller->playbackState().originalMIDIData());
        const auto failure = driven->finished.back();
        EXPECT_THAT(failure, HasSubstr(row.diagnosis));
        EXPECT_THAT(lines(), ElementsAre(HasSubstr("Loading MIDI file "), "Error: " + failure + loading,
                                         failure + loading));
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
    EXPECT_EQ(driven->shown(), loaded("b.mid", withoutTempoAndKey));
    driven->controller->load(a);
    driven->click("clearButton");
    EXPECT_EQ(driven->shown(), emptyInterface);
    EXPECT_EQ(script.alive, 0);
    driven->controller->load(a);
    driven->controller->playbackPreparationFailed("no device");
    EXPECT_EQ(driven->label("statusLabel"), "Playback Error");
    ASSERT_TRUE(driven->load(files.path("none.mid")));
    EXPECT_THAT(driven->finished,
                ElementsAre("", "Could not prepare MIDI playback: no device", HasSubstr("none.mid")));
    EXPECT_EQ(driven->beeps, 2);
    EXPECT_THAT(script.songs, SizeIs(1));
    EXPECT_THAT(lines(), Not(Contains(HasSubstr("Loaded a.mid"))));
}

TEST_F(MainViewControllerTest, PlaysOnUntilTheNextSongIsThere) {
    playLoud(b);
    driven->controller->load(a);
    EXPECT_EQ(driven->label("statusLabel"), "Loading");
    EXPECT_EQ(driven->title("playPauseButton"), "Pause");
    EXPECT_TRUE(script.playing);
    ASSERT_TRUE(driven->waitForLoads(2));
    EXPECT_EQ(driven->shown(), loaded("a.mid"));
    EXPECT_FALSE(script.playing);
    EXPECT_EQ(script.alive, 1);

    driven->controller->load(b);
    driven.reset(); // The user quits.
    QCoreApplication::processEvents();
    EXPECT_EQ(script.alive, 0);
}

TEST_F(MainViewControllerTest, PlaysASongThatWasOpenedToPlayUnlessTheUserEndsThat) {
    const struct {
        const char* name;
        bool playsBefore;
        const char* button;
        PlaybackMode mode;
    } rows[] = {
        {"stopped", false, "stopButton", PlaybackMode::idle},
        {"paused while another plays", true, "playPauseButton", PlaybackMode::idle},
        {"sent to the beginning while another plays", true, "rtzButton", PlaybackMode::playing},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(driven->load(b));
        if (row.playsBefore)
            driven->click("playPauseButton");
        driven->controller->load(a, AfterLoad::play);
        driven->click(row.button);
        ASSERT_TRUE(driven->waitForLoads(driven->finished.size() + 1));
        EXPECT_EQ(driven->controller->player().mode(), row.mode);
    }
}

TEST_F(MainViewControllerTest, CarriesOutWhatItsControlsAskFor) {
    ASSERT_TRUE(driven->load(a));
    driven->click("playPauseButton");
    EXPECT_EQ(driven->shown()["loudness"], "Loudness, no");
    driven->click("playPauseButton");
    static_cast<void>(lines());
    driven->clickTimeline(0.75);
    EXPECT_EQ(script.position, 7.5);
    EXPECT_EQ(driven->shown(), loaded("a.mid", {{"play", "Resume"},
                                                {"counter", "00:00:07.50"},
                                                {"progressLabel", "PROGRESS 00:00:07.50"},
                                                {"timeline", "7.500000 of 10.000000"},
                                                {"bars", "2 tracks, 2 lanes, at 0.750000"}}));
    EXPECT_THAT(lines(), ElementsAre("Timeline requested seek to 7.5 | MainViewController.timeline.onSeek",
                                     "User Action: Moved timeline seek handle | "
                                     "RetroTimelineView.seek(from:)"));
    driven->click("rtzButton");
    EXPECT_EQ(script.position, 0);
    EXPECT_EQ(driven->title("playPauseButton"), "Resume");
    QTest::keyClick(&driven->view("stopButton"), Qt::Key_Return);
    EXPECT_EQ(driven->title("playPauseButton"), "Play");
    driven->click("loudnessButton");
    EXPECT_EQ(driven->label("statusLabel"), "Loudness On");
    EXPECT_EQ(driven->shown()["loudness"], "Loudness On, yes");
    driven->click("clearButton");
    EXPECT_EQ(driven->shown(), emptyInterface);
    EXPECT_THAT(lines(), ElementsAre("User Action: Clicked Clear loaded MIDI button | "
                                     "MainViewController.clearLoadedMIDI"));
}

TEST_F(MainViewControllerTest, LoadsWhatIsDroppedAndWhatIsChosen) {
    static_cast<void>(lines());
    const QByteArray folder = QUrl::fromLocalFile(files.path("").c_str()).toEncoded();
    files.write("100% #\xFF.mid", smallSong());
    EXPECT_TRUE(driven->drop(QUrl::fromEncoded(folder + "100%25%20%23%FF.mid")));
    ASSERT_TRUE(driven->waitForLoads(1));
    const std::string name = "100% #\uFFFD.mid";
    EXPECT_EQ(driven->label("fileLabel"), name);
    EXPECT_THAT(lines(), ElementsAre("Drop panel requested load for " + name +
                                         " | MainViewController.dropPanel.onFile",
                                     "Loading MIDI file " + name + loading,
                                     "User Action: Dragged file over MIDI drop panel | "
                                     "DropTargetPanel.draggingEntered",
                                     "User Action: Dropped MIDI-compatible file " + name +
                                         " | DropTargetPanel.performDragOperation",
                                     "Loaded " + name + "; tracks 2; duration 00:00:10.00" + loading));

    const std::string open = " | MainViewController.openFile";
    const std::string clicked = "User Action: Clicked Open MIDI File menu item" + open;
    driven->controller->openFile();
    EXPECT_THAT(lines(), ElementsAre(clicked, "Open MIDI File panel cancelled" + open));
    driven->chosen = b;
    driven->controller->openFile();
    ASSERT_TRUE(driven->waitForLoads(2));
    EXPECT_THAT(lines(),
                ElementsAre(clicked, "Open panel selected b.mid" + open, "Loading MIDI file b.mid" + loading,
                            "Loaded b.mid; tracks 2; duration 00:00:10.00" + loading));
}

} // namespace
} // namespace tambrel
