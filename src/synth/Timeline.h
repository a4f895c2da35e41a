#pragma once

#include "ChasedState.h"
#include "FullVelocities.h"
#include "LargePages.h"
#include "MIDIData.h"
#include "TempoMap.h"
#include "TimelineEvent.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

namespace tambrel {

/// The caller of `Timeline::build` has asked it to give up.
class TimelineCancelled : public std::exception {};

/// A song ready to be played: every message for the synthesizer in order of time (of tracks at the same
/// tick), the tempo map, and what a seek needs. Immutable; may be read from any thread, the audio callback
/// included.
class Timeline {
public:
    /// Reads a whole Standard MIDI File; each track up to its first defect. Data that is none gives an empty
    /// song of no length. Takes one pass over the data. Throws TimelineCancelled once `stop` asks. Any
    /// thread. `original`, if any, is the song whose Loudness variant the data is: their events are shared.
    [[nodiscard]] static std::shared_ptr<const Timeline>
    build(ByteView data, const std::stop_token& stop = {}, std::shared_ptr<const Timeline> original = {});

    /// With the velocities of the original, where that is shared.
    [[nodiscard]] std::span<const TimelineEvent> events() const {
        return original_ ? original_->events() : events_;
    }
    /// What is to be played of the event of this index.
    [[nodiscard]] MIDIMessage message(std::size_t index) const {
        return original_ ? velocities_->message(index, original_->message(index)) : events_[index].message;
    }
    [[nodiscard]] const TempoMap& tempoMap() const { return tempoMap_; }
    /// Seconds to the last event of any kind.
    [[nodiscard]] double duration() const { return duration_; }

    /// Index of the first event that is not before `tick`.
    [[nodiscard]] std::size_t firstEventAt(std::uint32_t tick) const;
    /// What the events before `index` have left behind. Takes well under a millisecond wherever it is; in a
    /// song of 200 MB, a millisecond or two.
    [[nodiscard]] ChasedState stateBefore(std::size_t index) const;

private:
    class Builder;
    Timeline(Division division, std::shared_ptr<const Timeline> original);
    void read(ByteView data, std::uint16_t trackCount, const std::stop_token& stop);

    // The state after this many events, every 65,536 of them or a few more; in songs of more than 32 MB
    // there are no more of them, as each takes 22 KB.
    struct Checkpoint {
        std::size_t events = 0;
        ChasedState state;
    };
    static constexpr std::size_t shortestInterval = 1 << 16;
    static constexpr std::size_t mostCheckpoints = 512; // If every byte were an event.

    using Events = std::vector<TimelineEvent, LargePageAllocator<TimelineEvent>>;

    std::shared_ptr<const Timeline> original_; // Null unless events are shared.
    std::optional<FullVelocities> velocities_; // In comparison with the original.
    Events events_;                            // Empty when they are shared.
    std::vector<Checkpoint> checkpoints_;
    TempoMap tempoMap_;
    double duration_ = 0;
};

} // namespace tambrel
