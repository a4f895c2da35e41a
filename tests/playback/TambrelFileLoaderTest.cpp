#include "TambrelFileLoader.h"
#include "SMFBuilder.h"
#include "TestFiles.h"
#include "WholeFile.h"

#include <gtest/gtest.h>

#include <system_error>
#include <tuple>

#include <sys/stat.h>

namespace tambrel {
namespace {

using testing::smfBytes;
using testing::TrackBuilder;

Bytes songBytes() {
    return smfBytes(0, 480, {TrackBuilder().key(0, 2, false).noteOn(0, 0, 60, 100).noteOff(480, 0, 60)});
}

Bytes noteClip() {
    return testing::clipBytes({0x20903C64});
}

TEST(TambrelFileLoader, keepsASongWithItsFactsAndItsCompanion) {
    const MIDIData data(songBytes());
    const TambrelLoadedFile file = TambrelFileLoader::loadBytes(data, "/music/a song.mid");
    EXPECT_EQ(file.url, "/music/a song.mid");
    EXPECT_EQ(file.fileName, "a song.mid");
    EXPECT_TRUE(file.playbackData.sharesBytesWith(data));
    EXPECT_EQ(file.info, MIDIFileInfo::parse(data));
    ASSERT_TRUE(file.midi2ClipCompanionData);
    EXPECT_EQ(MIDI2ClipBuilder::summary(*file.midi2ClipCompanionData), file.midi2ClipCompanionSummary);

    const MIDIData silence(smfBytes(1, 480, {TrackBuilder().tempo(0, 500'000)}));
    const auto silent = TambrelFileLoader::loadBytes(silence, "a.mid");
    EXPECT_FALSE(silent.midi2ClipCompanionData);
    EXPECT_EQ(silent.midi2ClipCompanionSummary, (MIDI2ClipBuildSummary{32, 6, 0}));
}

TEST(TambrelFileLoader, turnsAClipIntoASongWhateverItsName) {
    const MIDIData clip(noteClip());
    const TambrelLoadedFile file = TambrelFileLoader::loadBytes(clip, "a.mid");
    EXPECT_EQ(file.info.format, 1);
    EXPECT_EQ(file.info, MIDIFileInfo::parse(file.playbackData));
    EXPECT_TRUE(file.importedMIDI2ClipData->sharesBytesWith(clip));
}

std::string failure(const std::filesystem::path& file) {
    try {
        static_cast<void>(TambrelFileLoader::load(file));
        return "none";
    } catch (const TambrelLoadError& error) {
        return error.diagnosticDescription();
    }
}

TEST(TambrelFileLoader, saysWhyDataCannotBePlayed) {
    const Bytes song = songBytes();
    const auto changed = [&](std::size_t at, std::uint8_t byte) {
        Bytes bytes = song;
        bytes[at] = byte;
        return bytes;
    };
    Bytes cutClip = noteClip();
    cutClip.pop_back();
    const std::tuple<const char*, Bytes, const char*, const char*> rows[] = {
        {"empty", {}, "a.clip", "Malformed MIDI data: The file is empty."},
        {"13 bytes", Bytes(song.begin(), song.begin() + 13), "a.mid",
         "Malformed MIDI data: The file is too short to contain a Standard MIDI header."},
        {"another type", changed(3, 'x'), "a.mid",
         "Malformed MIDI data: The Standard MIDI header chunk is missing."},
        {"header of 7 bytes", changed(7, 7), "a.mid",
         "Malformed MIDI data: The Standard MIDI header length is invalid."},
        {"format 2 without tracks", smfBytes(2, 480, {}), "a.mid",
         "Unsupported Standard MIDI File format 2; expected format 0 or 1."},
        {"no tracks", smfBytes(1, 480, {}), "a.mid",
         "Malformed MIDI data: The MIDI file does not declare any tracks."},
        {"two of three tracks", smfBytes(1, 480, {TrackBuilder(), TrackBuilder()}, 3), "a.mid",
         "Malformed MIDI data: The declared MIDI track chunk data is incomplete."},
        {"a song called a clip, in capitals", song, "a.Smf2",
         "Invalid MIDI 2.0 clip: MIDI 2.0 clip data is missing the SMF2CLIP signature."},
        {"a clip cut off", cutClip, "a.mid",
         "Invalid MIDI 2.0 clip: MIDI 2.0 clip payload is not aligned to 32-bit UMP words."},
    };
    const TestFiles files;
    for (const auto& [name, bytes, fileName, diagnosis] : rows)
        EXPECT_EQ(failure(files.write(fileName, bytes)), diagnosis) << name;
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
    // These say that they hold nothing, or a whole page, and hold something else.
    EXPECT_GT(WholeFile::read("/proc/self/cmdline").size(), 0u);
    const std::filesystem::path shorter = "/sys/devices/system/cpu/online";
    if (std::filesystem::exists(shorter)) {
        EXPECT_LT(WholeFile::read(shorter).size(), std::filesystem::file_size(shorter));
    }
}

TEST(TambrelFileLoader, refusesWhatIsNoReadableFileAndNeverWaits) {
    const TestFiles files;
    std::filesystem::create_directory(files.path("folder.mid"));
    ASSERT_EQ(::mkfifo(files.path("pipe.mid").c_str(), 0600), 0);
    const auto large = files.write("large.mid", songBytes());
    std::filesystem::resize_file(large, WholeFile::largestSize + 1); // Mostly a hole, it takes no room.
    const std::pair<std::filesystem::path, const char*> rows[] = {
        {files.path("n\xE9.mid"), "n\uFFFD.mid: No such file or directory"},
        {files.path("folder.mid"), "folder.mid: Is a directory"},
        {files.path("folder.mid/"), "folder.mid: Is a directory"},
        {files.path("pipe.mid"), "pipe.mid: It is not a regular file."},
        {"/dev/zero", "zero: It is not a regular file."},
        {large, "large.mid: It is too large: files of 2 GiB and more cannot be played."},
    };
    for (const auto& [file, reason] : rows)
        EXPECT_EQ(failure(file), std::string("Could not read ") + reason);
}

TEST(TambrelFileLoader, stopsWhenAskedToAndReportsNothingElse) {
    std::stop_source source;
    source.request_stop();
    EXPECT_THROW(static_cast<void>(TambrelFileLoader::load("missing.mid", source.get_token())),
                 TambrelLoadCancelled);
    EXPECT_THROW(static_cast<void>(TambrelFileLoader::loadBytes({}, "empty.mid", source.get_token())),
                 TambrelLoadCancelled);
}

} // namespace
} // namespace tambrel
