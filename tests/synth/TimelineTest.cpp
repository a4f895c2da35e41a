#include "MIDILoudnessProcessor.h"
#include "RecordingInstrument.h"
#include "SynthTesting.h"

#include <gmock/gmock.h>

#include <random>

namespace tambrel {
namespace {

using namespace testing;

/// A song as a second, plain reader sees it: byte after byte, then sorted as a whole.
class PlainSong {
public:
    explicit PlainSong(const Bytes& file) : file_(file), division_(file[12] << 8 | file[13]) {
        // Up to a chunk that is cut off or that is no track.
        while (at_ + 8 <= file.size() && file[at_ + 2] == 'r') {
            const std::size_t end = at_ + 8 + (std::size_t{file[at_ + 6]} << 8 | file[at_ + 7]);
            if (end > file.size())
                break;
            at_ += 8;
            readTrack(end);
            at_ = end;
        }
        const auto byTick = [](const auto& one, const auto& other) { return one.first < other.first; };
        std::ranges::stable_sort(events, byTick);
        std::ranges::stable_sort(tempos, byTick);
    }

    /// By whole numbers up to the last step.
    [[nodiscard]] double secondsAt(std::uint64_t tick) const {
        if (division_ >= 0x8000) {
            const int frames = 256 - (division_ >> 8), ticksPerFrame = std::max(division_ & 255, 1);
            const double ticksPerSecond = ticksPerFrame * (frames == 29 ? 30'000 : 1000 * frames);
            return static_cast<double>(tick * (frames == 29 ? 1001 : 1000)) / ticksPerSecond;
        }
        std::uint64_t microseconds = 0, tempo = 500'000, from = 0; // Times the division.
        for (const auto& [at, next] : tempos) {
            if (next == 0 || at > tick)
                continue;
            microseconds += (at - from) * tempo;
            from = at;
            tempo = next;
        }
        microseconds += (tick - from) * tempo;
        return static_cast<double>(microseconds) / (1e6 * std::max(division_, 1));
    }

    std::vector<std::pair<std::uint32_t, MIDIMessage>> events;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> tempos; // Microseconds.
    std::uint32_t lastTick = 0;

private:
    std::uint32_t number() {
        std::uint32_t value = 0;
        do
            value = value << 7 | (file_[at_] & 0x7F);
        while (file_[at_++] >= 0x80);
        return value;
    }

    void readTrack(std::size_t end) {
        std::uint32_t tick = 0;
        int status = 0;
        while (at_ < end) {
            tick += number();
            if (file_[at_] >= 0x80)
                status = file_[at_++];
            if (status > 0xF0 && status != 0xF7 && status != 0xFF)
                return; // A defect.
            if (status >= 0xF0)
                readRare(tick, status, status == 0xFF ? file_[at_++] : 0);
            else {
                const bool hasTwo = status < 0xC0 || status >= 0xE0;
                const auto first = static_cast<std::uint8_t>(file_[at_++] & 0x7F);
                const auto second = static_cast<std::uint8_t>(hasTwo ? file_[at_++] & 0x7F : 0);
                events.push_back({tick, {static_cast<std::uint8_t>(status), first, second, 0}});
            }
            lastTick = std::max(lastTick, tick);
        }
    }

    void readRare(std::uint32_t tick, int status, int type) {
        const std::uint32_t size = number();
        const Bytes payload(file_.data() + at_, file_.data() + at_ + size);
        at_ += size;
        if (type == 0x51 && size >= 3)
            tempos.push_back({tick, payload[0] << 16 | payload[1] << 8 | payload[2]});
        for (const auto& [bytes, messages] : systemExclusives()) {
            for (const MIDIMessage message : messages) {
                if (status == 0xF0 && payload == bytes)
                    events.push_back({tick, message});
            }
        }
    }

    const Bytes& file_;
    int division_;
    std::size_t at_ = 14;
};

Bytes randomSong(std::uint32_t seed) {
    std::mt19937 engine(seed);
    const auto oneOf = [&engine](std::initializer_list<int> values) {
        return std::data(values)[engine() % values.size()];
    };
    const auto below = [&engine](int limit) {
        return static_cast<int>(engine() % static_cast<std::uint32_t>(limit));
    };
    std::vector<TrackBuilder> tracks(static_cast<std::size_t>(below(6)));
    for (TrackBuilder& track : tracks) {
        for (int event = below(60); event > 0; --event) {
            const auto delta = static_cast<std::uint32_t>(oneOf({0, 0, 0, 1, 1, 100, 200'000}));
            const int kind = below(12);
            if (kind < 7)
                track.raw({below(3), 0x80 | kind << 4 | below(16), below(256)});
            if (kind < 4 || kind == 6)
                track.raw({below(256)});
            if (kind == 1) // Running status.
                track.raw({below(2), below(128), below(256)});
            if (kind == 7)
                track.tempo(delta, static_cast<std::uint32_t>(oneOf({0, 1, 300'000, 500'001, 16'777'215})));
            if (kind == 8) // Of a tempo, too few bytes.
                track.meta(delta, oneOf({1, 0x51, 0x2F}), {7, 0xA1});
            if (kind == 9)
                track.meta(delta, 0x51, {1, 2, 3, 4});
            if (kind > 9) {
                const auto& all = systemExclusives();
                track.sysex(delta, all[engine() % all.size()].first);
            }
        }
        if (below(4) == 0)
            track.raw({5, oneOf({0xF1, 0xF8}), 60, 60}).noteOn(0, 0, 1);
    }
    const int ticksPerFrame = oneOf({0, 1, 4, 200});
    const int division = oneOf({0, 1, 96, 480, 32'767, timeCodeDivision(24, ticksPerFrame),
                                timeCodeDivision(25, ticksPerFrame), timeCodeDivision(29, ticksPerFrame),
                                timeCodeDivision(30, ticksPerFrame)});
    Bytes file = smfBytes(1, division, tracks);
    if (below(8) == 0)
        file.resize(file.size() - std::min<std::size_t>(file.size() - 14, 3)); // Cut off.
    if (below(8) == 0)
        file.insert(file.begin() + 14, {'X', 'F', 'I', 'H', 0, 0, 0, 0}); // No track.
    return file;
}

TEST(TimelineTest, SaysOfRandomSongsWhatAPlainReaderSays) {
    for (std::uint32_t seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        const Bytes file = randomSong(seed);
        const auto song = Timeline::build(file);
        const PlainSong plain(file);
        std::vector<std::pair<std::uint32_t, MIDIMessage>> events;
        for (const TimelineEvent& event : song->events())
            events.emplace_back(event.tick, event.message);
        ASSERT_EQ(events.size(), plain.events.size());
        ASSERT_TRUE(events == plain.events);

        const auto tolerance = [](double seconds) { return 1e-12 * std::max(1.0, seconds); };
        ASSERT_NEAR(song->duration(), plain.secondsAt(plain.lastTick), tolerance(song->duration()));
        std::vector<std::uint32_t> ticks{0, 1, plain.lastTick};
        for (const auto& [tick, tempo] : plain.tempos)
            ticks.insert(ticks.end(), {tick, tick + 1, std::max(tick, 1U) - 1});
        std::ranges::sort(ticks);
        const TempoMap& map = song->tempoMap();
        TempoMap::Cursor cursor(map);
        for (const std::uint32_t tick : ticks) {
            const double now = plain.secondsAt(tick), next = plain.secondsAt(tick + 1);
            const double mapped = map.secondsAt(tick);
            ASSERT_NEAR(mapped, now, tolerance(now)) << tick;
            if (next - now > 10'000 * tolerance(now)) { // Else a tick is lost in the digits of a double.
                const double soon = 0.25 * now + 0.75 * next;
                ASSERT_EQ(map.tickAt(mapped), tick);
                ASSERT_EQ(map.firstTickFrom(mapped), tick);
                ASSERT_EQ(cursor.tickAt(mapped), tick);
                ASSERT_EQ(map.tickAt(soon), tick);
                ASSERT_EQ(map.firstTickFrom(soon), tick + 1);
            }
            const auto before =
                std::ranges::count_if(events, [&](const auto& event) { return event.first < tick; });
            ASSERT_EQ(song->firstEventAt(tick), static_cast<std::size_t>(before));
        }
        ASSERT_EQ(map.tickAt(1e300), 0xFFFFFFFF);
        ASSERT_EQ(map.firstTickFrom(1e300), 0xFFFFFFFF);
    }
}

TEST(TimelineTest, SharesTheEventsWithALoudnessVariant) {
    const TrackBuilder drums = TrackBuilder().name(0, "Drums").noteOn(60'000, 0, 60).noteOn(75'000, 9, 40);
    for (std::uint32_t seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        const MIDIData file(seed == 0 ? smfBytes(1, 480, {randomTrack(1, 140'000), drums})
                                      : randomSong(seed));
        const MIDIData loudFile = MIDILoudnessProcessor::boostedDrumsAndBass(file);
        const auto song = Timeline::build(file), whole = Timeline::build(loudFile);
        const auto loud = Timeline::build(loudFile, {}, song);
        const std::size_t count = whole->events().size();
        ASSERT_EQ(loud->events().size(), count);
        for (std::size_t index = 0; index < count; ++index)
            ASSERT_TRUE(loud->message(index) == whole->events()[index].message) << index;
        for (const std::size_t index : {count / 2, count})
            ASSERT_TRUE(loud->stateBefore(index).messages() == whole->stateBefore(index).messages());
        ASSERT_EQ(loud->duration(), whole->duration());
        if (seed == 0) {
            EXPECT_EQ(loud->events().data(), song->events().data());
            EXPECT_FALSE(std::ranges::equal(loudFile.view(), file.view()));
        } else { // No variant of the song before: built by itself.
            const auto apart = Timeline::build(file, {}, timeline({drums}));
            ASSERT_TRUE(std::ranges::equal(apart->events(), song->events()));
        }
    }
}

TEST(TimelineTest, GivesThePartsTheChannelsThatTheyReceive) {
    const auto song = timeline({TrackBuilder()
                                    .noteOn(0, 4, 60)
                                    .sysex(0, gs({0x40, 0x12, 0x02, 4})) // GS part 2 as well as 5.
                                    .noteOn(0, 4, 61)
                                    .noteOn(0, 1, 62)                 // No part listens.
                                    .sysex(0, xg({8, 4, 0x04, 0x7F})) // XG part 5 to none.
                                    .tempo(0, 300'000)
                                    .noteOff(0, 4, 61)
                                    .sysex(0, gs({0x40, 0x12, 0x19, 50})) // Of the part, not the channel.
                                    .sysex(0, gs({0x40, 0x15, 0x02, 16}))
                                    .sysex(0, gmOn)
                                    .noteOn(0, 4, 63)});
    std::string events;
    for (const TimelineEvent& event : song->events())
        events += text(event.message) + "; ";
    EXPECT_EQ(events, "ch 5 note on 60 64; "
                      "ch 2 control 66 0; ch 2 control 64 0; ch 2 control 123 0; "
                      "ch 2 note on 61 64; ch 5 note on 61 64; "
                      "ch 5 control 66 0; ch 5 control 64 0; ch 5 control 123 0; "
                      "ch 2 note off 61 64; ch 2 control 7 50; GM reset; ch 5 note on 63 64; ");
}

TEST(TimelineTest, IsEmptyForDataThatIsNoStandardMIDIFile) {
    for (const Bytes& bytes : {Bytes{}, Bytes{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0}})
        EXPECT_TRUE(Timeline::build(bytes)->events().empty());
}

TEST(TimelineTest, StopsWhenAsked) {
    std::stop_source stop;
    stop.request_stop();
    const auto song = smfBytes(0, 480, {randomTrack(1, 70'000)});
    EXPECT_THROW(static_cast<void>(Timeline::build(song, stop.get_token())), TimelineCancelled);
}

} // namespace
} // namespace tambrel
