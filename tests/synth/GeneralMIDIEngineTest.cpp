#include "GeneralMIDIEngine.h"
#include "SoundBank.h"
#include "SynthTesting.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <atomic>
#include <fstream>
#include <functional>

namespace tambrel {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using namespace testing;

MIDIData song(std::uint32_t milliseconds, TrackBuilder track = {}) {
    return MIDIData(smfBytes(1, testing::milliseconds(), {track.noteOn(0, 0, 60).endOfTrack(milliseconds)}));
}

/// A sound server that comes and goes. Its devices play nothing, in real time.
class SoundServer {
public:
    std::unique_ptr<AudioDriver> open(const std::vector<std::string>& names, double sampleRate,
                                      AudioSource& source) {
        ++attempts;
        wasAskedForOthers = wasAskedForOthers || names != std::vector<std::string>{"second"};
        if (!isUp)
            throw AudioDriverError("down");
        return std::make_unique<Device>(*this, sampleRate, source);
    }

    std::atomic<bool> isUp{true}, wasAskedForOthers{false}, heardOnTheRight{false};
    std::atomic<int> attempts{0}, openDevices{0};

private:
    class Device final : public AudioDriver, private AudioSource {
    public:
        Device(SoundServer& server, double sampleRate, AudioSource& source)
            : server_(server), source_(source), clock_(openSilentDriver(sampleRate, *this)) {
            ++server_.openDevices;
        }
        ~Device() override { --server_.openDevices; }
        [[nodiscard]] std::string name() const override { return "second"; }
        [[nodiscard]] std::uint64_t usualThread() const noexcept override {
            return static_cast<std::uint64_t>(server_.attempts);
        }

    private:
        void renderAudio(float* left, float* right, int frames) noexcept override {
            if (server_.isUp)
                source_.renderAudio(left, right, frames);
            if (peak({right, static_cast<std::size_t>(frames)}) > 0.01F)
                server_.heardOnTheRight = true;
        }
        SoundServer& server_;
        AudioSource& source_;
        std::unique_ptr<AudioDriver> clock_;
    };
};

class GeneralMIDIEngineTest : public ::testing::Test {
protected:
    GeneralMIDIEngine& start(GeneralMIDIOptions options = {.soundBank = testBank,
                                                           .audioDrivers = {"silent"}}) {
        engine = std::make_unique<GeneralMIDIEngine>(std::move(options));
        engine->onFailure =
            engine->onOutputFailure = [this](const std::string& reason) { failures.push_back(reason); };
        engine->onNotice = [this](const std::string& notice) { notices.push_back(notice); };
        engine->onUsualThread = [this](std::uint64_t thread) { threads.push_back(thread); };
        engine->onOutputLoss = [this](bool isLost) { notices.emplace_back(isLost ? "lost" : "back"); };
        return *engine;
    }
    GeneralMIDIEngine& startOnServer() {
        return start({.soundBank = testBank,
                      .audioDrivers = {"first", "second"},
                      .openDriver = std::bind_front(&SoundServer::open, &server)});
    }

