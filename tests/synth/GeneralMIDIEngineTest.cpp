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

    [[nodiscard]] std::filesystem::path file(const char* name) const {
        return folder.filePath(name).toStdString();
    }

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
    ASSERT_TRUE(QTest::qWaitFor([&] { return completions > 0; }, 10'000));
    player->setCurrentPosition(0.1);
    EXPECT_EQ(player->currentPosition(), 0.1);
    player->play([&] { completions += 10; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return completions > 1; }, 10'000));
    EXPECT_EQ(completions, 11);
    EXPECT_THAT(failures, IsEmpty());
}

TEST_F(GeneralMIDIEngineTest, PositionMovesInRealTimeAndStopKeepsIt) {
    const auto player = start().makePlayer(song(60'000));
    bool completed = false;
    player->play([&] { completed = true; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return player->currentPosition() > 0; }, 10'000));
    QElapsedTimer clock;
    clock.start();
    const double before = player->currentPosition();
    ASSERT_TRUE(QTest::qWaitFor([&] { return player->currentPosition() > before + 0.5; }, 10'000));
    EXPECT_GT(static_cast<double>(clock.elapsed()), 400); // A slow machine may take longer.

    player->setCurrentPosition(30); // While it plays, which it goes on to do from there.
    EXPECT_TRUE(player->isPlaying());
    EXPECT_EQ(player->currentPosition(), 30);
    ASSERT_TRUE(QTest::qWaitFor([&] { return player->currentPosition() > 30.1; }, 10'000));
    player->stop();
    const double stopped = player->currentPosition();
    EXPECT_GT(stopped, 30.1);
    EXPECT_FALSE(player->isPlaying());
    player->setCurrentPosition(1000);
    EXPECT_EQ(player->currentPosition(), 60);
    player->setCurrentPosition(stopped);
    player->play({});
    EXPECT_EQ(player->currentPosition(), stopped);
    ASSERT_TRUE(QTest::qWaitFor([&] { return player->currentPosition() > stopped; }, 10'000));
    player->setCurrentPosition(59.95);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !player->isPlaying(); }, 10'000));
    EXPECT_FALSE(completed); // Its playing was stopped.
}

TEST_F(GeneralMIDIEngineTest, APlayerMayGoWhileItPlaysOrFromItsOwnCompletion) {
    auto player = start().makePlayer(song(60'000));
    player->play({});
    ASSERT_TRUE(QTest::qWaitFor([&] { return player->currentPosition() > 0; }, 10'000));
    player = engine->makePlayer(song(100));
    EXPECT_EQ(player->currentPosition(), 0);
    player->play([&] { player.reset(); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return player == nullptr; }, 10'000));
    player = engine->makePlayer(song(60'000));
    player->play({});
    player.reset();
    engine.reset(); // With the bank, the device and an order perhaps still on their way.
    player = start().makePlayer(song(60'000));
    player->play({});
    ASSERT_TRUE(QTest::qWaitFor([&] { return player->currentPosition() > 0; }, 10'000));
    player.reset();
    engine.reset();
    EXPECT_THAT(failures, IsEmpty());
}

TEST_F(GeneralMIDIEngineTest, RefusesWhatIsNoSong) {
    EXPECT_THROW(static_cast<void>(start().makePlayer(MIDIData(Bytes{1, 2, 3}))), std::invalid_argument);
}

TEST_F(GeneralMIDIEngineTest, AMissingBankIsNamedWithThePackageToInstall) {
    const auto reason = [](const auto& find) -> std::string {
        try {
            find();
        } catch (const SoundBankError& error) {
            return error.what();
        }
        return "no error";
    };
    const auto named = reason([&] { static_cast<void>(start("/no/bank.sf2").makePlayer(song(1))); });
    EXPECT_THAT(named, HasSubstr("/no/bank.sf2"));
    EXPECT_THAT(named, HasSubstr("timgm6mb-soundfont"));
    const auto none = reason([] { static_cast<void>(findSoundBank({}, {"/no/a.sf3", "/no/b.sf2"})); });
    EXPECT_THAT(none, HasSubstr("/no/a.sf3, /no/b.sf2"));
    EXPECT_THAT(none, HasSubstr("timgm6mb-soundfont"));
    EXPECT_EQ(findSoundBank({}, {"/no/a.sf3", bankTimGM6mb}), bankTimGM6mb);
}

TEST_F(GeneralMIDIEngineTest, ABrokenBankIsReportedAndTriedAgainByTheNextPlayer) {
    const std::filesystem::path bank = file("bank.sf2");
    const auto size = std::filesystem::file_size(bankTimGM6mb);
    for (const std::uintmax_t kept : {std::uintmax_t{0}, std::uintmax_t{1000}, size / 2, size - 1}) {
        SCOPED_TRACE(kept);
        std::filesystem::copy_file(bankTimGM6mb, bank, std::filesystem::copy_options::overwrite_existing);
        std::filesystem::resize_file(bank, kept);
        failures.clear();
        auto player = start(bank).makePlayer(song(60'000));
        player->play({});
        ASSERT_TRUE(QTest::qWaitFor([&] { return !failures.empty(); }, 10'000));
        EXPECT_THAT(failures[0], HasSubstr("bank.sf2 could not be loaded"));
        EXPECT_EQ(player->currentPosition(), 0);

        std::filesystem::copy_file(bankTimGM6mb, bank, std::filesystem::copy_options::overwrite_existing);
        player = engine->makePlayer(song(60'000)); // The device is open already and asks for sound.
        player->play({});
        EXPECT_TRUE(QTest::qWaitFor([&] { return player->currentPosition() > 0; }, 10'000));
        EXPECT_EQ(failures.size(), 1U);
    }
    std::ofstream(bank) << "This is a text.\n";
    const auto player = start(bank).makePlayer(song(1));
    ASSERT_TRUE(QTest::qWaitFor([&] { return failures.size() == 2; }, 10'000));
    EXPECT_THAT(failures[1], HasSubstr("bank.sf2 could not be loaded"));
}

TEST_F(GeneralMIDIEngineTest, ADeviceThatCannotBeOpenedIsReportedWithWhatWasTried) {
    qputenv("PULSE_SERVER", "unix:/no/pulse/server");
    for (const char* driver : {"pulseaudio", "no-such-driver"}) {
        SCOPED_TRACE(driver);
        failures.clear();
        const auto player = start(bankTimGM6mb, driver).makePlayer(song(1000));
        for (std::size_t attempt = 1; attempt <= 2; ++attempt) {
            player->play({});
            ASSERT_TRUE(QTest::qWaitFor([&] { return failures.size() == attempt; }, 10'000));
            EXPECT_THAT(failures.back(), HasSubstr(std::string("Tried ") + driver + ": "));
        }
        // Nothing renders, so the song stays where it is while the engine looks after its house.
        const QDeadlineTimer severalRounds(300);
        ASSERT_TRUE(QTest::qWaitFor([&] { return severalRounds.hasExpired(); }, 10'000));
        EXPECT_EQ(player->currentPosition(), 0);
        EXPECT_EQ(failures.size(), 2U);
    }
}

} // namespace
} // namespace tambrel
