#include "TambrelFileLoader.h"
#include "PlainReadings.h"
#include "RandomSongs.h"
#include "TambrelLoadCoordinator.h"
#include "TestFiles.h"
#include "WholeFile.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <future>
#include <semaphore>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::function<void()> afterStat;

} // namespace

// Replaces the C library's stat, so that something can happen between the look at a file and its opening.
extern "C" int stat(const char* file, struct stat* status) noexcept {
    const int result = ::fstatat(AT_FDCWD, file, status, 0);
    if (afterStat)
        std::exchange(afterStat, nullptr)();
    return result;
}

namespace tambrel {
namespace {

using testing::RandomSongs;
using testing::smfBytes;
using testing::TrackBuilder;

// Why a plain reading finds that a song cannot be played; empty when it can.
std::string defect(const Bytes& song) {
    const std::string malformed = "Malformed MIDI data: ";
    if (song.size() < 14)
        return malformed + "The file is too short to contain a Standard MIDI header.";
    if (std::string(song.begin(), song.begin() + 4) != "MThd")
        return malformed + "The Standard MIDI header chunk is missing.";
    if (!plain::hasHeader(song))
        return malformed + "The Standard MIDI header length is invalid.";
    const MIDIFileInfo facts = plain::facts(song);
    if (!facts.isSupportedFormat)
        return "Unsupported Standard MIDI File format " + std::to_string(facts.format) +
               "; expected format 0 or 1.";
    if (facts.trackCount == 0)
        return malformed + "The MIDI file does not declare any tracks.";
    if (plain::tracks(song).size() != static_cast<std::size_t>(facts.trackCount))
        return malformed + "The declared MIDI track chunk data is incomplete.";
    return "";
}

void expectPlainLoad(const Bytes& file, const std::string& name, bool hasNameOfClip) {
    const bool isClip =
        hasNameOfClip || (file.size() >= 8 && std::string(file.begin(), file.begin() + 8) == "SMF2CLIP");
    const plain::Import import = isClip ? plain::imported(file) : plain::Import{"", file, {}};
    const Bytes companion = plain::companion(file);
    const MIDI2ClipBuildSummary summary = plain::summary(companion);
    const bool keepsCompanion = !isClip && summary.channelVoiceWordCount > 0;
    const MIDIData data{Bytes(file)};
    MIDIData announced;
    try {
        const auto loaded = TambrelFileLoader::loadBytes(data, "/music/" + name, {},
                                                         [&](const MIDIData& song) { announced = song; });
        ASSERT_TRUE(import.error.empty() && defect(import.song).empty());
        EXPECT_TRUE(loaded.url == "/music/" + name && loaded.fileName == name);
        EXPECT_EQ(loaded.playbackData.view().data(), announced.view().data());
        EXPECT_EQ(plain::bytes(announced), import.song);
        EXPECT_TRUE(loaded.info == plain::facts(import.song));
        EXPECT_EQ(loaded.loadedStatus, isClip ? "Loaded MIDI 2.0" : "Loaded");
        EXPECT_EQ(loaded.importSummary, isClip ? std::optional(import.summary) : std::nullopt);
        EXPECT_EQ(loaded.importedMIDI2ClipData.has_value(), isClip);
        EXPECT_EQ(loaded.importedMIDI2ClipData.value_or(loaded.playbackData).view().data(),
                  data.view().data());
        EXPECT_EQ(loaded.midi2ClipCompanionSummary, isClip ? std::nullopt : std::optional(summary));
        EXPECT_EQ(loaded.midi2ClipCompanionData.has_value(), keepsCompanion);
        EXPECT_TRUE(!keepsCompanion || plain::bytes(*loaded.midi2ClipCompanionData) == companion);
    } catch (const TambrelLoadError& failure) {
        EXPECT_EQ(failure.diagnosticDescription(), file.empty() ? "Malformed MIDI data: The file is empty."
                                                   : !import.error.empty()
                                                       ? "Invalid MIDI 2.0 clip: " + import.error
                                                       : defect(import.song));
    }
}

TEST(TambrelFileLoader, agreesWithAPlainReadingWhateverTheName) {
    const std::pair<const char*, bool> names[] = {
        {"a song.mid", false},  {"a.MIDI", false},     {"a.mid", false},
        {"noextension", false}, {"a.clip.mid", false}, {".clip", false},
        {"a.midi2", true},      {"a.Smf2", true},      {"a.mid.CLIP", true}};
    RandomSongs random(7);
    for (int i = 0; i < 1500 && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        const auto& [name, isClip] = names[random.upTo(8)];
        const Bytes file = random.upTo(3) == 0 ? random.clip() : random.next();
        expectPlainLoad(file, name, isClip);
        expectPlainLoad(random.damaged(file), name, isClip);
    }
    expectPlainLoad({}, "a.clip", true);
    expectPlainLoad(smfBytes(1, 480, {TrackBuilder().tempo(0, 500'000)}), "silent.mid", false);
}

TEST(TambrelLoadError, takesTheReasonFromForeignErrors) {
    const std::error_code denied(EACCES, std::generic_category());
    EXPECT_EQ(TambrelLoadError::diagnosticReason(std::system_error(denied, "open")), "Permission denied");
    EXPECT_EQ(TambrelLoadError::diagnosticReason(std::filesystem::filesystem_error("open", "/a", denied)),
              "Permission denied");
    EXPECT_EQ(TambrelLoadError::diagnosticReason(std::bad_alloc()), "Cannot allocate memory");
    EXPECT_EQ(TambrelLoadError::diagnosticReason(std::runtime_error("no sound bank")), "no sound bank");
    EXPECT_EQ(TambrelLoadError::diagnosticReason(TambrelLoadError::invalidMIDI2Clip("why")),
              "Invalid MIDI 2.0 clip: why");
}

TEST(TambrelFileLoader, readsToTheEndWhereverThatIs) {
    const TestFiles files;
    Bytes severalChunks(9'000'001);
    for (std::size_t i = 0; i < severalChunks.size(); ++i)
        severalChunks[i] = static_cast<std::uint8_t>(i * 2'654'435'761u >> 24);
    EXPECT_TRUE(
        std::ranges::equal(WholeFile::read(files.write("large", severalChunks)).view(), severalChunks));
    // Their sizes are given as 0 or a whole page, which is wrong.
    EXPECT_GT(WholeFile::read("/proc/self/cmdline").size(), 0u);
    const std::filesystem::path shorter = "/sys/devices/system/cpu/online";
    if (std::filesystem::exists(shorter)) {
        EXPECT_LT(WholeFile::read(shorter).size(), std::filesystem::file_size(shorter));
    }
}

std::string failure(const std::filesystem::path& file) {
    try {
        static_cast<void>(TambrelFileLoader::load(file));
        return "none";
    } catch (const TambrelLoadError& error) {
        return error.diagnosticDescription();
    }
}

TEST(TambrelFileLoader, refusesASongOfTwoGigabytes) {
    const TestFiles files;
    const auto large = files.write("n\xE9.mid", smfBytes(0, 480, {TrackBuilder().noteOn(0, 0, 60)}));
    std::filesystem::resize_file(large, WholeFile::largestSize + 1); // Mostly a hole, it takes no room.
    EXPECT_EQ(failure(large),
              "Could not read n\uFFFD.mid: It is too large: files of 2 GiB and more cannot be played.");
}

TEST(TambrelFileLoader, doesNotWaitForAPipeThatTakesTheFilesPlace) {
    const TestFiles files;
    const auto file = files.write("a.mid", {});
    afterStat = [file] {
        std::filesystem::remove(file);
        ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    };
    // Ends the test if it waits, which it must not.
    struct sigaction interrupt {};
    interrupt.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGALRM, &interrupt, nullptr), 0);
    ::alarm(2);
    EXPECT_EQ(failure(file), "Could not read a.mid: It is not a regular file.");
    ::alarm(0);
    EXPECT_FALSE(afterStat);
}

TEST(TambrelFileLoader, stopsWhenAskedToAndReportsNothingElse) {
    std::stop_source source;
    source.request_stop();
    EXPECT_THROW(static_cast<void>(TambrelFileLoader::load("missing.mid", source.get_token())),
                 TambrelLoadCancelled);
    EXPECT_THROW(static_cast<void>(TambrelFileLoader::loadBytes({}, "empty.mid", source.get_token())),
                 TambrelLoadCancelled);
    std::stop_source later;
    const auto stopLater = [&](const MIDIData&) { later.request_stop(); };
    const Bytes song = smfBytes(0, 480, {TrackBuilder().noteOn(0, 0, 60)});
    EXPECT_THROW(static_cast<void>(TambrelFileLoader::loadBytes(MIDIData(Bytes(song)), "a.mid",
                                                                later.get_token(), stopLater)),
                 TambrelLoadCancelled);
}

TEST(TambrelLoadCoordinator, numbersTheLoadsAndStopsThoseThatAreOutdatedCancelledOrLeft) {
    std::optional<TambrelLoadCoordinator> coordinator(std::in_place);
    std::stop_source outdated, cancelled, left;
    EXPECT_EQ(coordinator->begin(), 1);
    coordinator->setTask(outdated);
    EXPECT_FALSE(outdated.stop_requested());
    EXPECT_EQ(coordinator->begin(), 2);
    EXPECT_TRUE(outdated.stop_requested());
    coordinator->setTask(cancelled);
    coordinator->cancel();
    EXPECT_EQ(coordinator->generation(), 3);
    EXPECT_TRUE(cancelled.stop_requested());
    coordinator->setTask(left);
    coordinator.reset();
    EXPECT_TRUE(left.stop_requested());
}

TEST(TambrelFileLoader, leavesAReadThatStallsBehind) {
    static std::binary_semaphore stalls(0), goesOn(0); // Of a thread that may outlive the test.
    const TestFiles files;
    const auto song = files.write("a.mid", smfBytes(0, 480, {TrackBuilder().noteOn(0, 0, 60)}));
    afterStat = [] {
        stalls.release();
        goesOn.acquire();
    };
    std::stop_source task;
    auto load = std::async(std::launch::async, TambrelFileLoader::load, song, task.get_token(), nullptr,
                           WholeFile::readOrLeave);
    stalls.acquire();
    task.request_stop();
    EXPECT_EQ(load.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    EXPECT_EQ(failure(song), "none") << "although the other one still stalls";
    goesOn.release();
    EXPECT_THROW(load.get(), TambrelLoadCancelled);
}

} // namespace
} // namespace tambrel
