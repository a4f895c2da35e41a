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

TrackBuilder begun() {
    return TrackBuilder().noteOn(0, 0, 1, 2);
}

TEST(SMFTrackEventWalker, deliversCompleteEventsAndHandlesDefectsByPolicy) {
    struct Row {
        const char* name;
        TrackBuilder track;
        std::string underStop;
        std::string furtherUnderSkip = "";
    };
    const Row rows[] = {
        {"nothing", {}, ""},
        {"one or two data bytes by status",
         TrackBuilder()
             .noteOff(1, 1, 2)
             .polyphonicPressure(1, 1, 2, 3)
             .control(1, 1, 7, 8)
             .program(1, 1, 9)
             .channelPressure(1, 1, 10)
             .pitchBend(1, 1, 0x2000),
         "1 81: 2 40, 2 a1: 2 3, 3 b1: 7 8, 4 c1: 9, 5 d1: a, 6 e1: 0 40"},
        {"running status", begun().raw({0, 3, 4}), "0 90: 1 2, 0 90: 3 4"},
        {"running status with one data byte", TrackBuilder().program(0, 0, 5).raw({1, 6}),
         "0 c0: 5, 1 c0: 6"},
        {"goes on after End of Track", TrackBuilder().endOfTrack().noteOn(0, 0, 1, 2), "0 ff/2f:, 0 90: 1 2"},
        {"both system-exclusive forms, an empty one too",
         TrackBuilder().sysex(0, {1, 0xF7}).raw({1, 0xF7, 2, 0x7E, 0x7F}).sysex(0, {}),
         "0 f0: 1 f7, 1 f7: 7e 7f, 1 f0:"},
        {"a length of two bytes", TrackBuilder().raw({0, 0xFF, 1, 0x80, 1, 0x41}), "0 ff/1: 41"},

        {"data without running status", TrackBuilder().raw({0, 0x3C}).noteOn(5, 0, 1, 2), "", "5 90: 1 2"},
        {"system-exclusive cancels running status",
         TrackBuilder().program(0, 0, 1).sysex(0, {1}).raw({0, 0x3C}).program(1, 0, 3), "0 c0: 1, 0 f0: 1",
         ", 1 c0: 3"},
        {"a meta event cancels running status",
         TrackBuilder().program(0, 0, 1).name(0, "A").raw({2, 0x3C}).program(1, 0, 3), "0 c0: 1, 0 ff/3: 41",
         ", 3 c0: 3"},
        {"a real-time status takes one byte with it and cancels running status",
         begun().raw({0, 0xF8, 0x77, 0, 0x3C}).noteOn(0, 0, 3, 4), "0 90: 1 2", ", 0 90: 3 4"},
        {"a system common status is treated alike", TrackBuilder().raw({1, 0xF1, 0x77}).noteOn(2, 0, 3, 4),
         "", "3 90: 3 4"},
        {"a real-time status at the very end", begun().raw({0, 0xFE}), "0 90: 1 2"},
        {"a note-on cut off", begun().raw({0, 0x91, 0x3C}), "0 90: 1 2"},
        {"a running note-on cut off", begun().raw({0, 0x3C}), "0 90: 1 2"},
        {"a status cut off", begun().raw({0, 0x90}), "0 90: 1 2"},

        {"a delta time of five bytes", begun().raw({0x80, 0x80, 0x80, 0x80, 0, 0x90, 1, 2}), "0 90: 1 2"},
        {"a delta time cut off", begun().raw({0x81}), "0 90: 1 2"},
        {"nothing after a delta time", begun().raw({0}), "0 90: 1 2"},
        {"a meta event without its type", begun().raw({0, 0xFF}), "0 90: 1 2"},
        {"a meta event without its length", begun().raw({0, 0xFF, 1}), "0 90: 1 2"},
        {"a meta length one too long", begun().raw({0, 0xFF, 1, 2, 0x41}), "0 90: 1 2"},
        {"a meta length of five bytes", begun().raw({0, 0xFF, 1, 0x80, 0x80, 0x80, 0x80, 0}), "0 90: 1 2"},
        {"the longest system-exclusive length", begun().raw({0, 0xF7, 0xFF, 0xFF, 0xFF, 0x7F, 1}),
         "0 90: 1 2"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        // The track lies inside a larger buffer whose neighbours would complete a cut event.
        const Bytes& track = row.track.bytes();
        Bytes data(7, 0x00);
        data.insert(data.end(), track.begin(), track.end());
        const auto end = static_cast<std::int64_t>(data.size());
        data.insert(data.end(), 5, 0x40);
        EXPECT_EQ(walked(data, 7, end, stop), row.underStop);
        EXPECT_EQ(walked(data, 7, end, skip), row.underStop + row.furtherUnderSkip);
    }
}

TEST(SMFTrackEventReader, endsBeforeATickThatPasses32BitsAndStaysThere) {
    TrackBuilder track;
    for (int i = 0; i < 16; ++i)
        track.program(0x0FFFFFFF, 0, 1);
    track.program(15, 0, 2).program(1, 0, 3);
    SMFTrackEventReader reader(track.bytes(), 0, static_cast<std::int64_t>(track.bytes().size()), skip);
    SMFTimedTrackEvent event;
    for (int i = 0; i < 17; ++i)
        ASSERT_TRUE(reader.next(event));
    EXPECT_EQ(event.tick, 0xFFFFFFFFu);
    EXPECT_FALSE(reader.next(event));
    EXPECT_FALSE(reader.next(event));
}

} // namespace
} // namespace tambrel
