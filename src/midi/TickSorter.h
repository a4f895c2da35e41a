#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

namespace tambrel {

/// Puts the events of a window of ticks in order of tick; those of one tick stay in the order in which they
/// came. `Event` is a small, trivially copyable aggregate with a member `std::uint32_t tick`.
///
/// A radix sort of two digits: `add` stores an event in the lane of its low digit and counts its high digit,
/// `sort` moves it from there to the place of its high digit. Only a window longer than the two digits can
/// tell apart leaves neighbours to be exchanged. One thread at a time.
template<class Event>
class TickSorter {
    static_assert(std::is_trivially_copyable_v<Event> && std::is_trivially_destructible_v<Event>);

public:
    /// Holds `capacity` events at a time.
    explicit TickSorter(std::size_t capacity)
        : capacity_(capacity),
          memory_(std::make_unique_for_overwrite<std::byte[]>((laneCount * laneStride() + capacity) *
                                                              sizeof(Event))) {}

    [[nodiscard]] std::size_t capacity() const { return capacity_; }
    [[nodiscard]] std::size_t size() const { return size_; }

    /// Begins with the window of 2^`lengthBits` ticks, of 0 to 32 bits, from `firstTick` on.
    void begin(std::uint32_t firstTick, unsigned lengthBits) {
        constexpr unsigned reach = laneBits + bucketBits;
        firstTick_ = firstTick;
        unitBits_ = lengthBits > reach ? lengthBits - reach : 0;
        const unsigned unitsBits = lengthBits - unitBits_;
        bucketCount_ = std::size_t{1} << (unitsBits > laneBits ? unitsBits - laneBits : 0);
        std::ranges::fill(buckets(), 0);
        for (std::size_t i = 0; i < laneCount; ++i)
            laneEnds_[i] = lane(i);
        size_ = 0;
    }

    /// Adds an event of the window; false when there is no room left.
    [[gnu::always_inline]] bool add(const Event& event) {
        if (size_ == capacity_) // No lane can overflow before: each could hold all events.
            return false;
        ++size_;
        const std::uint32_t unit = unitOf(event);
        ++bucketEnds_[unit >> laneBits];
        *laneEnds_[unit % laneCount]++ = event;
        return true;
    }

    /// The events that were added, in order; valid until the next `begin`. May be called once a window.
    [[nodiscard]] std::span<const Event> sort() {
        const std::uint32_t mostInABucket = unitBits_ > 0 ? std::ranges::max(buckets()) : 0;
        std::uint32_t place = 0;
        for (std::uint32_t& bucket : buckets())
            place += std::exchange(bucket, place);
        const unsigned bucketTickBits = unitBits_ + laneBits;
        const std::span<Event> sorted(lane(laneCount), size_);
        for (std::size_t i = 0; i < laneCount; ++i) {
            for (const Event* event = lane(i); event != laneEnds_[i]; ++event)
                sorted[bucketEnds_[(event->tick - firstTick_) >> bucketTickBits]++] = *event;
        }
        if (unitBits_ > 0)
            sortUnits(sorted, mostInABucket);
        return sorted;
    }

private:
    static constexpr unsigned laneBits = 4;
    static constexpr unsigned bucketBits = 12;
    static constexpr std::size_t laneCount = std::size_t{1} << laneBits;

    // Not a multiple of a large power of two: the lanes would compete for the same cache sets.
    [[nodiscard]] std::size_t laneStride() const { return capacity_ + 72; }

    // The sorted events go to the one after the last.
    [[nodiscard]] Event* lane(std::size_t index) const {
        return reinterpret_cast<Event*>(memory_.get()) + index * laneStride();
    }

    [[nodiscard]] std::span<std::uint32_t> buckets() { return std::span(bucketEnds_).first(bucketCount_); }

    // In units, the shortest spans of ticks that the two digits tell apart.
    [[nodiscard]] [[gnu::always_inline]] std::uint32_t unitOf(const Event& event) const {
        return (event.tick - firstTick_) >> unitBits_;
    }

    static void sortUnits(std::span<Event> events, std::uint32_t mostInABucket) {
        constexpr std::uint32_t crowd = 64;
        if (mostInABucket > crowd)
            std::ranges::stable_sort(events, {}, &Event::tick);
        else
            insertionSort(events);
    }

    static void insertionSort(std::span<Event> events) {
        for (std::size_t next = 1; next < events.size(); ++next) {
            const Event event = events[next];
            std::size_t hole = next;
            for (; hole > 0 && events[hole - 1].tick > event.tick; --hole)
                events[hole] = events[hole - 1];
            events[hole] = event;
        }
    }

    std::size_t capacity_;
    std::size_t size_ = 0;
    std::uint32_t firstTick_ = 0;
    unsigned unitBits_ = 0; // Of ticks in a unit.
    std::size_t bucketCount_ = 1;
    std::array<Event*, laneCount> laneEnds_{};
    std::array<std::uint32_t, std::size_t{1} << bucketBits> bucketEnds_{};
    std::unique_ptr<std::byte[]> memory_; // Where there are no events, it is never touched.
};

} // namespace tambrel
