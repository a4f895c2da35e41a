#include "SMFTrackMerger.h"
#include "RandomSongs.h"
#include "TickSorter.h"

#include <gtest/gtest.h>

#include <tuple>

namespace tambrel {
namespace {

using testing::RandomSongs;
using testing::smfBytes;
using testing::TrackBuilder;

struct Merged {
    std::uint32_t tick;
    std::int64_t dataStart;

    bool operator==(const Merged&) const = default;
};

void expectTheOrderOfSortingInLinearTime(const Bytes& file) {
    const auto tracks = SMFTrackEventWalker::trackChunks(file, 1000);
    for (const auto policy : {SMFMalformedEventPolicy::stop, SMFMalformedEventPolicy::skip}) {
        std::vector<Merged> sorted, merged;
        std::size_t looks = 0, looksOfMerging = 0;
        for (const SMFTrackChunk& track : tracks) {
            SMFTrackEventWalker::walk(file, track, policy, [&](const SMFTimedTrackEvent& event) {
                ++looks;
                if (MIDIStatus::isChannelMessage(event.status))
                    sorted.push_back({event.tick, event.dataStart});
                return SMFTrackWalkDecision::continue_;
            });
        }
        std::ranges::stable_sort(sorted, {}, &Merged::tick);
        const auto select = [&](const SMFTimedTrackEvent& event, Merged& place) {
            ++looksOfMerging;
            place.dataStart = event.dataStart;
            return MIDIStatus::isChannelMessage(event.status);
        };
        SMFTrackMerger::merge<Merged>(file, tracks, policy, select, [&](std::span<const Merged> events) {
            EXPECT_FALSE(events.empty());
            merged.insert(merged.end(), events.begin(), events.end());
        });
        EXPECT_TRUE(merged == sorted);
        EXPECT_LE(looksOfMerging, 2 * looks);
    }
}

TEST(SMFTrackMerger, ordersRandomSongsAsAStableSortDoes) {
    RandomSongs songs(2);
    for (int i = 0; i < 500; ++i) {
        SCOPED_TRACE(i);
        expectTheOrderOfSortingInLinearTime(songs.next());
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
    RandomSongs random(3);
    const auto dense = notes(30'000, [&](int) { return random.upTo(2); });
    const auto sparse = notes(30, [&](int) { return random.upTo(100'000); });
    const auto crowded = [](int count, int delta) {
        return notes(count, [=](int i) { return i % 20'000 == 0 ? delta : 0; });
    };
    const auto clusters = notes(60'000, [&](int i) { return i % 3'000 == 0 ? 50'000 : 0; });
    const auto longest = notes(16, [](int) { return 0x0FFFFFFF; });
    const auto approaching = notes(28, [](int i) { return i == 0 ? 10 : 1 << (27 - i); });
    const auto lastTick = TrackBuilder(longest).program(15, 0, 0).program(0, 0, 0);
    const std::tuple<const char*, std::vector<TrackBuilder>> rows[] = {
        {"no track", {}},
        {"one dense among sparse ones", {sparse, dense, sparse, sparse}},
        {"a crowd at one tick", {crowded(20'000, 7), crowded(20'000, 7), sparse}},
        {"crowds at neighbouring ticks", {crowded(60'000, 1), crowded(60'000, 1), sparse}},
        {"crowds far apart", {clusters, clusters, sparse}},
        {"sparse up to a crowd", {approaching, crowded(20'000, 10 + (1 << 27) - 1), sparse}},
        {"up to the last tick", {longest, lastTick, lastTick, sparse}},
        {"hundreds of tracks", std::vector<TrackBuilder>(400, notes(100, [](int i) { return i * 7 % 50; }))},
    };
    for (const auto& [name, tracks] : rows) {
        SCOPED_TRACE(name);
        expectTheOrderOfSortingInLinearTime(smfBytes(1, 480, tracks));
    }
}

TEST(TickSorter, ordersWindowsOfAnyLengthAndKeepsTheOrderWithinATick) {
    constexpr std::uint32_t firstTick = 1000;
    constexpr std::size_t capacity = 5000;
    std::mt19937 random(4);
    TickSorter<Merged> sorter(capacity);
    for (unsigned bits = 0; bits <= 32; ++bits) {
        SCOPED_TRACE(bits);
        const std::uint32_t last = bits == 32 ? 0xFFFFFFFF - firstTick : (std::uint32_t{1} << bits) - 1;
        for (const std::uint32_t largest : {last, std::min(last, 20u)}) { // Spread out, and all in a corner.
            std::uniform_int_distribution<std::uint32_t> offset(last - largest, last);
            std::vector<Merged> events;
            sorter.begin(firstTick, bits);
            for (std::int64_t number = 0; number < std::int64_t{capacity}; ++number) {
                events.push_back({firstTick + offset(random), number});
                ASSERT_TRUE(sorter.add(events.back()));
            }
            EXPECT_FALSE(sorter.add({firstTick, 0}));
            std::ranges::stable_sort(events, {}, &Merged::tick);
            EXPECT_TRUE(std::ranges::equal(sorter.sort(), events));
        }
    }
}

} // namespace
} // namespace tambrel
