#pragma once

#include "SMFTrackEventWalker.h"
#include "TickSorter.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace tambrel {

/// Merges the events of all tracks of a song into one sequence in order of tick, then track, then place in
/// the track. Made by `SMFTrackMerger::merge`.
///
/// Each track is in order already, so nothing is sorted as a whole. The song is cut into windows of ticks
/// that hold some thousand events each; a window's events are read track by track into a sorter that fits the
/// processor's cache. The length of the windows follows the density of the song, so the time is linear in the
/// bytes whatever the ticks are: a crowd at one tick needs no sorting, an empty span is jumped over.
///
/// What that buys over a plain heap of the tracks' next events: 50 MB of 17 tracks take 106 ms instead of
/// 249, of 200 tracks 139 ms instead of 700.
template<class Event, class Select, class Emit>
class SMFWindowedTrackMerge {
public:
    SMFWindowedTrackMerge(ByteView data, std::span<const SMFTrackChunk> tracks,
                          SMFMalformedEventPolicy policy, Select select, Emit emit)
        : select_(std::move(select)),
          emit_(std::move(emit)),
          sorter_(std::max(std::size_t{8192}, 4 * tracks.size())) {
        cursors_.reserve(tracks.size());
        for (const SMFTrackChunk& track : tracks) {
            Cursor cursor{SMFTrackEventReader(data, track, policy), {}};
            if (cursor.reader.next(cursor.event))
                cursors_.push_back(cursor);
        }
    }

    // Returns the last tick of all.
    std::uint32_t run() {
        while (cursors_.size() > 1) {
            firstTick_ = std::ranges::min(cursors_, {}, &Cursor::tick).tick();
            if (windowBits_ == 0)
                mergeTick();
            else if (readWindow())
                mergeWindow();
        }
        pass(std::numeric_limits<std::uint32_t>::max());
        dropFinished();
        return lastTick_;
    }

private:
    struct Cursor {
        SMFTrackEventReader reader;
        SMFTimedTrackEvent event; // The next one, already read; the last one at the end.
        bool finished = false;

        [[nodiscard]] std::uint32_t tick() const { return event.tick; }
    };

    static constexpr unsigned wholeSong = 32; // Bits of ticks.

    // Calls `onEvent` with the events of one track up to a tick, in their own order; it returns false to end
    // that. Not inlined: with its callers it would run out of registers.
    template<class OnEvent>
    [[gnu::noinline]] bool readTrack(Cursor& cursor, std::uint32_t lastTick, OnEvent onEvent) {
        // Copies stay in registers; what a reference leads to would not.
        Cursor local = cursor;
        Select select = select_;
        Event event{}; // Which is written before it is read, as not every compiler sees.
        do {
            if (select(std::as_const(local.event), event)) {
                event.tick = local.event.tick;
                if (!onEvent(std::as_const(event)))
                    return false;
            }
            local.finished = !local.reader.next(local.event);
        } while (!local.finished && local.event.tick <= lastTick);
        cursor = local;
        return true;
    }

    // Emits the tracks one after another as they are, up to a tick.
    void pass(std::uint32_t lastTick) {
        std::size_t count = 0;
        const auto add = [this, &count](const Event& event) {
            batch_[count++] = event;
            if (count == batch_.size())
                emit_(std::span<const Event>(batch_).first(std::exchange(count, 0)));
            return true;
        };
        for (Cursor& cursor : cursors_) {
            if (cursor.tick() <= lastTick)
                readTrack(cursor, lastTick, add);
        }
        if (count > 0)
            emit_(std::span<const Event>(batch_).first(count));
    }

    // Events of one tick are in order when they are emitted track by track.
    void mergeTick() {
        pass(firstTick_);
        dropFinished();
        windowBits_ = 1;
    }

    // Fills the sorter with the window's events in track order. If they are too many, restores the cursors,
    // shortens the window and returns false.
    bool readWindow() {
        saved_ = cursors_;
        sorter_.begin(firstTick_, windowBits_);
        const std::uint32_t lastTick = lastTickOfWindow();
        for (Cursor& cursor : cursors_) {
            if (cursor.tick() <= lastTick &&
                !readTrack(cursor, lastTick, [this](const Event& event) { return sorter_.add(event); })) {
                cursors_.swap(saved_);
                shortenWindow();
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] std::uint32_t lastTickOfWindow() const {
        const std::uint64_t end =
            std::min(firstTick_ + (std::uint64_t{1} << windowBits_), std::uint64_t{1} << wholeSong);
        const bool reachesCrowd = firstTick_ < crowdTick_ && end > crowdTick_;
        return reachesCrowd ? crowdTick_ - 1 : static_cast<std::uint32_t>(end - 1);
    }

    // Halves the events of the window; a crowd at the first tick makes it a single tick. No later window
    // reaches across the tick where the other half begins: windows that grow on the way would overflow there
    // again.
    void shortenWindow() {
        const std::span<const Event> read = sorter_.sort();
        crowdTick_ = read[read.size() / 2].tick;
        windowBits_ = static_cast<unsigned>(std::bit_width(std::max(crowdTick_ - firstTick_, 1u)) - 1);
    }

    void mergeWindow() {
        if (sorter_.size() > 0)
            emit_(sorter_.sort());
        dropFinished();
        if (sorter_.size() < sorter_.capacity() / 4)
            windowBits_ = std::min(windowBits_ + 1, wholeSong);
    }

    void dropFinished() {
        std::erase_if(cursors_, [this](const Cursor& cursor) {
            if (cursor.finished)
                lastTick_ = std::max(lastTick_, cursor.tick());
            return cursor.finished;
        });
    }

    Select select_;
    Emit emit_;
    TickSorter<Event> sorter_;
    std::vector<Cursor> cursors_; // Of the tracks that go on, in track order.
    std::vector<Cursor> saved_;
    std::vector<Event> batch_ = std::vector<Event>(1024);
    std::uint32_t firstTick_ = 0;
    std::uint32_t lastTick_ = 0;
    std::uint32_t crowdTick_ = 0; // Where a window overflowed last.
    unsigned windowBits_ = 10;    // The window's length is a power of two in ticks.
};

namespace SMFTrackMerger {

/// Walks all tracks at once. `Event` is a small, trivially copyable aggregate with a member `std::uint32_t
/// tick`. `select(const SMFTimedTrackEvent&, Event&)` fills in all of it but the tick and returns true, or
/// returns false for an event that does not matter; it may be asked about an event more than once, so it
/// keeps no count. `emit(std::span<const Event>)` then receives the selected events in order of tick, then
/// track, then place in the track, some thousand at a time and never none. Returns the tick of the last event
/// of all, selected or not; 0 if there is none. Takes about a megabyte of memory for a usual song, most of it
/// never touched. Any thread.
template<class Event, class Select, class Emit>
std::uint32_t merge(ByteView data, std::span<const SMFTrackChunk> tracks,
                    SMFMalformedEventPolicy malformedEventPolicy, Select select, Emit emit) {
    return SMFWindowedTrackMerge<Event, Select, Emit>(data, tracks, malformedEventPolicy, std::move(select),
                                                      std::move(emit))
        .run();
}

} // namespace SMFTrackMerger
} // namespace tambrel
