#include "MIDI2ClipImporter.h"
#include "MIDIFileInfo.h"
#include "MIDIStatus.h"
#include "SMFBuilder.h"

#include <gmock/gmock.h>

namespace tambrel {
namespace {

using testing::clipBytes;
using testing::smfBytes;
using testing::TrackBuilder;
using Words = std::vector<std::uint32_t>;

constexpr std::uint32_t clockstamp = 0x00400000;
const Words startOfClip{0xF0200000, 0, 0, 0};
const Words endOfClip{0xF0210000, 0, 0, 0};
const Words note{0x20903C64};

Words joined(const std::vector<Words>& packets) {
    Words all;
    for (const Words& packet : packets)
        all.insert(all.end(), packet.begin(), packet.end());
    return all;
}

Bytes imported(const std::vector<Words>& packets) {
    const MIDIData smf = MIDI2ClipImporter::importPlayableSMF(clipBytes(joined(packets))).smfData;
    return {smf.view().begin(), smf.view().end()};
}

// The conductor's track when the clip names neither tempo nor time signature.
TrackBuilder plainConductor() {
    return TrackBuilder().tempo(0, 500'000).meta(0, MetaType::timeSignature, {4, 2, 24, 8}).endOfTrack();
}

// The beginning of the only track that these clips play on.
TrackBuilder channel1() {
    return TrackBuilder().name(0, "Ch 1");
}

TEST(MIDI2ClipImporter, turnsChannelVoiceIntoMIDI1Messages) {
    struct Row {
        const char* name;
        Words packet;
        TrackBuilder message;
    };
    const auto midi2 = [](std::uint32_t status, std::uint32_t index, std::uint32_t data) {
        return Words{0x40000000 | status << 16 | index << 8, data};
    };
    const Row rows[] = {
        {"MIDI 1.0 note on", {0x20903C64}, channel1().noteOn(0, 0, 0x3C, 0x64)},
        {"MIDI 1.0 note on with velocity 0", {0x20903C00}, channel1().noteOn(0, 0, 0x3C, 0)},
        {"MIDI 1.0 note off", {0x20803C40}, channel1().noteOff(0, 0, 0x3C)},
        {"MIDI 1.0 program change has one data byte", {0x20C0057F}, channel1().program(0, 0, 5)},
        {"MIDI 1.0 channel pressure has one data byte", {0x20D0057F}, channel1().channelPressure(0, 0, 5)},
        {"MIDI 1.0 data is cut to seven bits", {0x20B08785}, channel1().control(0, 0, 7, 5)},
        {"MIDI 2.0 note off", midi2(0x80, 60, 0x80FFFFFF), channel1().noteOff(0, 0, 60)},
        {"the softest MIDI 2.0 note on stays one", midi2(0x90, 60, 0x01FF0000),
         channel1().noteOn(0, 0, 60, 1)},
        {"the loudest MIDI 2.0 note on", midi2(0x90, 60, 0xFFFF0000), channel1().noteOn(0, 0, 60, 127)},
        {"MIDI 2.0 values are not rounded", midi2(0xB0, 7, 0x7FFFFFFF), channel1().control(0, 0, 7, 63)},
        {"MIDI 2.0 polyphonic pressure", midi2(0xA0, 60, 0x02000000),
         channel1().polyphonicPressure(0, 0, 60, 1)},
        {"MIDI 2.0 program, its bank left out", {0x40C00001, 0xA1007F7F}, channel1().program(0, 0, 0x21)},
        {"MIDI 2.0 channel pressure", midi2(0xD0, 0, 0xFE000000), channel1().channelPressure(0, 0, 127)},
        {"pitch bend down", midi2(0xE0, 0, 0), channel1().pitchBend(0, 0, 0)},
        {"pitch bend in the middle", midi2(0xE0, 0, 0x80000000), channel1().pitchBend(0, 0, 8191)},
        {"pitch bend just below the top", midi2(0xE0, 0, 0xFFFFFFFE), channel1().pitchBend(0, 0, 16382)},
        {"pitch bend up", midi2(0xE0, 0, 0xFFFFFFFF), channel1().pitchBend(0, 0, 16383)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(imported({row.packet}),
                  smfBytes(1, 480, {plainConductor(), TrackBuilder(row.message).endOfTrack()}));
    }
}

TEST(MIDI2ClipImporter, timesEventsFromTheStartOfTheClip) {
    struct Row {
        const char* name;
        std::vector<Words> packets;
        TrackBuilder events;
    };
    const auto at = [](std::uint32_t ticks) { return Words{clockstamp | ticks}; };
    const Row rows[] = {
        {"clockstamps add up",
         {startOfClip, at(5), note, at(7), at(1), note},
         channel1().noteOn(5, 0, 60, 100).noteOn(8, 0, 60, 100)},
        {"the longest clockstamp", {startOfClip, at(0xFFFFF), note}, channel1().noteOn(0xFFFFF, 0, 60, 100)},
        {"time before the start does not count",
         {at(9), startOfClip, at(5), note},
         channel1().noteOn(5, 0, 60, 100)},
        {"everything before the start is at once",
         {at(9), note, at(9), note},
         channel1().noteOn(0, 0, 60, 100).noteOn(0, 0, 60, 100)},
        {"what follows the end is put at the beginning, behind what is there",
         {startOfClip, note, at(5), note, endOfClip, at(5), {0x20903D64}},
         channel1().noteOn(0, 0, 60, 100).noteOn(0, 0, 61, 100).noteOn(5, 0, 60, 100)},
        {"a second start begins at 0 again",
         {startOfClip, at(5), note, startOfClip, at(2), {0x20903D64}},
         channel1().noteOn(2, 0, 61, 100).noteOn(3, 0, 60, 100)},
        {"packets at one tick keep their order",
         {{0x20903D64}, {0x20903C64}, {0x20B0407F}},
         channel1().noteOn(0, 0, 61, 100).noteOn(0, 0, 60, 100).control(0, 0, 64, 127)},
        {"a start with other bits is none",
         {{0xF0200000, 0, 0, 1}, at(5), note},
         channel1().noteOn(0, 0, 60, 100)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(imported(row.packets),
                  smfBytes(1, 480, {plainConductor(), TrackBuilder(row.events).endOfTrack()}));
    }
}

TEST(MIDI2ClipImporter, putsTempoAndTimeSignaturesIntoTheConductorsTrack) {
    struct Row {
        const char* name;
        std::vector<Words> packets;
        TrackBuilder conductor;
    };
    const auto tempo = [](std::uint32_t value) { return Words{0xD0100000, value, 0, 0}; };
    const auto signature = [](std::uint32_t value) { return Words{0xD0100001, value, 0, 0}; };
    const Bytes common{4, 2, 24, 8};
    const auto onlyTempo = [&](std::uint32_t microseconds) {
        return TrackBuilder().meta(0, MetaType::timeSignature, common).tempo(0, microseconds);
    };
    const auto neither = TrackBuilder().tempo(0, 500'000).meta(0, MetaType::timeSignature, common);
    const Row rows[] = {
        {"tempo", {tempo(60'000'099)}, onlyTempo(600'000)},
        {"a tempo too fast", {tempo(50)}, onlyTempo(1)},
        {"a tempo of zero", {tempo(0)}, onlyTempo(1)},
        {"a tempo too slow", {tempo(0xFFFFFFFF)}, onlyTempo(0xFFFFFF)},
        {"time signature",
         {signature(0x06030C00)},
         TrackBuilder().tempo(0, 500'000).meta(0, MetaType::timeSignature, {6, 3, 24, 12})},
        {"both, later",
         {startOfClip, {clockstamp | 9}, signature(0x03020800), tempo(50'000'000)},
         TrackBuilder().meta(9, MetaType::timeSignature, {3, 2, 24, 8}).tempo(0, 500'000)},
        {"time signature without beats", {signature(0x00020800)}, neither},
        {"denominator exponent 8", {signature(0x04080800)}, neither},
        {"denominator exponent 7",
         {signature(0x04070800)},
         TrackBuilder().tempo(0, 500'000).meta(0, MetaType::timeSignature, {4, 7, 24, 8})},
        {"a tempo for one channel", {{0xD0000000, 50'000'000, 0, 0}}, neither},
        {"a tempo in pieces", {{0xD0500000, 50'000'000, 0, 0}}, neither},
        {"another bank", {{0xD0100100, 50'000'000, 0, 0}}, neither},
        {"the tempo of any group", {{0xD5100000, 50'000'000, 0, 0}}, onlyTempo(500'000)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<Words> packets = row.packets;
        packets.insert(packets.begin(), note);
        const auto track = channel1().noteOn(0, 0, 60, 100).endOfTrack();
        EXPECT_EQ(imported(packets), smfBytes(1, 480, {TrackBuilder(row.conductor).endOfTrack(), track}));
    }
}

TEST(MIDI2ClipImporter, writesOneTrackForEachGroupAndChannel) {
    const auto track = [](const char* name, int channel) {
        return TrackBuilder().name(0, name).noteOn(0, channel, 60, 100).endOfTrack();
    };
    EXPECT_EQ(imported({{0x2F9F3C64}, {0x21993C64}, {0x20993C64}, {0x21903C64}, {0x20903C64}}),
              smfBytes(1, 480,
                       {plainConductor(), track("Ch 1", 0), track("Ch 10", 9), track("Group 2 Ch 1", 0),
                        track("Group 2 Ch 10", 9), track("Group 16 Ch 16", 15)}));
}

TEST(MIDI2ClipImporter, takesTheLastDivisionThatIsNotZero) {
    EXPECT_EQ(MIDI2ClipImporter::importPlayableSMF(
                  clipBytes(joined({{0x00300060}, {0x003003C0}, {0x00300000}, note})))
                  .summary.ticksPerQuarterNote,
              960);
}

TEST(MIDI2ClipImporter, countsWhatItFound) {
    const auto result = MIDI2ClipImporter::importPlayableSMF(clipBytes(joined({
        {clockstamp},
        {0x003000C0},
        startOfClip,
        {0xD0100000, 50'000'000, 0, 0}, // Tempo.
        {0xD0100001, 0x03020800, 0, 0}, // Time signature.
        {0xD0100005, 0, 0, 0},          // Another Flex Data message.
        {0x20903C64},
        {0x20913C64},
        {0x22993C64},
        {0x20F83C64},    // The last is no channel message.
        {0x40803C00, 0}, // MIDI 2.0.
        {clockstamp | 9},
        {0x00000000},
        {0x10F80000},
        {0x30000000, 0},
        {0x50000000, 0, 0, 0},
        {0x60000000},
        {0x80000000, 0},
        {0xB0000000, 0, 0},
        {0xE0000000, 0, 0, 0},
        {0xF0000000, 0, 0, 0},
        endOfClip,
    })));
    MIDI2ClipImportSummary expected;
    expected.totalPackets = 22;
    expected.importedPackets = 6;
    expected.unsupportedPackets = 11;
    expected.deltaClockstampPackets = 2;
    expected.midi1ChannelVoicePackets = 4;
    expected.midi2ChannelVoicePackets = 1;
    expected.midi2ChannelVoiceDownConverted = 1;
    expected.flexTempoPackets = 1;
    expected.flexTimeSignaturePackets = 1;
    expected.ticksPerQuarterNote = 192;
    expected.trackCount = 3;
    expected.groups = {0, 2};
    expected.channelsByGroup = {{0, {0, 1}}, {2, {9}}};
    EXPECT_EQ(result.summary, expected) << result.summary.debugDescription();
    EXPECT_EQ(result.summary.debugDescription(),
              "packets 22; imported 6; MIDI1 UMP 4; MIDI2 down-converted 1/1; flex tempo 1; flex time 1; "
              "unsupported 11; tracks 3; tpq 192; groups G1[1,2] G3[10]");
    EXPECT_EQ(MIDIFileInfo::parse(result.smfData).trackCount, 4);
}

TEST(MIDI2ClipImporter, refusesWhatItCannotPlay) {
    using enum MIDI2ClipImportError::Case;
    Bytes unaligned = clipBytes(note);
    unaligned.insert(unaligned.end(), {0, 0});
    Words overflow(4097, clockstamp | 0xFFFFF);
    overflow.insert(overflow.begin(), note.begin(), note.end());
    Words untilTheLastTick(4096, clockstamp | 0xFFFFF);
    untilTheLastTick.push_back(clockstamp | 0xFFF);
    struct Row {
        const char* name;
        Bytes clip;
        MIDI2ClipImportError::Case errorCase;
        const char* description;
    };
    const Row rows[] = {
        {"nothing", {}, invalidSignature, "MIDI 2.0 clip data is missing the SMF2CLIP signature."},
        {"a Standard MIDI File", smfBytes(0, 480, {}), invalidSignature,
         "MIDI 2.0 clip data is missing the SMF2CLIP signature."},
        {"half a word", unaligned, unalignedPayload,
         "MIDI 2.0 clip payload is not aligned to 32-bit UMP words."},
        {"a signature alone", clipBytes({}), noPlayableEvents,
         "MIDI 2.0 clip did not contain playable channel voice events."},
        {"tempo alone", clipBytes({0xD0100000, 50'000'000, 0, 0}), noPlayableEvents,
         "MIDI 2.0 clip did not contain playable channel voice events."},
        {"half a packet", clipBytes({0x40903C00}), truncatedPacket,
         "UMP type 0x4 expected 2 word(s), only 1 remain."},
        {"most of a long packet", clipBytes({0x20903C64, 0xF0200000, 0, 0}), truncatedPacket,
         "UMP type 0xF expected 4 word(s), only 3 remain."},
        {"a registered controller", clipBytes({0x40200000, 0}), unsupportedMIDI2ChannelVoiceStatus,
         "MIDI 2.0 Channel Voice status 0x20 is not down-converted yet."},
        {"per-note management", clipBytes({0x40FA0000, 0}), unsupportedMIDI2ChannelVoiceStatus,
         "MIDI 2.0 Channel Voice status 0xFA is not down-converted yet."},
        {"a per-note controller", clipBytes({0x400B0000, 0}), unsupportedMIDI2ChannelVoiceStatus,
         "MIDI 2.0 Channel Voice status 0x0B is not down-converted yet."},
        {"half a packet, far behind a registered controller", clipBytes({0x40200000, 0, 0x40903C00}),
         truncatedPacket, "UMP type 0x4 expected 2 word(s), only 1 remain."},
        {"past the last tick", clipBytes(overflow), tickOverflow,
         "MIDI 2.0 clip delta clockstamp timing overflowed."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        try {
            static_cast<void>(MIDI2ClipImporter::importPlayableSMF(row.clip));
            ADD_FAILURE() << "imported";
        } catch (const MIDI2ClipImportError& error) {
            EXPECT_EQ(error.errorCase(), row.errorCase);
            EXPECT_EQ(error.description(), row.description);
            EXPECT_STREQ(error.what(), row.description);
        }
    }
    Words lastTick = untilTheLastTick;
    lastTick.insert(lastTick.end(), note.begin(), note.end());
    EXPECT_NO_THROW(static_cast<void>(MIDI2ClipImporter::importPlayableSMF(clipBytes(lastTick))));
}

} // namespace
} // namespace tambrel
