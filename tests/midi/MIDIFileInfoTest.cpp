#include "MIDIFileInfo.h"
#include "MIDIStatus.h"
#include "SMFBuilder.h"

#include <gtest/gtest.h>

#include <tuple>

namespace tambrel {

static void PrintTo(const MIDIPhrase& phrase, std::ostream* out) {
    *out << phrase.start << ".." << phrase.end;
}

namespace {

using testing::smfBytes;
using testing::timeCodeDivision;
using testing::TrackBuilder;

TEST(MIDIFileInfo, namesLanesByTrackOrByChannel) {
    const TrackBuilder conductor = TrackBuilder().tempo(0, 500'000).endOfTrack(960);
    const TrackBuilder notes = TrackBuilder().noteOn(0, 0, 60).noteOff(480, 0, 60);
    const TrackBuilder drumsToo = TrackBuilder().noteOn(0, 9, 36).noteOn(10, 0, 60).noteOn(10, 9, 36);
    const TrackBuilder silent = TrackBuilder().noteOn(10, 0, 60, 0).noteOff(10, 0, 60);
    const TrackBuilder atOnce = TrackBuilder().noteOn(0, 0, 60).noteOn(0, 1, 60);
    // What is shown of each file: tracks, lanes by their labels, and whether channels have become tracks.
    const std::tuple<const char*, Bytes, std::int64_t, std::int64_t, std::string, bool> rows[] = {
        {"a track without notes has no lane", smfBytes(1, 480, {conductor, notes, notes}), 3, 3, "2 3 ",
         false},
        {"tracks of format 1 stay whole", smfBytes(1, 480, {drumsToo}), 1, 1, "1 ", false},
        {"format 0 on two channels", smfBytes(0, 480, {drumsToo}), 1, 2, "1 2 ", true},
        {"format 0 on one channel", smfBytes(0, 480, {notes}), 1, 1, "1 ", false},
        {"format 0 without struck notes", smfBytes(0, 480, {silent}), 1, 1, "", false},
        {"format 0 with more than one track", smfBytes(0, 480, {notes, drumsToo}), 2, 2, "1 2 ", true},
        {"format 0 with everything at tick 0", smfBytes(0, 480, {atOnce}), 1, 2, "", true},
        {"fewer tracks than declared", smfBytes(1, 480, {notes}, 7), 7, 7, "1 ", false},
        {"no tracks declared", smfBytes(1, 480, {notes}, 0), 0, 0, "", false},
        {"format 2", smfBytes(2, 480, {notes}), 1, 1, "", false},
    };
    for (const auto& [name, file, trackCount, displayTrackCount, expectedLabels, wasExploded] : rows) {
        SCOPED_TRACE(name);
        const MIDIFileInfo info = MIDIFileInfo::parse(file);
        std::string labels;
        for (const MIDITrackPhraseLane& lane : info.timelineLanes)
            labels += lane.label + " ";
        EXPECT_EQ(info.trackCount, trackCount);
        EXPECT_EQ(info.displayTrackCount, displayTrackCount);
        EXPECT_EQ(labels, expectedLabels);
        EXPECT_EQ(info.wasExplodedFromFormat0, wasExploded);
        EXPECT_EQ(info.isSupportedFormat, info.format <= 1);
    }
}

TEST(MIDIFileInfo, reportsTheFirstUsableTempoAndKey) {
    const std::tuple<const char*, TrackBuilder, std::optional<double>, std::optional<std::string>> rows[] = {
        {"the first key stays", TrackBuilder().key(0, 2, false).key(9, 3, false), {}, "D major"},
        {"the first tempo stays", TrackBuilder().tempo(0, 500'000).tempo(9, 250'000), 120.0, {}},
        {"a tempo of zero is passed over", TrackBuilder().tempo(0, 0).tempo(9, 0x0F4240), 60.0, {}},
        {"a tempo is not rounded", TrackBuilder().tempo(0, 16'777'215), 60e6 / 16'777'215, {}},
        {"a short tempo is passed over", TrackBuilder().meta(0, MetaType::setTempo, {7, 8}), {}, {}},
        {"a short key is passed over", TrackBuilder().meta(0, MetaType::keySignature, {1}), {}, {}},
        {"a long tempo is read", TrackBuilder().meta(0, MetaType::setTempo, {7, 0xA1, 0x20, 9}), 120.0, {}},
        {"a long key is read", TrackBuilder().meta(0, MetaType::keySignature, {1, 1, 9}), {}, "E minor"},
        {"minor, most flats", TrackBuilder().key(0, -7, true), {}, "Ab minor"},
        {"minor, most sharps", TrackBuilder().key(0, 7, true), {}, "A# minor"},
        {"major, most flats", TrackBuilder().key(0, -7, false), {}, "Cb major"},
        {"major, most sharps", TrackBuilder().key(0, 7, false), {}, "C# major"},
        {"too many sharps", TrackBuilder().key(0, 8, false), {}, "Unknown major"},
        {"too many flats", TrackBuilder().key(0, -128, true), {}, "Unknown minor"},
        {"only mode 1 is minor", TrackBuilder().meta(0, MetaType::keySignature, {0, 2}), {}, "C major"},
        {"nothing past a defect", TrackBuilder().raw({0x00, 0xF8, 0x00}).tempo(0, 500'000), {}, {}},
    };
    for (const auto& [name, track, tempo, key] : rows) {
        SCOPED_TRACE(name);
        const MIDIFileInfo info = MIDIFileInfo::parse(smfBytes(1, 480, {TrackBuilder(), track}));
        EXPECT_EQ(info.tempoBPM, tempo);
        EXPECT_EQ(info.keySignature, key);
    }
}

TEST(MIDIFileInfo, splitsPhrasesAtGapsLongerThanTwoQuarters) {
    // Note-ons at tick 0 and `distance`; the track is 10000 ticks long.
    const auto phrases = [](int division, std::uint32_t distance) {
        const auto track =
            TrackBuilder().noteOn(0, 0, 60).noteOn(distance, 0, 60).endOfTrack(10'000 - distance);
        return MIDIFileInfo::parse(smfBytes(1, division, {track})).timelineLanes.at(0).phrases;
    };
    const std::tuple<const char*, int, std::uint32_t> rows[] = {
        {"ticks per quarter", 480, 960},
        {"division 0 counts as 1", 0, 2},
        {"time code: ticks per frame", timeCodeDivision(25, 40), 80},
        {"time code without ticks", timeCodeDivision(25, 0), 2}};
    for (const auto& [name, division, gap] : rows) {
        SCOPED_TRACE(name);
        const double end = gap / 10'000.0;
        EXPECT_EQ(phrases(division, gap), (std::vector<MIDIPhrase>{{0, end + 0.01}}));
        const double start = (gap + 1) / 10'000.0;
        EXPECT_EQ(phrases(division, gap + 1), (std::vector<MIDIPhrase>{{0, 0.01}, {start, start + 0.01}}));
    }
}

TEST(MIDIFileInfo, gathersTheNotesOfAChannelFromAllTracks) {
    // The second track's notes bridge the gap between two of the first one's, the last just so.
    const auto scattered =
        TrackBuilder().noteOn(100, 0, 60).noteOn(2660, 0, 60).noteOn(2240, 0, 60).noteOn(5000, 0, 60);
    const auto close = TrackBuilder().noteOn(0, 0, 60).noteOn(900, 0, 60).noteOn(900, 0, 60);
    const MIDIFileInfo info = MIDIFileInfo::parse(smfBytes(0, 480, {scattered, close}));
    EXPECT_EQ(info.timelineLanes.at(0).phrases,
              (std::vector<MIDIPhrase>{{0, 0.276 + 0.01}, {0.5, 0.51}, {1, 1.005}}));
}

} // namespace
} // namespace tambrel
