#include "TambrelPlaybackState.h"
#include "MIDILoudnessProcessor.h"
#include "RecordedLog.h"
#include "SMFBuilder.h"

#include <gmock/gmock.h>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using testing::smfBytes;
using testing::TrackBuilder;

class TambrelPlaybackStateTest : public ::testing::Test {
protected:
    RecordedLog recorded;
    const MIDIData song{smfBytes(0, 480, {TrackBuilder().noteOn(0, 9, 36, 64).noteOff(480, 9, 36)})};
    const MIDIData silence{smfBytes(0, 480, {TrackBuilder().tempo(0, 500'000)})};
    TambrelPlaybackState state{recorded.log};
};

TEST_F(TambrelPlaybackStateTest, startsEverySongWithLoudnessOff) {
    state.replaceLoadedMIDI(song);
    state.setLoudnessEnabled(true);
    state.markPlaybackLoaded(*state.selectedSnapshot("a"));
    state.prepareMIDI2ClipCompanion({song, true}, "a");
    for (const bool again : {true, false}) {
        again ? state.replaceLoadedMIDI(silence) : state.reset();
        EXPECT_EQ(state.originalMIDIData().has_value(), again);
        EXPECT_FALSE(state.loudnessEnabled());
        EXPECT_FALSE(state.loadedPlaybackIsLoud());
        EXPECT_FALSE(state.loadedMIDI2ClipIsLoud().has_value());
        EXPECT_FALSE(state.midi2ClipCompanionData().has_value());
    }
}

TEST_F(TambrelPlaybackStateTest, makesTheLoudnessVariantOnceForEachSong) {
    state.replaceLoadedMIDI(song);
    EXPECT_EQ(state.selectedSnapshot("caller")->song.data.view().data(), song.view().data());
    state.setLoudnessEnabled(true);
    const auto loud = state.selectedSnapshot("caller");
    EXPECT_TRUE(loud->isLoud);
    EXPECT_TRUE(
        std::ranges::equal(loud->song.data.view(), MIDILoudnessProcessor::boostedDrumsAndBass(song).view()));
    EXPECT_EQ(state.selectedSnapshot("caller")->song.data.view().data(), loud->song.data.view().data());
    state.replaceLoadedMIDI(silence);
    state.setLoudnessEnabled(true);
    EXPECT_EQ(state.selectedSnapshot("caller")->song.data.size(), silence.size()) << "not the song before";
}

TEST_F(TambrelPlaybackStateTest, keepsWhatTheLoaderBuiltAsItIs) {
    const std::string name = " | TambrelPlaybackState.cacheGeneratedMIDI2ClipCompanion";
    state.cacheGeneratedMIDI2ClipCompanion(song, {28, 5, 1}, false, "caller");
    EXPECT_EQ(state.loadedMIDI2ClipIsLoud(), false);
    state.cacheGeneratedMIDI2ClipCompanion(song, {27, 5, 1}, true, "caller");
    EXPECT_EQ(state.midi2ClipCompanionData()->view().data(), song.view().data());
    EXPECT_EQ(state.loadedMIDI2ClipIsLoud(), true);
    state.cacheGeneratedMIDI2ClipCompanion(std::nullopt, {28, 5, 0}, false, "caller");
    EXPECT_FALSE(state.midi2ClipCompanionData().has_value());
    state.cacheImportedMIDI2ClipCompanion(song);
    EXPECT_EQ(state.loadedMIDI2ClipIsLoud(), false);
    EXPECT_THAT(
        recorded.taken(),
        ElementsAre("MIDI 2.0 companion ready for caller; bytes 28; UMP words 5; channel voice words 1" +
                        name,
                    "MIDI 2.0 companion unavailable for caller" + name,
                    "MIDI 2.0 companion unavailable for caller" + name,
                    "Cached original MIDI 2.0 clip companion from imported file | "
                    "TambrelPlaybackState.cacheImportedMIDI2ClipCompanion"));
}

TEST_F(TambrelPlaybackStateTest, rebuildsTheCompanionOnlyForAnotherVariantOrWhenThereIsNone) {
    const std::string name = " | TambrelPlaybackState.prepareMIDI2ClipCompanion";
    const std::string generating = "Generating MIDI 2.0 clip companion for caller" + name;
    const std::string ready =
        "MIDI 2.0 companion ready; bytes 48; UMP words 10; channel voice words 2" + name;
    const std::string unavailable = "MIDI 2.0 companion unavailable for current MIDI data" + name;
    state.prepareMIDI2ClipCompanion({song, false}, "caller");
    EXPECT_TRUE(
        std::ranges::equal(state.midi2ClipCompanionData()->view(), MIDI2ClipBuilder::build(song).view()));
    state.prepareMIDI2ClipCompanion({silence, false}, "caller");
    state.prepareMIDI2ClipCompanion({song, true}, "caller");
    EXPECT_EQ(state.loadedMIDI2ClipIsLoud(), true);
    state.prepareMIDI2ClipCompanion({silence, false}, "caller");
    state.prepareMIDI2ClipCompanion({silence, false}, "caller");
    EXPECT_FALSE(state.midi2ClipCompanionData().has_value());
    EXPECT_EQ(state.loadedMIDI2ClipIsLoud(), false);
    EXPECT_THAT(recorded.taken(),
                ElementsAre(generating, ready, "Reusing MIDI 2.0 clip companion for caller" + name,
                            generating, ready, generating, unavailable, generating, unavailable));
}

TEST_F(TambrelPlaybackStateTest, makesAFreedCompanionAgainWhenItIsAskedForUnlessItWasImported) {
    const MIDIData clip = MIDI2ClipBuilder::build(song);
    state.replaceLoadedMIDI(song);
    for (const auto& loaded : {std::optional(clip), std::optional<MIDIData>()}) {
        state.cacheGeneratedMIDI2ClipCompanion(loaded, MIDI2ClipBuilder::summary(clip), false, "caller");
        state.freeMIDI2ClipCompanion();
        const auto again = state.midi2ClipCompanionData();
        ASSERT_EQ(again.has_value(), loaded.has_value());
        EXPECT_TRUE(!again || std::ranges::equal(again->view(), clip.view()));
        EXPECT_TRUE(!again || again->view().data() != clip.view().data());
    }
    state.setLoudnessEnabled(true);
    const auto loud = *state.selectedSnapshot("caller");
    state.prepareMIDI2ClipCompanion(loud, "caller");
    state.freeMIDI2ClipCompanion();
    EXPECT_TRUE(std::ranges::equal(state.midi2ClipCompanionData()->view(),
                                   MIDI2ClipBuilder::build(loud.song.data).view()));
    state.cacheImportedMIDI2ClipCompanion(song);
    state.freeMIDI2ClipCompanion();
    EXPECT_EQ(state.midi2ClipCompanionData()->view().data(), song.view().data());
}

} // namespace
} // namespace tambrel
