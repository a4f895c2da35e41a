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

#include <fstream>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using namespace testing;

MIDIData song(std::uint32_t milliseconds) {
    return MIDIData(
        smfBytes(1, testing::milliseconds(), {TrackBuilder().noteOn(0, 0, 60).endOfTrack(milliseconds)}));
}

class GeneralMIDIEngineTest : public ::testing::Test {
protected:
    GeneralMIDIEngine& start(std::filesystem::path bank = bankTimGM6mb, std::string driver = "silent") {
        engine = std::make_unique<GeneralMIDIEngine>(
            GeneralMIDIOptions{.soundBank = std::move(bank), .audioDrivers = {std::move(driver)}});
        engine->onFailure = [this](const std::string& reason) { failures.push_back(reason); };
        return *engine;
    }

    template<class Condition>
    static void expectSoon(Condition condition) {
        EXPECT_TRUE(QTest::qWaitFor(condition, 10'000));
    }

    void TearDown() override { EXPECT_THAT(failures, IsEmpty()); }

    int argumentCount = 1;
    char argument[6] = "tests";
    char* arguments[2] = {argument, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QTemporaryDir folder;
    std::vector<std::string> failures;
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
    expectSoon([&] { return completions > 0; });
    player->setCurrentPosition(0.1);
    EXPECT_EQ(player->currentPosition(), 0.1);
    player->play([&] { completions += 10; });
    expectSoon([&] { return completions > 1; });
    EXPECT_EQ(completions, 11);
}

TEST_F(GeneralMIDIEngineTest, PositionMovesInRealTimeAndStopKeepsIt) {
    const auto player = start().makePlayer(song(60'000));
    bool completed = false;
    player->play([&] { completed = true; });
    expectSoon([&] { return player->currentPosition() > 0; });
    QElapsedTimer clock;
    clock.start();
    const double before = player->currentPosition();
    expectSoon([&] { return player->currentPosition() > before + 0.5; });
    EXPECT_GT(static_cast<double>(clock.elapsed()), 400); // A slow machine may take longer.

    player->setCurrentPosition(30); // While it plays, which it goes on to do from there.
    EXPECT_TRUE(player->isPlaying());
    EXPECT_EQ(player->currentPosition(), 30);
    expectSoon([&] { return player->currentPosition() > 30.1; });
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
    expectSoon([&] { return !player->isPlaying(); });
    EXPECT_FALSE(completed) << "as its playing was stopped";
}

TEST_F(GeneralMIDIEngineTest, APlayerMayGoWhileItPlaysOrFromItsOwnCompletion) {
    auto player = start().makePlayer(song(60'000));
    player->play({});
    expectSoon([&] { return player->currentPosition() > 0; });
    player = engine->makePlayer(song(100));
    EXPECT_EQ(player->currentPosition(), 0);
    player->play([&] { player.reset(); });
    expectSoon([&] { return player == nullptr; });
    player = engine->makePlayer(song(60'000));
    player->play({});
    player.reset();
    engine.reset(); // With the bank, the device and an order perhaps still on their way.
}

TEST_F(GeneralMIDIEngineTest, RefusesWhatIsNoSong) {
    EXPECT_THROW(static_cast<void>(start().makePlayer(MIDIData(Bytes{1, 2, 3}))), std::invalid_argument);
}

TEST_F(GeneralMIDIEngineTest, MissingBanksAreNamedWithThePackageToInstall) {
    EXPECT_EQ(findSoundBank({}, {"/no/a.sf3", bankTimGM6mb}), bankTimGM6mb);
    for (const std::filesystem::path wanted : {"/no/c.sf2", ""}) {
        try {
            static_cast<void>(findSoundBank(wanted, {"/no/a.sf3", "/no/b.sf2"}));
            ADD_FAILURE() << "found";
        } catch (const SoundBankError& error) {
            EXPECT_THAT(error.what(), HasSubstr(wanted.empty() ? "/no/a.sf3, /no/b.sf2" : "/no/c.sf2"));
            EXPECT_THAT(error.what(), HasSubstr("timgm6mb-soundfont"));
        }
    }
}

TEST_F(GeneralMIDIEngineTest, ABrokenBankIsReportedAndTriedAgainByTheNextPlayer) {
    const std::filesystem::path bank = folder.filePath("bank.sf2").toStdString();
    const auto size = std::filesystem::file_size(bankTimGM6mb);
    for (const std::uintmax_t kept : {std::uintmax_t{0}, std::uintmax_t{1000}, size / 2, size - 1}) {
        SCOPED_TRACE(kept);
        std::filesystem::copy_file(bankTimGM6mb, bank, std::filesystem::copy_options::overwrite_existing);
        std::filesystem::resize_file(bank, kept);
        auto player = start(bank).makePlayer(song(60'000));
        player->play({});
        expectSoon([&] { return !failures.empty(); });
        EXPECT_THAT(failures, ElementsAre(HasSubstr("bank.sf2 could not be loaded")));
        EXPECT_EQ(player->currentPosition(), 0);
        failures.clear();

        std::filesystem::copy_file(bankTimGM6mb, bank, std::filesystem::copy_options::overwrite_existing);
        player = engine->makePlayer(song(60'000)); // The device is open already and asks for sound.
        player->play({});
        expectSoon([&] { return player->currentPosition() > 0; });
    }
    std::ofstream(bank) << "This is a text.\n";
    const auto player = start(bank).makePlayer(song(1));
    expectSoon([&] { return !failures.empty(); });
    EXPECT_THAT(std::exchange(failures, {}), ElementsAre(HasSubstr("bank.sf2 could not be loaded")));
}

TEST_F(GeneralMIDIEngineTest, ADeviceThatCannotBeOpenedIsReportedWithWhatWasTried) {
    qputenv("PULSE_SERVER", "unix:/no/pulse/server");
    for (const std::string driver : {"pulseaudio", "no-such-driver"}) {
        SCOPED_TRACE(driver);
        const auto player = start(bankTimGM6mb, driver).makePlayer(song(1000));
        for (std::size_t attempt = 1; attempt <= 2; ++attempt) {
            player->play({});
            expectSoon([&] { return failures.size() == attempt; });
        }
        // Nothing renders, so the song stays where it is while the engine looks after its house.
        const QDeadlineTimer severalRounds(300);
        expectSoon([&] { return severalRounds.hasExpired(); });
        EXPECT_EQ(player->currentPosition(), 0);
        EXPECT_THAT(std::exchange(failures, {}),
                    ElementsAre(HasSubstr("Tried " + driver + ": "), HasSubstr("Tried ")));
    }
}

} // namespace
} // namespace tambrel
