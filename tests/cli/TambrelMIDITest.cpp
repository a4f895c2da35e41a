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
#include <sstream>

namespace tambrel {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
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
        folder.write("long.mid", smfBytes(1, 96, {TrackBuilder().noteOn(0, 0, 60).endOfTrack(1'000'000)}));
        folder.write("bank.sf2", {'n', 'o', 'n', 'e'});
        std::filesystem::create_directory(folder.path("directory"));
        process.setWorkingDirectory(folder.path("").c_str());
    }

    [[nodiscard]] QStringList files() const {
        return QDir(folder.path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    [[nodiscard]] Outcome end() {
        EXPECT_TRUE(process.waitForFinished(60'000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    [[nodiscard]] Outcome run(const QStringList& words) {
        process.start(TAMBREL_MIDI_PROGRAM, words);
        return end();
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
    struct Row {
        QStringList arguments;
        int status;
        const char* output; // A part of it; empty when nothing is said.
        const char* errors;
    };
    const Row rows[] = {
        {{"--help"}, 0, "render", ""},
        {{"render", "--help"}, 0, "--rate", ""},
        {{"--version"}, 0, "tambrel-midi 0.", ""},
        {{"info", "song.mid"}, 0, "Format", ""},
        {{"render", "song.mid", "song.wav"}, 0, "song.wav: ", ""},
        {{"render", "--soundfont", "/usr/share/sounds/sf2/TimGM6mb.sf2", "--rate", "8000", "song.mid",
          "song.wav"},
         0,
         "song.wav: ",
         ""},
        {{"convert", "song.mid", "song.clip"}, 0, "", ""},
        {{"convert", "song.mid", "song.clip"}, 1, "", "tambrel-midi: song.clip: The file exists; "},
        {{"convert", "--loudness", "--force", "song.mid", "song.clip"}, 0, "", ""},
        {{"convert", "plain.mid", "new.clip"}, 1, "", "tambrel-midi: plain.mid: "},
        {{"info", "missing.mid"}, 1, "", "tambrel-midi: missing.mid: "},
        {{"render", "missing.mid", "new.wav"}, 1, "", "tambrel-midi: missing.mid: "},
        {{"render", "--soundfont", "bank.sf2", "song.mid", "new.wav"}, 1, "", "tambrel-midi: song.mid: "},
        {{"render", "song.mid", "directory"}, 1, "", "tambrel-midi: directory: "},
        {{"render", "song.mid", "no/new.wav"}, 1, "", "tambrel-midi: no/new.wav: "},
        {{}, 2, "", "Try 'tambrel-midi --help'."},
        {{"dance"}, 2, "", "tambrel-midi: "},
        {{"info"}, 2, "", "FILE"},
        {{"info", "--loud", "song.mid"}, 2, "", "--loud"},
        {{"render", "song.mid"}, 2, "", "OUT"},
        {{"render", "--rate", "7999", "song.mid", "new.wav"}, 2, "", "--rate"},
    };
    for (const Row& row : rows) {
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
    const QString text = QString::fromStdString(outcome.output);
    for (const char* line : {"Format +1", "Tracks +2", "Tempo +180\\.000 BPM", "Key +D major",
                             "Length +0:04\\.006", "Lane 2 +2 phrases", "Tempo +-", "Length +0:00\\.500"})
        EXPECT_TRUE(text.contains(QRegularExpression(line))) << line << "\n" << outcome.output;
}

TEST_F(TambrelMIDITest, ShowsFactsAsJSONInRoundTripForm) {
    const Outcome outcome = run({"info", "--json", "song.mid", "plain.mid"});
    EXPECT_EQ(outcome.status, 0);
    std::istringstream lines(outcome.output);
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    const auto facts = nlohmann::json::parse(line);
    const auto& info = facts.at("info");
    const MIDIFileInfo expected = MIDIFileInfo::parse(song);
    EXPECT_THAT(facts.at("file").get<std::string>(), EndsWith("song.mid"));
    EXPECT_EQ(facts.at("duration").get<double>(), Timeline::build(song)->duration());
    EXPECT_EQ(info.at("format"), 1);
    EXPECT_EQ(info.at("isSupportedFormat"), true);
    EXPECT_EQ(info.at("trackCount"), 2);
    EXPECT_EQ(info.at("displayTrackCount"), 2);
    EXPECT_EQ(info.at("tempoBPM").get<double>(), expected.tempoBPM);
    EXPECT_EQ(info.at("keySignature"), "D major");
    EXPECT_EQ(info.at("wasExplodedFromFormat0"), false);
    const auto& lanes = info.at("timelineLanes");
    ASSERT_EQ(lanes.size(), expected.timelineLanes.size());
    for (std::size_t lane = 0; lane < lanes.size(); ++lane) {
        EXPECT_EQ(lanes[lane].at("label"), expected.timelineLanes[lane].label);
        std::vector<MIDIPhrase> phrases;
        for (const auto& phrase : lanes[lane].at("phrases"))
            phrases.push_back({phrase.at(0).get<double>(), phrase.at(1).get<double>()});
        EXPECT_EQ(phrases, expected.timelineLanes[lane].phrases);
    }

    ASSERT_TRUE(std::getline(lines, line));
    const auto plain = nlohmann::json::parse(line).at("info");
    EXPECT_TRUE(plain.at("tempoBPM").is_null());
    EXPECT_TRUE(plain.at("keySignature").is_null());
    EXPECT_TRUE(plain.at("timelineLanes").is_array());
    EXPECT_FALSE(std::getline(lines, line));
}

TEST_F(TambrelMIDITest, TakesFileNamesThatAreNoUTF8) {
    process.start("/bin/sh", {"-c",
                              "name=$(printf 'a\\377.mid'); cp song.mid \"$name\";"
                              "\"$0\" info --json \"$name\" && \"$0\" render \"$name\" \"$name.wav\"",
                              TAMBREL_MIDI_PROGRAM});
    const Outcome outcome = end();
    EXPECT_EQ(outcome.status, 0);
    const std::string line = outcome.output.substr(0, outcome.output.find('\n'));
    EXPECT_THAT(nlohmann::json::parse(line).at("file").get<std::string>(), EndsWith("a\uFFFD.mid"));
    EXPECT_THAT(outcome.errors, IsEmpty());
}

TEST_F(TambrelMIDITest, AnInterruptedRenderingLeavesNoFile) {
    folder.write("old.wav", {1, 2, 3});
    const QStringList before = files();
    for (const int signal : {SIGINT, SIGTERM}) {
        for (const char* output : {"new.wav", "old.wav"}) {
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
            EXPECT_THAT(outcome.output, IsEmpty());
            EXPECT_EQ(files(), before);
        }
    }
    EXPECT_EQ(QFileInfo(folder.path("old.wav")).size(), 3);
}

} // namespace
} // namespace tambrel
