#include "SMFTrackMerger.h"
#include "PlainReadings.h"
#include "RandomSongs.h"

#include <gtest/gtest.h>

#include <tuple>

namespace tambrel {
namespace {

using testing::smfBytes;
using testing::TrackBuilder;

/// A tick that counts how often ticks are read.
struct CountedTick {
    std::uint32_t value;
    static inline std::size_t looks = 0;

    CountedTick() = default;
    CountedTick(std::uint32_t tick) : value(tick) {}
    operator std::uint32_t() const {
        ++looks;
        return value;
    }
    auto operator<=>(const CountedTick& other) const { return std::uint32_t{*this} <=> std::uint32_t{other}; }
    bool operator==(const CountedTick& other) const = default;
};

struct Merged {
    CountedTick tick;
    std::size_t start;

    bool operator==(const Merged&) const = default;
};

void expectTheOrderOfSortingInLinearTime(const Bytes& file) {
    for (const auto& [policy, defects] :
         {std::pair(SMFMalformedEventPolicy::stop, plain::Defects::endTheTrack),
          {SMFMalformedEventPolicy::skip, plain::Defects::areSkipped}}) {
        std::vector<Merged> sorted, merged;
        std::size_t events = 0, visits = 0;
        for (const plain::Chunk track : plain::tracks(file)) {
            for (const plain::Event& event : plain::events(file, track, defects)) {
                ++events;
                if (event.status < 0xF0)
                    sorted.push_back({static_cast<std::uint32_t>(event.tick), event.start});
            }
        }
        std::ranges::stable_sort(sorted, {}, [](const Merged& event) { return event.tick.value; });
        const auto select = [&](const SMFTimedTrackEvent& event, Merged& place) {
            ++visits;
            place.start = event.dataStart;
            return MIDIStatus::isChannelMessage(event.status);
        };
        CountedTick::looks = 0;
        SMFTrackMerger::merge<Merged>(file, SMFTrackEventWalker::trackChunks(file, 1000), policy, select,
                                      [&](std::span<const Merged> some) {
                                          EXPECT_FALSE(some.empty());
                                          merged.insert(merged.end(), some.begin(), some.end());
                                      });
        EXPECT_LE(CountedTick::looks, 40 * events);
        EXPECT_LE(visits, 2 * events);
        EXPECT_TRUE(merged == sorted);
    }
}

// A track of `count` notes; `delta(i)` is the distance of note i from the one before.
template<class Delta>
TrackBuilder notes(int count, Delta delta) {
    TrackBuilder track;
    for (int i = 0; i < count; ++i)
        track.program(static_cast<std::uint32_t>(delta(i)), i % 16, i % 128);
    return track;
}

TEST(SMFTrackMerger, staysLinearAndInOrderForUnevenSongs) {
    testing::RandomSongs random(3);
    const auto dense = notes(30'000, [&](int) { return random.upTo(2); });
    const auto sparse = notes(30, [&](int) { return random.upTo(100'000); });
    const auto crowded = [](int count, int delta) {
        return notes(count, [=](int i) { return i % 20'000 == 0 ? delta : 0; });
    };
    const auto clusters = notes(60'000, [&](int i) { return i % 3'000 == 0 ? 50'000 : 0; });
    const auto runs = notes(30'000, [](int i) { return i % 1'000 == 0 ? 1 << 27 : 1; });
    const auto longest = notes(16, [](int) { return 0x0FFFFFFF; });
    const auto approaching = notes(28, [](int i) { return i == 0 ? 10 : 1 << (27 - i); });
    const auto lastTick = TrackBuilder(longest).program(15, 0, 0).program(0, 0, 0);
    const std::tuple<const char*, std::vector<TrackBuilder>> rows[] = {
        {"no track", {}},
        {"one dense among sparse ones", {sparse, dense, sparse, sparse}},
        {"a crowd at one tick", {crowded(20'000, 7), crowded(20'000, 7), sparse}},
        {"crowds at neighbouring ticks", {crowded(60'000, 1), crowded(60'000, 1), sparse}},
        {"crowds far apart", {clusters, clusters, sparse}},
        {"runs far apart", {runs, runs}},
        {"sparse up to a crowd", {approaching, crowded(20'000, 10 + (1 << 27) - 1), sparse}},
        {"up to the last tick", {longest, lastTick, lastTick, sparse}},
        {"hundreds of tracks", std::vector<TrackBuilder>(400, notes(100, [](int i) { return i * 7 % 50; }))},
    };
    for (const auto& [name, tracks] : rows) {
        SCOPED_TRACE(name);
        expectTheOrderOfSortingInLinearTime(smfBytes(1, 480, tracks));
    }
}

} // namespace
} // namespace tambrel
