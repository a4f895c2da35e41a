#include "MIDI2ClipBuilder.h"
#include "SMFBuilder.h"

#include <gmock/gmock.h>

#include <tuple>

namespace tambrel {
namespace {

using testing::clipBytes;
using testing::smfBytes;
using testing::timeCodeDivision;
using testing::TrackBuilder;

TrackBuilder note() {
    return TrackBuilder().noteOn(0, 0, 60, 100);
}

Bytes built(const Bytes& smf) {
    const MIDIData clip = MIDI2ClipBuilder::build(smf);
    return {clip.view().begin(), clip.view().end()};
}

// A clip of what stands between its beginning and its end.
Bytes clip(std::uint32_t ticksPerQuarter, const std::vector<std::uint32_t>& packets) {
    std::vector<std::uint32_t> words{0x00400000, 0x00300000 | ticksPerQuarter, 0x00400000, 0xF0200000};
    words.insert(words.end(), packets.begin(), packets.end());
    words.insert(words.end(), {0x00400000, 0xF0210000});
    return clipBytes(words);
}

TEST(MIDI2ClipBuilder, writesChannelMessagesBetweenClockstamps) {
    const std::tuple<const char*, TrackBuilder, std::vector<std::uint32_t>> rows[] = {
        {"nothing to say", TrackBuilder().tempo(0, 500'000).sysex(9, {0xF7}), {}},
        {"running status", note().raw({1, 4, 5}), {0x00400000, 0x20903C64, 0x00400001, 0x20900405}},
        {"one data byte", TrackBuilder().program(1, 2, 3), {0x00400001, 0x20C20300}},
        {"the longest clockstamp", TrackBuilder().pitchBend(0xFFFFF, 0, 0x2000), {0x004FFFFF, 0x20E00040}},
        {"a gap of three clockstamps",
         TrackBuilder().control(0x200000, 0, 1, 2),
         {0x004FFFFF, 0, 0x004FFFFF, 0, 0x00400002, 0x20B00102}},
        {"goes on past a defect",
         TrackBuilder().raw({1, 0xF8, 0}).program(1, 0, 1),
         {0x00400002, 0x20C00100}},
    };
    for (const auto& [name, track, packets] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(built(smfBytes(1, 480, {track})), clip(480, packets));
    }
    const auto two = {TrackBuilder().program(5, 0, 1).program(0, 0, 2), TrackBuilder().program(5, 1, 3)};
    EXPECT_EQ(built(smfBytes(2, 96, two)),
              clip(96, {0x00400005, 0x20C00100, 0x00400000, 0x20C00200, 0x00400000, 0x20C10300}));
}

TEST(MIDI2ClipBuilder, writesTheDivisionButForTimeCode) {
    for (const auto& [division, ticksPerQuarter] :
         {std::pair(0, 1), {0x7FFF, 0x7FFF}, {timeCodeDivision(25, 40), 480}})
        EXPECT_EQ(built(smfBytes(1, division, {})), clip(static_cast<std::uint32_t>(ticksPerQuarter), {}));
}

TEST(MIDI2ClipBuilder, countsWordByWord) {
    Bytes partial = clipBytes({0x20903C64, 0x2FFFFFFF, 0x30000000, 0x20000000});
    partial.insert(partial.end(), {0x20, 0x90, 0x3C});
    Bytes foreign = clipBytes({0x20903C64});
    foreign[7] = 'Q';
    using Summary = MIDI2ClipBuildSummary;
    EXPECT_EQ(MIDI2ClipBuilder::summary({}), (Summary{0, 0, 0}));
    EXPECT_EQ(MIDI2ClipBuilder::summary(clipBytes({})), (Summary{8, 0, 0}));
    EXPECT_EQ(MIDI2ClipBuilder::summary(partial), (Summary{27, 4, 3})) << "three bytes are no word";
    EXPECT_EQ(MIDI2ClipBuilder::summary(foreign), (Summary{12, 0, 0}));
}

TEST(MIDI2ClipBuilder, givesUpWhenAsked) {
    std::stop_source stop;
    stop.request_stop();
    const auto song = smfBytes(0, 480, {note()});
    EXPECT_THROW(static_cast<void>(MIDI2ClipBuilder::build(song, stop.get_token())), MIDI2ClipBuildCancelled);
}

} // namespace
} // namespace tambrel
