#include "MIDILoudnessProcessor.h"
#include "RandomSongs.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tambrel {
namespace {

using testing::smfBytes;
using testing::TrackBuilder;

Bytes boosted(const Bytes& file) {
    const MIDIData result = MIDILoudnessProcessor::boostedDrumsAndBass(MIDIData(Bytes(file)));
    return {result.view().begin(), result.view().end()};
}

TEST(MIDILoudnessProcessor, strikesDrumsAndBassAtFullVelocity) {
    struct Row {
        const char* name;
        TrackBuilder before;
        TrackBuilder after;
    };
    const auto named = [](const char* name, int velocity) {
        return TrackBuilder().name(0, name).program(0, 2, 0).noteOn(0, 2, 40, velocity);
    };
    const Row rows[] = {
        {"the percussion channel", TrackBuilder().noteOn(0, 9, 36, 64), TrackBuilder().noteOn(0, 9, 36, 127)},
        {"a piano beside it", TrackBuilder().noteOn(0, 0, 60, 64).noteOn(0, 9, 36, 64),
         TrackBuilder().noteOn(0, 0, 60, 64).noteOn(0, 9, 36, 127)},
        {"velocity 0 is a note off", TrackBuilder().noteOn(0, 9, 36, 0).noteOff(0, 9, 36),
         TrackBuilder().noteOn(0, 9, 36, 0).noteOff(0, 9, 36)},
        {"running status", TrackBuilder().noteOn(0, 9, 36, 1).raw({1, 36, 2, 1, 36, 0}),
         TrackBuilder().noteOn(0, 9, 36, 127).raw({1, 36, 127, 1, 36, 0})},
        {"a bass by name", named("Fretless Bass", 5), named("Fretless Bass", 127)},
        {"within a word, in capitals", named("BASSOON", 5), named("BASSOON", 127)},
        {"drums by name", named("my Drumline", 5), named("my Drumline", 127)},
        {"percussion by name", named("Grosse Percussion é", 5), named("Grosse Percussion é", 127)},
        {"another name", named("Bas Drm", 5), named("Bas Drm", 5)},
        {"a name that is no text", named("Bass \xE9", 5), named("Bass \xE9", 5)},
        {"a name arrives after some notes",
         TrackBuilder().noteOn(0, 1, 1, 5).name(0, "Bass").noteOn(0, 1, 1, 5),
         TrackBuilder().noteOn(0, 1, 1, 5).name(0, "Bass").noteOn(0, 1, 1, 127)},
        {"a later name replaces the first",
         TrackBuilder().name(0, "Bass").name(0, "Flute").noteOn(0, 1, 1, 5),
         TrackBuilder().name(0, "Bass").name(0, "Flute").noteOn(0, 1, 1, 5)},
        {"a later name that is no text does not",
         TrackBuilder().name(0, "Bass").name(0, "\xFF").noteOn(0, 1, 1, 5),
         TrackBuilder().name(0, "Bass").name(0, "\xFF").noteOn(0, 1, 1, 127)},
        {"another text event is no name",
         TrackBuilder().meta(0, 0x04, {'b', 'a', 's', 's'}).noteOn(0, 1, 1, 5),
         TrackBuilder().meta(0, 0x04, {'b', 'a', 's', 's'}).noteOn(0, 1, 1, 5)},
        {"bass programs, from the first to the last",
         TrackBuilder()
             .noteOn(0, 3, 1, 5)
             .program(0, 3, 31)
             .noteOn(0, 3, 1, 5)
             .program(0, 3, 32)
             .noteOn(0, 3, 1, 5)
             .program(0, 3, 39)
             .noteOn(0, 3, 1, 5)
             .program(0, 3, 40)
             .noteOn(0, 3, 1, 5),
         TrackBuilder()
             .noteOn(0, 3, 1, 5)
             .program(0, 3, 31)
             .noteOn(0, 3, 1, 5)
             .program(0, 3, 32)
             .noteOn(0, 3, 1, 127)
             .program(0, 3, 39)
             .noteOn(0, 3, 1, 127)
             .program(0, 3, 40)
             .noteOn(0, 3, 1, 5)},
        {"a program counts on its channel only", TrackBuilder().program(0, 3, 33).noteOn(0, 4, 1, 5),
         TrackBuilder().program(0, 3, 33).noteOn(0, 4, 1, 5)},
        {"up to a defect", TrackBuilder().noteOn(0, 9, 1, 5).raw({0, 0xF8, 0}).noteOn(0, 9, 1, 5),
         TrackBuilder().noteOn(0, 9, 1, 127).raw({0, 0xF8, 0}).noteOn(0, 9, 1, 5)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(boosted(smfBytes(1, 480, {row.before})), smfBytes(1, 480, {row.after}));
    }
}

TEST(MIDILoudnessProcessor, startsEveryTrackAfresh) {
    const auto bass = TrackBuilder().name(0, "Bass").program(0, 3, 34);
    const auto other = TrackBuilder().noteOn(0, 3, 40, 64);
    const Bytes file = smfBytes(1, 480, {bass, other});
    EXPECT_EQ(boosted(file), file);
}

TEST(MIDILoudnessProcessor, givesBackWhatDeclaresNoTrack) {
    const MIDIData data(smfBytes(1, 480, {TrackBuilder().noteOn(0, 9, 36)}, 0));
    EXPECT_TRUE(MIDILoudnessProcessor::boostedDrumsAndBass(data).sharesBytesWith(data));
}

TEST(MIDILoudnessProcessor, changesNothingTheSecondTime) {
    testing::RandomSongs songs(5);
    for (int i = 0; i < 300; ++i) {
        const Bytes once = boosted(songs.next());
        ASSERT_EQ(boosted(once), once);
    }
}

} // namespace
} // namespace tambrel
