#include "SynthTesting.h"

#include <gmock/gmock.h>

namespace tambrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace testing;

constexpr int quarter = 480;

TrackBuilder silence(std::uint32_t ticks) {
    return TrackBuilder().endOfTrack(ticks);
}

TrackBuilder tempo(std::uint32_t ticks, std::uint32_t microseconds) {
    return TrackBuilder().tempo(ticks, microseconds);
}

TEST(TimelineTest, LastsUntilItsLastEventOfAnyKind) {
    struct Row {
        const char* name;
        int division;
        std::vector<TrackBuilder> tracks;
        double seconds;
    };
    const Row rows[] = {
        {"default tempo", quarter, {silence(960)}, 1},
        {"of two tempos at a tick the last",
         quarter,
         {tempo(480, 250'000).tempo(0, 1'000'000).endOfTrack(480)},
         1.5},
        {"of two tracks' tempos at a tick the later track's",
         quarter,
         {tempo(480, 1'000'000), tempo(480, 250'000).endOfTrack(480)},
         0.75},
        {"a tempo in a later track", quarter, {silence(960), tempo(480, 1'000'000)}, 1.5},
        {"shortest quarter", quarter, {tempo(0, 1).endOfTrack(480)}, 1e-6},
        {"longest quarter", quarter, {tempo(0, 16'777'215).endOfTrack(480)}, 16.777215},
        {"tempo 0", quarter, {tempo(0, 1'000'000).tempo(0, 0).endOfTrack(480)}, 1},
        {"tempo of two bytes", quarter, {TrackBuilder().meta(0, 0x51, {7, 0xA1}).endOfTrack(480)}, 0.5},
        {"division 0 is 1", 0, {silence(3)}, 1.5},
        {"24 frames", timeCodeDivision(24, 40), {tempo(0, 1).endOfTrack(9600)}, 10},
        {"25 frames", timeCodeDivision(25, 40), {silence(10'000)}, 10},
        {"29 frames", timeCodeDivision(29, 40), {silence(12'000)}, 10.01},
        {"30 frames", timeCodeDivision(30, 40), {silence(12'000)}, 10},
        {"0 ticks a frame are 1", timeCodeDivision(25, 0), {silence(50)}, 2},
        {"no tracks", quarter, {}, 0},
        {"up to a defect", quarter, {TrackBuilder().noteOn(480, 0, 60).raw({0, 0xF1}).endOfTrack(480)}, 0.5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto song = Timeline::build(smfBytes(1, row.division, row.tracks));
        EXPECT_NEAR(song->duration(), row.seconds, 1e-12 * std::max(1.0, row.seconds));
    }
}

TEST(TimelineTest, IsEmptyForDataThatIsNoStandardMIDIFile) {
    for (const Bytes& bytes : {Bytes{}, Bytes{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0}}) {
        EXPECT_THAT(Timeline::build(bytes)->events(), IsEmpty());
    }
}

TEST(TimelineTest, OrdersEventsByTickThenTrackThenPlace) {
    const auto song = timeline({TrackBuilder().noteOn(5, 0, 1).noteOn(5, 0, 2),
                                TrackBuilder().noteOn(0, 1, 3).noteOn(10, 1, 4),
                                TrackBuilder().noteOn(5, 2, 5).control(0, 2, 6, 7).noteOn(5, 2, 7)});
    std::vector<int> order;
    for (const TimelineEvent& event : song->events())
        order.push_back(event.message.data1);
    EXPECT_THAT(order, ElementsAre(3, 1, 5, 6, 2, 4, 7));
    const std::size_t firstAt[] = {0, 1, 1, 1, 1, 1, 4, 4, 4, 4, 4, 7, 7};
    for (std::uint32_t tick = 0; tick < std::size(firstAt); ++tick)
        EXPECT_EQ(song->firstEventAt(tick), firstAt[tick]) << "tick " << tick;
}

TEST(TimelineTest, LeavesOutWhatIsNoMessageAndKeepsDataBytesInRange) {
    const auto song = timeline({TrackBuilder()
                                    .name(0, "Piano")
                                    .raw({0, 0x90, 0xBC, 0xE4, 0, 0xC0, 0xFF, 0, 0x80, 60, 0xFF})
                                    .sysex(0, {0x7E, 0x7F, 0x06, 0x01, 0xF7})
                                    .sysex(0, {0x41, 0x10, 0x42, 0x12, 0x40, 0x11, 0x15, 0xFF})});
    const MIDIMessage messages[] = {{0x90, 60, 100, 0},
                                    {0xC0, 127, 0, 0},
                                    {0x80, 60, 127, 0},
                                    MIDIMessage::system(SystemMessage::rhythmPart, 0, 127)};
    EXPECT_TRUE(std::ranges::equal(song->events(), messages, {}, &TimelineEvent::message));
}

TEST(TimelineTest, StopsWhenAsked) {
    std::stop_source stop;
    stop.request_stop();
    const auto song = smfBytes(0, 480, {randomTrack(1, 70'000)});
    EXPECT_THROW(static_cast<void>(Timeline::build(song, stop.get_token())), TimelineCancelled);
}

TEST(TempoMapTest, FindsEveryTickAgainFromItsTime) {
    TempoMap map(quarter);
    map.setTempo(100, 16'777'215);
    map.setTempo(200, 1);
    map.setTempo(300, 333'333);
    TempoMap::Cursor cursor(map);
    for (std::uint32_t tick = 0; tick < 400; ++tick) {
        SCOPED_TRACE(tick);
        const double now = map.secondsAt(tick);
        const double soon = now + 0.75 * (map.secondsAt(tick + 1) - now);
        EXPECT_EQ(map.tickAt(now), tick);
        EXPECT_EQ(map.firstTickFrom(now), tick);
        EXPECT_EQ(cursor.tickAt(now), tick);
        EXPECT_EQ(map.tickAt(soon), tick);
        EXPECT_EQ(map.firstTickFrom(soon), tick + 1);
        EXPECT_EQ(cursor.tickAt(soon), tick);
    }
    EXPECT_EQ(map.tickAt(1e300), 0xFFFFFFFF);
    EXPECT_EQ(map.firstTickFrom(1e300), 0xFFFFFFFF);
}

} // namespace
} // namespace tambrel
