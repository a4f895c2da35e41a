#include "MIDI2ClipBuilder.h"
#include "MIDIFileInfo.h"
#include "MIDILoudnessProcessor.h"
#include "SMFBuilder.h"
#include "TestFiles.h"
#include "Timeline.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>

#include <algorithm>
#include <csignal>

namespace tambrel {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using namespace testing;

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

/// The program itself, run in a folder with some songs.
class TambrelMIDITest : public ::testing::Test {
protected:
    TambrelMIDITest() {
        folder.write("song.mid", song);
        folder.write("plain.mid", smfBytes(0, 96, {TrackBuilder().endOfTrack(96)}));
        process.setWorkingDirectory(folder.path("").c_str());
    }

    [[nodiscard]] QStringList files() const {
        return QDir(folder.path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    [[nodiscard]] Outcome run(const QStringList& words, const char* program = TAMBREL_MIDI_PROGRAM) {
        process.start(program, words);
        return end();
    }
    [[nodiscard]] Outcome end() {
        EXPECT_TRUE(process.waitForFinished(60'000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    const Bytes song = smfBytes(
        1, 480,
        {TrackBuilder().tempo(0, 333'333).key(0, 2, false).endOfTrack(480),
         TrackBuilder().noteOn(7, 9, 36).noteOff(480, 9, 36).noteOn(4801, 9, 36).noteOff(480, 9, 36)});
    int argumentCount = 1;
    char argument[6] = "tests";
    char* arguments[2] = {argument, nullptr};
    QCoreApplication application{argumentCount, arguments};
    TestFiles folder;
    QProcess process;
};

TEST_F(TambrelMIDITest, EndsWithItsStatusAndAWordOnTheRightStream) {
    std::filesystem::create_directory(folder.path("directory"));
    folder.write("bank.sf2", {'n', 'o', 'n', 'e'});
    const struct {
        QStringList arguments;
        int status;
        const char* output; // A part of it; empty when nothing is said.
        const char* errors;
    } rows[] = {
        {{"render", "--help"}, 0, "--rate", ""},
        {{"--version"}, 0, "tambrel-midi 0.", ""},
        {{"render", "--rate", "8000", "song.mid", "song.wav"}, 0, "song.wav: ", ""},
        {{"convert", "song.mid", "song.clip"}, 0, "", ""},
        {{"convert", "song.mid", "song.clip"}, 1, "", "tambrel-midi: song.clip: The file exists; "},
        {{"convert", "--loudness", "--force", "song.mid", "song.clip"}, 0, "", ""},
        {{"convert", "plain.mid", "new.clip"}, 1, "", "tambrel-midi: plain.mid: "},
        {{"render", "missing.mid", "new.wav"}, 1, "", "tambrel-midi: missing.mid: "},
        {{"render", "--soundfont", "bank.sf2", "song.mid", "new.wav"}, 1, "", "tambrel-midi: song.mid: "},
        {{"render", "song.mid", "directory"}, 1, "", "tambrel-midi: directory: "},
        {{}, 2, "", "Try 'tambrel-midi --help'."},
        {{"info"}, 2, "", "FILE"},
        {{"render", "song.mid"}, 2, "", "OUT"},
        {{"render", "--rate", "7999", "song.mid", "new.wav"}, 2, "", "--rate"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments.join(' ').toStdString());
        const Outcome outcome = run(row.arguments);
        EXPECT_EQ(outcome.status, row.status);
        EXPECT_THAT(outcome.output, HasSubstr(row.output));
        EXPECT_EQ(outcome.output.empty(), std::string(row.output).empty());
        EXPECT_EQ(outcome.errors.empty(), std::string(row.errors).empty());
        // At the start of a line: a library may have had its say before.
        EXPECT_THAT("\n" + outcome.errors, HasSubstr(std::string(row.status == 1 ? "\n" : "") + row.errors));
    }
    EXPECT_TRUE(files().filter("new.").isEmpty());
    const auto loud =
        MIDI2ClipBuilder::build(MIDILoudnessProcessor::boostedDrumsAndBass(MIDIData(Bytes(song))));
    EXPECT_EQ(content(folder.path("song.clip")), std::string(loud.view().begin(), loud.view().end()));
}

TEST_F(TambrelMIDITest, ShowsFactsAsText) {
    const Outcome outcome = run({"info", "song.mid", "missing.mid", "plain.mid"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, StartsWith("tambrel-midi: missing.mid: "));
    const QString text = QString::fromStdString(outcome.output);
    for (const char* line : {"Format +1", "Tracks +2", "Tempo +180\\.000 BPM", "Key +D major",
                             "Length +0:04\\.006", "Lane 2 +2 phrases", "Tempo +-", "Length +0:00\\.500"})
        EXPECT_TRUE(text.contains(QRegularExpression(line))) << line << "\n" << outcome.output;
}

TEST_F(TambrelMIDITest, ShowsFactsAsJSONInRoundTripFormWhateverTheFilesName) {
    const Outcome outcome =
        run({"-c",
             "name=$(printf 'a\\377.mid'); cp song.mid \"$name\"; \"$0\" render \"$name\" "
             "\"$name.wav\" >/dev/null && exec \"$0\" info --json \"$name\" plain.mid",
             TAMBREL_MIDI_PROGRAM},
            "/bin/sh");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    using JSON = nlohmann::json;
    const auto lineEnd = outcome.output.find('\n');
    const auto facts = JSON::parse(outcome.output.substr(0, lineEnd));
    const auto plain = JSON::parse(outcome.output.substr(lineEnd)).at("info");
    const MIDIFileInfo expected = MIDIFileInfo::parse(song);
    auto lanes = JSON::array();
    for (const auto& lane : expected.timelineLanes) {
        lanes.push_back({{"label", lane.label}, {"phrases", JSON::array()}});
        for (const auto& phrase : lane.phrases)
            lanes.back()["phrases"].push_back({phrase.start, phrase.end});
    }
    EXPECT_THAT(facts.at("file").get<std::string>(), EndsWith("a\uFFFD.mid"));
    EXPECT_EQ(facts.at("duration"), Timeline::build(song)->duration());
    EXPECT_EQ(facts.at("info"), JSON({{"format", 1},
                                      {"isSupportedFormat", true},
                                      {"trackCount", 2},
                                      {"displayTrackCount", 2},
                                      {"tempoBPM", expected.tempoBPM.value()},
                                      {"keySignature", "D major"},
                                      {"wasExplodedFromFormat0", false},
                                      {"timelineLanes", lanes}}));
    EXPECT_TRUE(plain.at("tempoBPM").is_null());
    EXPECT_TRUE(plain.at("keySignature").is_null());
}

TEST_F(TambrelMIDITest, AnInterruptedRenderingLeavesNoFile) {
    folder.write("long.mid", smfBytes(1, 96, {TrackBuilder().noteOn(0, 0, 60).endOfTrack(1'000'000)}));
    folder.write("old.wav", {1, 2, 3});
    const QStringList before = files();
    for (const auto& [signal, output] : {std::pair(SIGINT, "new.wav"), {SIGTERM, "old.wav"}}) {
        SCOPED_TRACE(output);
        process.start(TAMBREL_MIDI_PROGRAM, {"render", "long.mid", output});
        ASSERT_TRUE(process.waitForStarted());
        // The rendering has begun once it writes to a file of its own.
        const auto writes = [&] {
            const auto infos = QDir(folder.path("")).entryInfoList(QDir::Files | QDir::Hidden);
            return std::ranges::any_of(infos, [&](const QFileInfo& info) {
                return !before.contains(info.fileName()) && info.size() > 0;
            });
        };
        while (!writes() && !process.waitForFinished(1)) {
        }
        ASSERT_EQ(process.state(), QProcess::Running);
        kill(static_cast<pid_t>(process.processId()), signal);
        const Outcome outcome = end();
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, StartsWith(std::string("tambrel-midi: ") + output + ": "));
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(files(), before);
    }
    EXPECT_EQ(QFileInfo(folder.path("old.wav")).size(), 3);
}

} // namespace
} // namespace tambrel