    template<class Condition>
    static bool isSoon(Condition condition) {
        return QTest::qWaitFor(condition, 10'000);
    }

    void TearDown() override { EXPECT_THAT(failures, IsEmpty()); }

    int argumentCount = 1;
    char argument[6] = "tests";
    char* arguments[2] = {argument, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QTemporaryDir folder;
    SoundServer server;
    std::vector<std::string> failures, notices;
    std::vector<std::uint64_t> threads;
    std::unique_ptr<GeneralMIDIEngine> engine;
};

TEST_F(GeneralMIDIEngineTest, PlaysToTheEndAndSaysSoOnceOnTheMainThread) {
    const auto player = start().makePlayer(song(300));
    player->prepareToPlay();
    EXPECT_EQ(player->currentPosition(), 0);
    EXPECT_EQ(player->duration(), 0.3);
    EXPECT_FALSE(player->isPlaying());
    int completions = 0;
    player->play([&] {
        ++completions;
        EXPECT_EQ(QThread::currentThread(), application.thread());
        EXPECT_FALSE(player->isPlaying());
        EXPECT_EQ(player->currentPosition(), 0.3);
    });
    EXPECT_TRUE(player->isPlaying());
    ASSERT_TRUE(isSoon([&] { return completions > 0; }));
    player->setCurrentPosition(0.1);
    EXPECT_EQ(player->currentPosition(), 0.1);
    player->play([&] { completions += 10; });
    ASSERT_TRUE(isSoon([&] { return completions > 1; }));
    EXPECT_EQ(completions, 11);
}

TEST_F(GeneralMIDIEngineTest, PositionMovesInRealTimeAndStopKeepsIt) {
    const auto player = start().makePlayer(song(60'000));
    bool completed = false;
    player->play([&] { completed = true; });
    ASSERT_TRUE(isSoon([&] { return player->currentPosition() > 0; }));
    QElapsedTimer clock;
    clock.start();
    const double before = player->currentPosition();
    ASSERT_TRUE(isSoon([&] { return player->currentPosition() > before + 0.5; }));
    EXPECT_GT(static_cast<double>(clock.elapsed()), 400); // A slow machine may take longer.

    player->setCurrentPosition(30); // While it plays, which it goes on to do from there.
    EXPECT_TRUE(player->isPlaying());
    EXPECT_EQ(player->currentPosition(), 30);
    ASSERT_TRUE(isSoon([&] { return player->currentPosition() > 30.1; }));
    player->stop();
    const double stopped = player->currentPosition();
    EXPECT_GT(stopped, 30.1);
    EXPECT_FALSE(player->isPlaying());
    player->setCurrentPosition(1000);
    EXPECT_EQ(player->currentPosition(), 60);
    player->setCurrentPosition(stopped);
    player->play({});
    EXPECT_EQ(player->currentPosition(), stopped);
    player->setCurrentPosition(59.95);
    ASSERT_TRUE(isSoon([&] { return !player->isPlaying(); }));
    EXPECT_FALSE(completed) << "as its playing was stopped";
}

TEST_F(GeneralMIDIEngineTest, APlayerMayGoWhileItPlaysOrFromItsOwnCompletion) {
    auto player = start().makePlayer(song(60'000));
    player->play({});
    ASSERT_TRUE(isSoon([&] { return player->currentPosition() > 0; }));
    player = engine->makePlayer(song(100));
    EXPECT_EQ(player->currentPosition(), 0);
    player->play([&] { player.reset(); });
    ASSERT_TRUE(isSoon([&] { return player == nullptr; }));
    player = engine->makePlayer(song(60'000));
    player->play({});
    player.reset();
    engine.reset(); // With the bank, the device and an order perhaps still on their way.
}

TEST_F(GeneralMIDIEngineTest, RefusesWhatIsNoSongAndNamesMissingBanksWithThePackageToInstall) {
    EXPECT_THROW(static_cast<void>(start().makePlayer(MIDIData(Bytes{1, 2, 3}))), std::invalid_argument);
    const std::pair<const char*, const char*> rows[] = {
        {"/no/c.sf2", "bank /no/c.sf2 does not exist."},
        {"/usr", "bank /usr is a folder, not a file."},
        {"/dev/null", "bank /dev/null is a device, not a file."},
        {"", "Looked in: /no/a, /no/b."}};
    for (const auto& [wanted, reason] : rows) {
        try {
            static_cast<void>(banksToTry({.named = wanted, .preferred = {}}, {"/no/a", "/no/b"}));
            ADD_FAILURE() << "found";
        } catch (const SoundBankError& error) {
            EXPECT_THAT(error.what(), AllOf(HasSubstr(reason), HasSubstr("timgm6mb-soundfont")));
        }
    }
}

TEST_F(GeneralMIDIEngineTest, FindsBanksWhereUsersAndDistributionsPutThemTheDefaultFirst) {
    const std::filesystem::path top = folder.path().toStdString();
    qputenv("XDG_DATA_HOME", (top / "home").c_str());
    qputenv("XDG_DATA_DIRS", (top / "a").string().append(":" + (top / "b").string()).c_str());
    for (const char* file : {"home/soundfonts/Piano.SF2", "home/soundfonts/read me.txt",
                             "a/soundfonts/My GM.dls", "b/sounds/sf2/General.sf2", "b/soundfonts/Big.sf3"}) {
        std::filesystem::create_directories((top / file).parent_path());
        std::ofstream(top / file) << "bank";
    }
    std::filesystem::create_directories(top / "a/sounds/sf3/folder.sf3");
    for (const char* link : {"a/sounds/sf3/default-GM.sf3", "b/sounds/sf2/default-GM.sf2"})
        std::filesystem::create_symlink(top / "b/soundfonts/Big.sf3", top / link);
    auto folders = soundBankFolders();
    std::erase_if(folders, [&](const auto& each) { return !each.string().starts_with(top.string()); });
    std::string found;
    for (const SoundBankFile& bank : soundBanks(folders))
        found += bank.name() + " at " + bank.path.lexically_relative(top).string() + "; ";
    EXPECT_EQ(found, "Big at a/sounds/sf3/default-GM.sf3; My GM at a/soundfonts/My GM.dls; "
                     "General at b/sounds/sf2/General.sf2; Piano at home/soundfonts/Piano.SF2; ");
    EXPECT_EQ(banksToTry({.named = {}, .preferred = "x"}, folders).size(), 5U);
    qunsetenv("XDG_DATA_HOME");
    qunsetenv("XDG_DATA_DIRS");
}

// The bank of the tests plays on the left alone.
TEST_F(GeneralMIDIEngineTest, AnotherBankTakesOverWhereTheSongIsAndOneThatCannotBeLoadedDoesNot) {
    const std::filesystem::path broken = folder.filePath("broken.sf2").toStdString();
    std::ofstream(broken) << "This is a text.\n";
    const auto player = startOnServer().makePlayer(
        song(60'000, TrackBuilder().control(0, 0, 91, 0).control(0, 0, 93, 0).program(0, 0, 16)));
    player->setCurrentPosition(20);
    player->play({});
    ASSERT_TRUE(isSoon([&] { return player->currentPosition() > 20; }));
    EXPECT_EQ(server.heardOnTheRight, false);
    engine->chooseSoundBank(broken);
    ASSERT_TRUE(isSoon([&] { return !notices.empty(); }));
    EXPECT_THAT(std::exchange(notices, {}), ElementsAre(HasSubstr("broken.sf2 could not be loaded")));
    engine->chooseSoundBank(bankTimGM6mb);
    ASSERT_TRUE(isSoon([&] { return server.heardOnTheRight.load(); }));
    EXPECT_EQ(engine->soundBank(), bankTimGM6mb);
    EXPECT_GT(player->currentPosition(), 20);
    EXPECT_LT(player->currentPosition(), 60);
    EXPECT_TRUE(player->isPlaying());
}

TEST_F(GeneralMIDIEngineTest, ABrokenBankIsReportedAndTriedAgainByTheNextPlayer) {
    const std::filesystem::path bank = folder.filePath("bank.sf2").toStdString();
    const auto size = std::filesystem::file_size(testBank);
    for (const std::uintmax_t kept : {std::uintmax_t{0}, std::uintmax_t{1000}, size / 2, size - 1}) {
        SCOPED_TRACE(kept);
        std::filesystem::copy_file(testBank, bank, std::filesystem::copy_options::overwrite_existing);
        std::filesystem::resize_file(bank, kept);
        auto player = start({.soundBank = bank, .audioDrivers = {"silent"}}).makePlayer(song(60'000));
        player->play({});
        ASSERT_TRUE(isSoon([&] { return !failures.empty(); }));
        const QDeadlineTimer severalRounds(200);
        ASSERT_TRUE(isSoon([&] { return severalRounds.hasExpired(); }));
        EXPECT_THAT(failures, ElementsAre(HasSubstr("bank.sf2 could not be loaded")));
        EXPECT_EQ(player->currentPosition(), 0);
        failures.clear();

        std::filesystem::copy_file(testBank, bank, std::filesystem::copy_options::overwrite_existing);
        player = engine->makePlayer(song(60'000)); // The device is open already and asks for sound.
        player->play({});
        ASSERT_TRUE(isSoon([&] { return player->currentPosition() > 0; }));
    }
    std::ofstream(bank) << "This is a text.\n";
    const auto player = start({.soundBank = bank, .audioDrivers = {"silent"}}).makePlayer(song(1));
    ASSERT_TRUE(isSoon([&] { return !failures.empty(); }));
    EXPECT_THAT(std::exchange(failures, {}), ElementsAre(HasSubstr("bank.sf2 could not be loaded")));
}

TEST_F(GeneralMIDIEngineTest, ADeviceThatCannotBeOpenedIsReportedWithWhatWasTried) {
    qputenv("PULSE_SERVER", "unix:/no/pulse/server");
    for (const std::string driver : {"pulseaudio", "no-such-driver"}) {
        SCOPED_TRACE(driver);
        const auto player = start({.soundBank = testBank, .audioDrivers = {driver}}).makePlayer(song(1000));
        for (std::size_t attempt = 1; attempt <= 2; ++attempt) {
            player->play({});
            ASSERT_TRUE(isSoon([&] { return failures.size() == attempt; }));
        }
        // Nothing renders, so the song stays where it is while the engine looks after its house.
        const QDeadlineTimer severalRounds(300);
        ASSERT_TRUE(isSoon([&] { return severalRounds.hasExpired(); }));
        EXPECT_EQ(player->currentPosition(), 0);
        EXPECT_THAT(std::exchange(failures, {}),
                    ElementsAre(HasSubstr("Tried " + driver + ": "), HasSubstr("Tried ")));
    }
}

TEST_F(GeneralMIDIEngineTest, ALostDeviceIsOpenedAgainAndTheSongGoesOn) {
    const auto player = startOnServer().makePlayer(song(60'000));
    player->play({});
    for (int loss = 1; loss <= 2; ++loss) {
        ASSERT_TRUE(
            isSoon([&, before = player->currentPosition()] { return player->currentPosition() > before; }));
        EXPECT_EQ(server.attempts, 1);
        server.wasAskedForOthers = false; // The first time, both drivers are tried.
        server.isUp = false;
        ASSERT_TRUE(isSoon([&] { return server.attempts > 2; }));
        EXPECT_FALSE(server.wasAskedForOthers);
        EXPECT_EQ(server.openDevices, 0);
        const double lostAt = player->currentPosition();
        EXPECT_TRUE(player->isPlaying());
        server.isUp = true;
        ASSERT_TRUE(isSoon([&] {
            EXPECT_GE(player->currentPosition(), lostAt);
            return player->currentPosition() > lostAt;
        }));
        ASSERT_TRUE(isSoon([&] { return notices.size() == 4; }));
        EXPECT_THAT(std::exchange(notices, {}), ElementsAre("Sound output lost; opening it again", "lost",
                                                            "Sound output opened again", "back"));
        EXPECT_EQ(server.openDevices, 1);
        server.attempts = 1;
    }
}

TEST_F(GeneralMIDIEngineTest, TheDeviceIsReleasedWhenNothingPlaysAndIsThereAgainForTheNextSong) {
    auto player = startOnServer().makePlayer(song(100));
    player->prepareToPlay();
    int completions = 0;
    for (int turn = 1; turn <= 2; ++turn) {
        player->setCurrentPosition(0);
        player->play([&] { ++completions; });
        ASSERT_TRUE(isSoon([&] { return completions == turn; }));
        EXPECT_EQ(server.openDevices, 1);
        if (turn == 1) {
            ASSERT_TRUE(isSoon([&] { return server.openDevices == 0; }));
            server.isUp = false;
            player->prepareToPlay();
            ASSERT_TRUE(isSoon([&] { return server.attempts == 2; }));
            EXPECT_THAT(failures, IsEmpty()) << "as nobody is to hear anything";
            player->play({});
            ASSERT_TRUE(isSoon([&] { return !failures.empty(); }));
            EXPECT_THAT(std::exchange(failures, {}), ElementsAre("down"));
            player->stop();
            server.isUp = true;
            server.attempts = 1;
        }
    }
    EXPECT_EQ(server.attempts, 2);
    EXPECT_THAT(threads, ElementsAre(1, 2)) << "one for each device";
    EXPECT_THAT(notices, IsEmpty());
}

} // namespace
} // namespace tambrel
