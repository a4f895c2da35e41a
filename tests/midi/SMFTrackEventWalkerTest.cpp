#include "SMFTrackEventWalker.h"
#include "SMFBuilder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tambrel {
namespace {

using testing::TrackBuilder;
using enum SMFMalformedEventPolicy;

// The delivered events as text: tick, status, meta type if any, and the data bytes, in hexadecimal.
std::string walked(ByteView data, std::int64_t start, std::int64_t end, SMFMalformedEventPolicy policy) {
    std::ostringstream text;
    text << std::hex;
    SMFTrackEventWalker::walkTrack(data, start, end, policy, [&](const SMFTimedTrackEvent& event) {
        text << (text.tellp() > 0 ? ", " : "") << event.tick << ' ' << int{event.status};
        if (event.status == MIDIStatus::meta)
            text << '/' << int{event.metaType};
        text << ':';
        for (std::int64_t at = event.dataStart; at < event.dataEnd; ++at)
            text << ' ' << int{data[static_cast<std::size_t>(at)]};
        return SMFTrackWalkDecision::continue_;
    });
    return text.str();
}

struct WalkRow {
    const char* name;
    TrackBuilder track;
    std::string underStop;
    std::string underSkip;
};

const WalkRow rows[] = {
    {"nothing", {}, "", ""},
    {"running status", TrackBuilder().noteOn(0, 0, 0x3C, 0x64).raw({0x00, 0x3E, 0x64}),
     "0 90: 3c 64, 0 90: 3e 64", "0 90: 3c 64, 0 90: 3e 64"},
    {"one or two data bytes by status",
     TrackBuilder()
         .noteOff(1, 1, 2)
         .polyphonicPressure(1, 1, 2, 3)
         .control(1, 1, 7, 8)
         .program(1, 1, 9)
         .channelPressure(1, 1, 10)
         .pitchBend(1, 1, 0x2000),
     "1 81: 2 40, 2 a1: 2 3, 3 b1: 7 8, 4 c1: 9, 5 d1: a, 6 e1: 0 40",
     "1 81: 2 40, 2 a1: 2 3, 3 b1: 7 8, 4 c1: 9, 5 d1: a, 6 e1: 0 40"},
    {"running status with one data byte", TrackBuilder().program(0, 0, 5).raw({0x01, 0x06}),
     "0 c0: 5, 1 c0: 6", "0 c0: 5, 1 c0: 6"},
    {"goes on after End of Track", TrackBuilder().endOfTrack().noteOn(0, 0, 0x3C, 0x64),
     "0 ff/2f:, 0 90: 3c 64", "0 ff/2f:, 0 90: 3c 64"},
    {"both system-exclusive forms, an empty one too",
     TrackBuilder().sysex(0, {0x01, 0xF7}).raw({0x01, 0xF7, 0x02, 0x7E, 0x7F}).sysex(0, {}),
     "0 f0: 1 f7, 1 f7: 7e 7f, 1 f0:", "0 f0: 1 f7, 1 f7: 7e 7f, 1 f0:"},
    {"a length of two bytes", TrackBuilder().raw({0, 0xFF, 1, 0x80, 0x01, 0x41}), "0 ff/1: 41", "0 ff/1: 41"},
    {"long delta times", TrackBuilder().noteOn(0x0FFFFFFF, 0, 1, 2).noteOn(0x0FFFFFFF, 0, 1, 2),
     "fffffff 90: 1 2, 1ffffffe 90: 1 2", "fffffff 90: 1 2, 1ffffffe 90: 1 2"},

    {"data without running status at the beginning", TrackBuilder().raw({0x00, 0x3C}).noteOn(5, 0, 1, 2), "",
     "5 90: 1 2"},
    {"system-exclusive cancels running status",
     TrackBuilder().noteOn(0, 0, 1, 2).sysex(0, {0x01, 0x02, 0xF7}).raw({0x00, 0x3C}).noteOn(1, 0, 3, 4),
     "0 90: 1 2, 0 f0: 1 2 f7", "0 90: 1 2, 0 f0: 1 2 f7, 1 90: 3 4"},
    {"a meta event cancels running status",
     TrackBuilder().noteOn(0, 0, 1, 2).name(0, "A").raw({0x02, 0x3C}).noteOn(1, 0, 3, 4),
     "0 90: 1 2, 0 ff/3: 41", "0 90: 1 2, 0 ff/3: 41, 3 90: 3 4"},
    {"a real-time status takes one byte with it and cancels running status",
     TrackBuilder().noteOn(0, 0, 1, 2).raw({0x00, 0xF8, 0x77, 0x00, 0x3C}).noteOn(0, 0, 3, 4), "0 90: 1 2",
     "0 90: 1 2, 0 90: 3 4"},
    {"a system common status is treated alike", TrackBuilder().raw({0x01, 0xF1, 0x77}).noteOn(2, 0, 3, 4), "",
     "3 90: 3 4"},
    {"a real-time status at the very end", TrackBuilder().raw({0x00, 0xFE}), "", ""},
    {"a note-on cut off", TrackBuilder().noteOn(0, 0, 1, 2).raw({0x00, 0x91, 0x3C}), "0 90: 1 2",
     "0 90: 1 2"},
    {"a running note-on cut off", TrackBuilder().noteOn(0, 0, 1, 2).raw({0x00, 0x3C}), "0 90: 1 2",
     "0 90: 1 2"},
    {"a status cut off", TrackBuilder().raw({0x00, 0x90}), "", ""},
    {"a program change at the very end", TrackBuilder().raw({0x00, 0xC0, 0x05}), "0 c0: 5", "0 c0: 5"},

    {"a delta time of five bytes",
     TrackBuilder().raw({0x80, 0x80, 0x80, 0x80, 0x00, 0x90, 1, 2}).noteOn(0, 0, 1, 2), "", ""},
    {"a delta time cut off", TrackBuilder().noteOn(0, 0, 1, 2).raw({0x81}), "0 90: 1 2", "0 90: 1 2"},
    {"nothing after a delta time", TrackBuilder().noteOn(0, 0, 1, 2).raw({0x00}), "0 90: 1 2", "0 90: 1 2"},
    {"a meta event without its type", TrackBuilder().raw({0x00, 0xFF}), "", ""},
    {"a meta event without its length", TrackBuilder().raw({0x00, 0xFF, 0x01}), "", ""},
    {"a meta length one too long", TrackBuilder().raw({0x00, 0xFF, 0x01, 0x02, 0x41}), "", ""},
    {"a meta length of five bytes", TrackBuilder().raw({0, 0xFF, 1, 0x80, 0x80, 0x80, 0x80, 0}), "", ""},
    {"a system-exclusive length one too long", TrackBuilder().raw({0x00, 0xF0, 0x02, 0xF7}), "", ""},
    {"the longest system-exclusive length", TrackBuilder().raw({0, 0xF7, 0xFF, 0xFF, 0xFF, 0x7F, 1}), "", ""},
};

TEST(SMFTrackEventWalker, deliversCompleteEventsAndHandlesDefectsByPolicy) {
    for (const WalkRow& row : rows) {
        SCOPED_TRACE(row.name);
        // The track lies inside a larger buffer whose neighbours would complete a cut event.
        const Bytes& track = row.track.bytes();
        Bytes data(7, 0x00);
        data.insert(data.end(), track.begin(), track.end());
        const auto end = static_cast<std::int64_t>(data.size());
        data.insert(data.end(), {0x40, 0x40, 0x40, 0x40, 0x40});
        EXPECT_EQ(walked(data, 7, end, stop), row.underStop);
        EXPECT_EQ(walked(data, 7, end, skip), row.underSkip);
    }
}

TEST(SMFTrackEventWalker, endsBeforeATickThatPasses32Bits) {
    TrackBuilder upToTheLimit;
    for (int i = 0; i < 16; ++i)
        upToTheLimit.program(0x0FFFFFFF, 0, 1);
    upToTheLimit.program(15, 0, 2);
    TrackBuilder beyond = upToTheLimit;
    beyond.program(1, 0, 3);
    for (const auto policy : {stop, skip}) {
        std::vector<std::uint32_t> ticks;
        SMFTrackEventWalker::walkTrack(beyond.bytes(), 0, static_cast<std::int64_t>(beyond.bytes().size()),
                                       policy, [&](const SMFTimedTrackEvent& event) {
                                           ticks.push_back(event.tick);
                                           return SMFTrackWalkDecision::continue_;
                                       });
        ASSERT_EQ(ticks.size(), 17u);
        EXPECT_EQ(ticks.back(), 0xFFFFFFFFu);
    }
}

TEST(SMFTrackEventWalker, endsWhenTheCallbackSaysSo) {
    const Bytes file =
        testing::smfBytes(1, 480, {TrackBuilder().noteOn(0, 0, 1).noteOn(0, 0, 2).noteOn(0, 0, 3)});
    int delivered = 0;
    SMFTrackEventWalker::walk(file, SMFTrackEventWalker::trackChunks(file, 1).at(0), skip, [&](const auto&) {
        return ++delivered == 2 ? SMFTrackWalkDecision::stop : SMFTrackWalkDecision::continue_;
    });
    EXPECT_EQ(delivered, 2);
}

TEST(SMFTrackEventReader, staysAtTheEnd) {
    const Bytes track = TrackBuilder().noteOn(0, 0, 1).raw({0x00, 0xFF, 0x01, 0x7F}).noteOn(0, 0, 2).bytes();
    SMFTrackEventReader reader(track, 0, static_cast<std::int64_t>(track.size()), skip);
    SMFTimedTrackEvent event;
    EXPECT_TRUE(reader.next(event));
    EXPECT_FALSE(reader.next(event));
    EXPECT_FALSE(reader.next(event));
}

} // namespace
} // namespace tambrel
