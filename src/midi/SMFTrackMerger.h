#pragma once

#include "SMFTrackEventWalker.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace tambrel {

/// Merges the events of all tracks of a song into one sequence in order of tick, then track, then place in
/// the track. Made by `SMFTrackMerger::merge`.
///
/// Each track is in order already, so nothing is sorted as a whole. The song is cut into windows of ticks
/// that hold some thousand events each; a window's events are read track by track into a buffer that fits the
/// processor's cache and are put in order there by a stable bucket sort of their ticks. The length of the
/// windows follows the density of the song, so the time is linear in the bytes whatever the ticks are: a
/// crowd at one tick needs no sorting, an empty span is jumped over.
template<class Item, class Select, class Emit>
class SMFWindowedTrackMerge {
public:
    SMFWindowedTrackMerge(ByteView data, std::span<const SMFTrackChunk> tracks,
                          SMFMalformedEventPolicy policy, Select& select, Emit& emit)
        : select_(select), emit_(emit) {
        cursors_.reserve(tracks.size());
        for (const SMFTrackChunk& track : tracks) {
            Cursor cursor{SMFTrackEventReader(data, track, policy), {}, track.index};
            if (cursor.reader.next(cursor.event))
                cursors_.push_back(cursor);
        }
        capacity_ = std::max(std::size_t{8192}, 4 * cursors_.size());
        entries_.resize(capacity_);
        sorted_.resize(capacity_);
    }

    void run() {
        while (cursors_.size() > 1) {
            firstTick_ = std::ranges::min(cursors_, {}, &Cursor::tick).tick();
            if (windowLength_ == 1)
                mergeTick();
            else if (readWindow())
                mergeWindow();
        }
        for (Cursor& last : cursors_)
            pass(last, std::numeric_limits<std::uint32_t>::max());
    }

private:
    struct Cursor {
        SMFTrackEventReader reader;
        SMFTimedTrackEvent event; // The next one, already read.
        std::int64_t track;
        bool finished = false;

        [[nodiscard]] std::uint32_t tick() const { return event.tick; }
    };
    struct Entry {
        std::uint32_t offset; // Ticks since the start of the window.
        Item item;
    };

    static constexpr std::uint64_t wholeSong = std::uint64_t{1} << 32;
    static constexpr unsigned bucketBits = 12;

    // Calls `onItem` with the items of one track up to a tick, in their own order; it returns false to end
    // that.
    template<class OnItem>
    [[gnu::always_inline]] bool readTrack(Cursor& cursor, std::uint32_t lastTick, OnItem onItem) {
        Cursor local = cursor; // Lives in registers, which a reference could not.
        Item item;
        do {
            if (select_(local.track, std::as_const(local.event), item)) {
                if (!onItem(local.event.tick, std::as_const(item)))
                    return false;
            }
            local.finished = !local.reader.next(local.event);
        } while (!local.finished && local.event.tick <= lastTick);
        cursor = local;
        return true;
    }

    void pass(Cursor& cursor, std::uint32_t lastTick) {
        readTrack(cursor, lastTick, [this](std::uint32_t tick, const Item& item) {
            emit_(tick, item);
            return true;
        });
    }

    // A window of one tick is in order once the tracks are.
    void mergeTick() {
        for (Cursor& cursor : cursors_) {
            if (cursor.tick() == firstTick_)
                pass(cursor, firstTick_);
        }
        dropFinished();
        windowLength_ = 2;
    }

    // Fills the buffer with the window's events in track order and counts them by buckets of ticks. If they
    // are too many, takes all back, makes the window shorter and returns false.
    bool readWindow() {
        saved_ = cursors_;
        bucketEnds_.fill(0);
        Entry* entry = entries_.data();
        Entry* const end = entry + capacity_;
        const auto add = [this, &entry, end, first = firstTick_, shift = bucketShift()](std::uint32_t tick,
                                                                                        const Item& item) {
            if (entry == end)
                return false;
            ++bucketEnds_[(tick - first) >> shift];
            *entry++ = {tick - first, item};
            return true;
        };
        const auto lastTick = static_cast<std::uint32_t>(std::min(firstTick_ + windowLength_, wholeSong) - 1);
        for (Cursor& cursor : cursors_) {
            if (cursor.tick() <= lastTick && !readTrack(cursor, lastTick, add)) {
                cursors_.swap(saved_);
                shortenWindow();
                return false;
            }
        }
        entryCount_ = static_cast<std::size_t>(entry - entries_.data());
        return true;
    }

