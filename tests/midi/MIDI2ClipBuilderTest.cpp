#include "MIDI2ClipBuilder.h"
#include "RandomSongs.h"
#include "SMFByteCodec.h"
#include "SMFTrackEventWalker.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace tambrel {
namespace {

using testing::clipBytes;
using testing::smfBytes;
using testing::timeCodeDivision;
using testing::TrackBuilder;

Bytes built(const Bytes& smf) {
    const MIDIData clip = MIDI2ClipBuilder::build(smf);
    return {clip.view().begin(), clip.view().end()};
}

TEST(MIDI2ClipBuilder, writesChannelMessagesBetweenClockstamps) {
    const auto note = TrackBuilder().noteOn(0, 0, 60, 100).noteOff(480, 0, 60);
    struct Row {
        const char* name;
        Bytes smf;
        std::vector<std::uint32_t> words; // After the four words of the beginning, before the two of the end.
        std::uint32_t ticksPerQuarter = 0x003001E0;
    };
    const Row rows[] = {
        {"a note", smfBytes(0, 480, {note}), {0x00400000, 0x20903C64, 0x004001E0, 0x20803C40}},
        {"nothing to say", smfBytes(1, 480, {TrackBuilder().tempo(0, 500'000).sysex(9, {0xF7})}), {}},
        {"division 0", smfBytes(1, 0, {}), {}, 0x00300001},
        {"largest division", smfBytes(1, 0x7FFF, {}), {}, 0x00307FFF},
        {"time code", smfBytes(1, timeCodeDivision(25, 40), {}), {}, 0x003001E0},
        {"any format",
         smfBytes(2, 96, {TrackBuilder().program(1, 2, 3)}),
         {0x00400001, 0x20C20300},
         0x00300060},
        {"running status",
         smfBytes(1, 480, {TrackBuilder().noteOn(0, 1, 2, 3).raw({1, 4, 5})}),
         {0x00400000, 0x20910203, 0x00400001, 0x20910405}},
        {"the longest clockstamp",
         smfBytes(1, 480, {TrackBuilder().pitchBend(0xFFFFF, 0, 0x2000)}),
         {0x004FFFFF, 0x20E00040}},
        {"a longer gap",
         smfBytes(1, 480, {TrackBuilder().channelPressure(0x100000, 0, 1)}),
         {0x004FFFFF, 0x00000000, 0x00400001, 0x20D00100}},
        {"a gap of three clockstamps",
         smfBytes(1, 480, {TrackBuilder().control(0x200000, 0, 1, 2)}),
         {0x004FFFFF, 0x00000000, 0x004FFFFF, 0x00000000, 0x00400002, 0x20B00102}},
        {"track order at one tick",
         smfBytes(1, 480,
                  {TrackBuilder().program(5, 0, 1).program(0, 0, 2), TrackBuilder().program(5, 1, 3)}),
         {0x00400005, 0x20C00100, 0x00400000, 0x20C00200, 0x00400000, 0x20C10300}},
        {"goes on past a defect",
         smfBytes(1, 480, {TrackBuilder().raw({0x01, 0xF8, 0x00}).program(1, 0, 1)}),
         {0x00400002, 0x20C00100}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<std::uint32_t> words{0x00400000, row.ticksPerQuarter, 0x00400000, 0xF0200000};
        words.insert(words.end(), row.words.begin(), row.words.end());
        words.insert(words.end(), {0x00400000, 0xF0210000});
        EXPECT_EQ(built(row.smf), clipBytes(words));
    }
}

// The clip by the plain method: a list of all packets, sorted, then written.
Bytes builtBySorting(const Bytes& smf) {
    struct TimedUMP {
        std::uint32_t tick;
        std::int64_t order;
        std::uint32_t word;
    };
    std::vector<TimedUMP> events;
    for (const auto& track : SMFTrackEventWalker::trackChunks(smf, SMFByteCodec::readU16(smf, 10))) {
        SMFTrackEventWalker::walk(
            smf, track, SMFMalformedEventPolicy::skip, [&](const SMFTimedTrackEvent& event) {
                if (event.status < 0xF0) {
                    const std::uint32_t data1 = smf[static_cast<std::size_t>(event.dataStart)];
                    const std::uint32_t data2 = event.dataEnd - event.dataStart > 1
                                                    ? smf[static_cast<std::size_t>(event.dataStart + 1)]
                                                    : 0;
                    events.push_back({event.tick,
                                      track.index * 1'000'000 + static_cast<std::int64_t>(events.size()),
                                      0x20000000 | std::uint32_t{event.status} << 16 | data1 << 8 | data2});
                }
                return SMFTrackWalkDecision::continue_;
            });
    }
    std::ranges::stable_sort(events, {},
                             [](const TimedUMP& event) { return std::pair(event.tick, event.order); });
    const std::uint32_t division = SMFByteCodec::readU16(smf, 12);
    std::vector<std::uint32_t> words{
        0x00400000, 0x00300000 | (division >= 0x8000 ? 480 : std::max(division, 1u)), 0x00400000, 0xF0200000};
    std::uint32_t last = 0;
    for (const TimedUMP& event : events) {
        std::uint32_t delta = event.tick - std::exchange(last, event.tick);
        for (; delta >= 0x100000; delta -= 0xFFFFF)
            words.insert(words.end(), {0x004FFFFF, 0});
        words.insert(words.end(), {0x00400000 | delta, event.word});
    }
    words.insert(words.end(), {0x00400000, 0xF0210000});
    return clipBytes(words);
}

TEST(MIDI2ClipBuilder, buildsTheClipThatSortingWouldBuild) {
    testing::RandomSongs songs(4);
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        const Bytes smf = songs.next();
        ASSERT_EQ(built(smf), builtBySorting(smf));
    }
}

TEST(MIDI2ClipBuilder, countsWordByWord) {
    Bytes partial = clipBytes({0x20903C64, 0x2FFFFFFF, 0x40000000, 0x20000000});
    partial.insert(partial.end(), {0x20, 0x90, 0x3C});
    Bytes foreign = clipBytes({0x20903C64});
    foreign[7] = 'Q';
    const auto note = smfBytes(0, 480, {TrackBuilder().noteOn(0, 0, 60, 100).noteOff(480, 0, 60)});
    struct Row {
        const char* name;
        Bytes clip;
        MIDI2ClipBuildSummary summary;
        bool hasChannelVoice;
    };
    const Row rows[] = {
        {"nothing", {}, {0, 0, 0}, false},
        {"a note", built(note), {48, 10, 2}, true},
        {"no channel voice", built(smfBytes(0, 480, {})), {32, 6, 0}, false},
        {"a signature alone", clipBytes({}), {8, 0, 0}, false},
        {"a partial word is not counted", partial, {27, 4, 3}, false},
        {"the shortest that says something", clipBytes({0, 0, 0, 0, 0x20903C64}), {28, 5, 1}, true},
        {"another signature", foreign, {12, 0, 0}, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(MIDI2ClipBuilder::summary(row.clip), row.summary);
        EXPECT_EQ(row.summary.hasChannelVoice(), row.hasChannelVoice);
    }
}

TEST(MIDI2ClipBuilder, givesUpWhenAsked) {
    const auto note = smfBytes(0, 480, {TrackBuilder().noteOn(0, 0, 60, 100).noteOff(480, 0, 60)});
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(static_cast<void>(MIDI2ClipBuilder::build(note, stop.get_token())), MIDI2ClipBuildCancelled);
}

} // namespace
} // namespace tambrel
