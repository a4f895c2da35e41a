#include "MIDI2ClipImporter.h"
#include "MIDIStatus.h"
#include "SMFBuilder.h"

#include <gmock/gmock.h>

#include <tuple>

namespace tambrel {
namespace {

using testing::clipBytes;
using testing::smfBytes;
using testing::TrackBuilder;
using Words = std::vector<std::uint32_t>;

constexpr std::uint32_t at = 0x00400000; // A clockstamp, of so many ticks.
constexpr std::uint32_t note = 0x20903C64;

Bytes imported(const Words& clip) {
    const MIDIData smf = MIDI2ClipImporter::importPlayableSMF(clipBytes(clip)).smfData;
    return {smf.view().begin(), smf.view().end()};
}

// The song of a conductor's track and others; ends them all.
Bytes song(std::vector<TrackBuilder> tracks) {
    for (TrackBuilder& track : tracks)
        track.endOfTrack();
    return smfBytes(1, 480, tracks);
}

TrackBuilder signature(std::uint32_t delta, Bytes payload) {
    return TrackBuilder().meta(delta, MetaType::timeSignature, std::move(payload));
}

// The conductor's track when the clip names neither tempo nor time signature.
TrackBuilder plainConductor() {
    return TrackBuilder().tempo(0, 500'000).meta(0, MetaType::timeSignature, {4, 2, 24, 8});
}

TrackBuilder channel1() {
    return TrackBuilder().name(0, "Ch 1");
}

TEST(MIDI2ClipImporter, turnsChannelVoiceIntoEventsFromTheStartOfTheClip) {
    const std::tuple<const char*, Words, TrackBuilder> rows[] = {
        {"MIDI 1.0, programs and pressures with one data byte, all cut to seven bits",
         {note, 0x20903C00, 0x20803C40, 0x20C0057F, 0x20D0057F, 0x20B08785},
         channel1().raw(
             {0, 0x90, 60, 100, 0, 0x90, 60, 0, 0, 0x80, 60, 64, 0, 0xC0, 5, 0, 0xD0, 5, 0, 0xB0, 7, 5})},
        {"MIDI 2.0, the softest note stays one, the program loses its bank, nothing is rounded",
         {0x40903C00, 0x01FF0000, 0x40903C00, 0xFFFF0000, 0x40803C00, 0x80FFFFFF, 0x40C00001, 0xA1007F7F,
          0x40B00700, 0x7FFFFFFF, 0x40A03C00, 0x02000000, 0x40D00000, 0xFE000000},
         channel1().raw({0,    0x90, 60, 1,    0, 0x90, 60, 127,  0,  0x80, 60, 64,   0,
                         0xC0, 0x21, 0,  0xB0, 7, 63,   0,  0xA0, 60, 1,    0,  0xD0, 127})},
        {"MIDI 2.0 pitch bend, both ends and what lies just below the middle and the top",
         {0x40E00000, 0, 0x40E00000, 0x80000000, 0x40E00000, 0xFFFFFFFE, 0x40E00000, 0xFFFFFFFF},
         channel1().pitchBend(0, 0, 0).pitchBend(0, 0, 8191).pitchBend(0, 0, 16382).pitchBend(0, 0, 16383)},
        {"clockstamps add up, up to the longest",
         {0xF0200000, 0, 0, 0, at | 5, note, at | 0xFFFFF, at | 1, note},
         channel1().noteOn(5, 0, 60, 100).noteOn(0x100000, 0, 60, 100)},
        {"everything before the start is at once",
         {at | 9, note, at | 9, note, 0xF0200000, 0, 0, 0, at | 5, note},
         channel1().noteOn(0, 0, 60, 100).noteOn(0, 0, 60, 100).noteOn(5, 0, 60, 100)},
        {"what follows the end is put at the beginning, behind what is there",
         {0xF0200000, 0, 0, 0, note, at | 5, note, 0xF0210000, 0, 0, 0, at | 5, 0x20903D64},
         channel1().noteOn(0, 0, 60, 100).noteOn(0, 0, 61, 100).noteOn(5, 0, 60, 100)},
        {"a second start begins at 0 again",
         {0xF0200000, 0, 0, 0, at | 5, note, 0xF0200000, 0, 0, 0, at | 2, 0x20903D64},
         channel1().noteOn(2, 0, 61, 100).noteOn(3, 0, 60, 100)},
        {"a start with other bits is none",
         {0xF0200000, 0, 0, 1, at | 5, note},
         channel1().noteOn(0, 0, 60, 100)},
    };
    for (const auto& [name, clip, track] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(imported(clip), song({plainConductor(), track}));
    }
}

TEST(MIDI2ClipImporter, putsTempoAndTimeSignaturesIntoTheConductorsTrack) {
    const std::tuple<const char*, Words, TrackBuilder> rows[] = {
        {"tempos within bounds, of any group",
         {0xD5100000, 60'000'099, 0, 0, 0xD0100000, 50, 0, 0, 0xD0100000, 0xFFFFFFFF, 0, 0},
         signature(0, {4, 2, 24, 8}).tempo(0, 600'000).tempo(0, 1).tempo(0, 0xFFFFFF)},
        {"both, later",
         {0xF0200000, 0, 0, 0, at | 9, 0xD0100001, 0x03020C00, 0, 0, 0xD0100000, 50'000'000, 0, 0},
         signature(9, {3, 2, 24, 12}).tempo(0, 500'000)},
        {"tempos for one channel, in pieces, of another bank",
         {0xD0000000, 50'000'000, 0, 0, 0xD0500000, 50'000'000, 0, 0, 0xD0100100, 50'000'000, 0, 0},
         plainConductor()},
        {"time signatures without beats, and of the longest and too long a denominator",
         {0xD0100001, 0x00020800, 0, 0, 0xD0100001, 0x04070800, 0, 0, 0xD0100001, 0x04080800, 0, 0},
         TrackBuilder().tempo(0, 500'000).meta(0, MetaType::timeSignature, {4, 7, 24, 8})},
    };
    for (const auto& [name, packets, conductor] : rows) {
        SCOPED_TRACE(name);
        Words clip{note};
        clip.insert(clip.end(), packets.begin(), packets.end());
        EXPECT_EQ(imported(clip), song({conductor, channel1().noteOn(0, 0, 60, 100)}));
    }
}

TEST(MIDI2ClipImporter, writesOneTrackForEachGroupAndChannel) {
    const auto track = [](const char* name, int channel) {
        return TrackBuilder().name(0, name).noteOn(0, channel, 60, 100);
    };
    EXPECT_EQ(imported({0x2F9F3C64, 0x21993C64, 0x20993C64, 0x21903C64, 0x20903C64}),
              song({plainConductor(), track("Ch 1", 0), track("Ch 10", 9), track("Group 2 Ch 1", 0),
                    track("Group 2 Ch 10", 9), track("Group 16 Ch 16", 15)}));
}

TEST(MIDI2ClipImporter, countsWhatItFoundAndTakesTheLastDivisionThatIsNotZero) {
    // clang-format off
    const auto summary = MIDI2ClipImporter::importPlayableSMF(clipBytes({
        at, 0x00300060, 0x003000C0, 0x00300000,
        0xF0200000, 0, 0, 0,
        0xD0100000, 50'000'000, 0, 0, // Tempo.
        0xD0100001, 0x03020800, 0, 0, // Time signature.
        0xD0100005, 0, 0, 0,          // Another Flex Data message.
        0x20903C64, 0x20913C64, 0x22993C64,
        0x20F83C64,                   // No channel message.
        0x40803C00, 0,                // MIDI 2.0.
        at | 9,
        0x00000000, 0x10F80000, 0x30000000, 0, 0x50000000, 0, 0, 0, 0x60000000, 0x80000000, 0,
        0xB0000000, 0, 0, 0xE0000000, 0, 0, 0, 0xF0000000, 0, 0, 0,
        0xF0210000, 0, 0, 0,
    })).summary;
    // clang-format on
    EXPECT_EQ(summary.debugDescription(),
              "packets 24; imported 6; MIDI1 UMP 4; MIDI2 down-converted 1/1; flex tempo 1; flex time 1; "
              "unsupported 11; tracks 3; tpq 192; groups G1[1,2] G3[10]");
    EXPECT_EQ(summary.deltaClockstampPackets, 2);
}

TEST(MIDI2ClipImporter, refusesWhatItCannotPlay) {
    Bytes halfAWord = clipBytes({note});
    halfAWord.insert(halfAWord.end(), {0, 0});
    Words lastTick(4096, at | 0xFFFFF);
    lastTick.insert(lastTick.end(), {at | 0xFFF, note});
    EXPECT_NO_THROW(static_cast<void>(imported(lastTick)));
    lastTick.insert(lastTick.end(), {at | 1, note});
    const std::tuple<const char*, Bytes, const char*> rows[] = {
        {"nothing", {}, "MIDI 2.0 clip data is missing the SMF2CLIP signature."},
        {"half a word", halfAWord, "MIDI 2.0 clip payload is not aligned to 32-bit UMP words."},
        {"a signature alone", clipBytes({}), "MIDI 2.0 clip did not contain playable channel voice events."},
        {"tempo alone", clipBytes({0xD0100000, 50'000'000, 0, 0}),
         "MIDI 2.0 clip did not contain playable channel voice events."},
        {"most of a long packet", clipBytes({note, 0xF0200000, 0, 0}),
         "UMP type 0xF expected 4 word(s), only 3 remain."},
        {"a registered controller", clipBytes({0x40200000, 0}),
         "MIDI 2.0 Channel Voice status 0x20 is not down-converted yet."},
        {"a per-note controller", clipBytes({0x400B0000, 0}),
         "MIDI 2.0 Channel Voice status 0x0B is not down-converted yet."},
        {"half a packet, far behind a registered controller", clipBytes({0x40200000, 0, 0x40903C00}),
         "UMP type 0x4 expected 2 word(s), only 1 remain."},
        {"past the last tick", clipBytes(lastTick), "MIDI 2.0 clip delta clockstamp timing overflowed."},
    };
    for (const auto& [name, clip, description] : rows) {
        SCOPED_TRACE(name);
        try {
            static_cast<void>(MIDI2ClipImporter::importPlayableSMF(clip));
            ADD_FAILURE() << "imported";
        } catch (const MIDI2ClipImportError& error) {
            EXPECT_EQ(error.description(), description);
        }
    }
}

} // namespace
} // namespace tambrel