    // Half of what was read is left; a crowd at the first tick alone makes the window a single tick.
    void shortenWindow() {
        const auto middle = entries_.begin() + static_cast<std::ptrdiff_t>(capacity_ / 2);
        std::ranges::nth_element(entries_, middle, {}, &Entry::offset);
        windowLength_ = std::max<std::uint64_t>(middle->offset, 1);
    }

    void mergeWindow() {
        sortEntries();
        for (const Entry& entry : std::span(sorted_).first(entryCount_))
            emit_(firstTick_ + entry.offset, entry.item);
        dropFinished();
        if (entryCount_ < capacity_ / 4)
            windowLength_ = std::min(windowLength_ * 2, wholeSong);
    }

    // A bucket holds few ticks and about two events, so what is left to do within one is little.
    void sortEntries() {
        std::uint32_t place = 0;
        std::uint32_t mostInABucket = 0;
        for (std::uint32_t& bucket : bucketEnds_) {
            mostInABucket = std::max(mostInABucket, bucket);
            place += std::exchange(bucket, place);
        }
        const unsigned shift = bucketShift();
        for (const Entry& entry : std::span(std::as_const(entries_)).first(entryCount_))
            sorted_[bucketEnds_[entry.offset >> shift]++] = entry;
        if (shift == 0)
            return;
        constexpr std::uint32_t crowd = 64;
        const auto sorted = std::span(sorted_).first(entryCount_);
        if (mostInABucket > crowd)
            std::ranges::stable_sort(sorted, {}, &Entry::offset);
        else
            insertionSort(sorted);
    }

    static void insertionSort(std::span<Entry> entries) {
        for (std::size_t next = 1; next < entries.size(); ++next) {
            const Entry entry = entries[next];
            std::size_t hole = next;
            for (; hole > 0 && entries[hole - 1].offset > entry.offset; --hole)
                entries[hole] = entries[hole - 1];
            entries[hole] = entry;
        }
    }

    // What makes the bucket of an offset in the window.
    [[nodiscard]] unsigned bucketShift() const {
        const auto bits = static_cast<unsigned>(std::bit_width(windowLength_ - 1));
        return bits > bucketBits ? bits - bucketBits : 0;
    }

    void dropFinished() { std::erase_if(cursors_, &Cursor::finished); }

    Select& select_;
    Emit& emit_;
    std::vector<Cursor> cursors_; // Of the tracks that go on, in track order.
    std::vector<Cursor> saved_;
    std::vector<Entry> entries_;
    std::vector<Entry> sorted_;
    std::array<std::uint32_t, std::size_t{1} << bucketBits> bucketEnds_{};
    std::size_t entryCount_ = 0;
    std::size_t capacity_ = 0;
    std::uint32_t firstTick_ = 0;
    std::uint64_t windowLength_ = 1024; // In ticks.
};

namespace SMFTrackMerger {

/// Walks all tracks at once. `select(std::int64_t trackIndex, const SMFTimedTrackEvent&, Item&)` makes a
/// small, trivially copyable item of an event that matters and returns true, or returns false; it may be
/// asked about an event more than once, so it keeps no count. `emit(std::uint32_t tick, const Item&)` then
/// receives the items in order of tick, then track, then place in the track. One track alone is passed on as
/// it is walked. Memory besides: less than a megabyte for a usual song. Any thread.
template<class Item, class Select, class Emit>
void merge(ByteView data, std::span<const SMFTrackChunk> tracks, SMFMalformedEventPolicy malformedEventPolicy,
           Select&& select, Emit&& emit) {
    static_assert(std::is_trivially_copyable_v<Item>);
    SMFWindowedTrackMerge<Item, Select, Emit>(data, tracks, malformedEventPolicy, select, emit).run();
}

} // namespace SMFTrackMerger
} // namespace tambrel
