#include "MIDILoudnessProcessor.h"
#include "SMFBuilder.h"

#include <gtest/gtest.h>

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
        TrackBuilder before; // Stays as it is; a soft note follows.
        int channel;
        bool isBoosted;
    };
    const auto named = [](const char* name) { return TrackBuilder().name(0, name); };
    const auto program = [](int number) { return TrackBuilder().program(0, 3, number); };
    const Row rows[] = {
        {"the percussion channel", TrackBuilder().noteOn(0, 0, 60, 5), 9, true},
        {"a piano beside it", TrackBuilder().noteOn(0, 9, 36, 0).noteOff(0, 9, 36), 0, false},
        {"a bass by name", named("Fretless Bass"), 2, true},
        {"within a word, in capitals", named("BASSOON"), 2, true},
        {"drums by name", named("my Drumline"), 2, true},
        {"percussion by name", named("Grosse Percussion é"), 2, true},
        {"another name", named("Bas Drm"), 2, false},
        {"a name that is no text", named("Bass \xE9"), 2, false},
        {"a name arrives after some notes", TrackBuilder().noteOn(0, 1, 1, 5).name(0, "Bass"), 1, true},
        {"a later name replaces the first", named("Bass").name(0, "Flute"), 1, false},
        {"a later name that is no text does not", named("Bass").name(0, "\xFF"), 1, true},
        {"another text event is no name", TrackBuilder().meta(0, 0x04, {'b', 'a', 's', 's'}), 1, false},
        {"the program before the basses", program(31), 3, false},
        {"the first bass", program(32), 3, true},
        {"the last bass", program(39), 3, true},
        {"the program behind the basses", program(32).program(0, 3, 40), 3, false},
        {"a program counts on its channel only", program(33), 4, false},
        {"nothing past a defect", TrackBuilder().raw({0, 0xF8, 0}), 9, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TrackBuilder soft = row.before, loud = row.before;
        soft.noteOn(0, row.channel, 40, 5)
            .raw({1, 36, 2, 1, 36, 0}); // Under running status, the last one off.
        loud.noteOn(0, row.channel, 40, 127).raw({1, 36, 127, 1, 36, 0});
        const Bytes file = smfBytes(1, 480, {soft});
        EXPECT_EQ(boosted(file), row.isBoosted ? smfBytes(1, 480, {loud}) : file);
    }
}

TEST(MIDILoudnessProcessor, startsEveryTrackAfresh) {
    const auto bass = TrackBuilder().name(0, "Bass").program(0, 3, 34);
    const Bytes file = smfBytes(1, 480, {bass, TrackBuilder().noteOn(0, 3, 40, 64)});
    EXPECT_EQ(boosted(file), file);
}

TEST(MIDILoudnessProcessor, givesBackWhatDeclaresNoTrack) {
    const MIDIData data(smfBytes(1, 480, {TrackBuilder().noteOn(0, 9, 36)}, 0));
    EXPECT_TRUE(MIDILoudnessProcessor::boostedDrumsAndBass(data).sharesBytesWith(data));
}

} // namespace
} // namespace tambrel
