#pragma once

#include "ChasedState.h"
#include "LargePages.h"
#include "MIDIData.h"
#include "MIDIMessage.h"
#include "TempoMap.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <stop_token>
#include <vector>

namespace tambrel {

/// One message and its time. Eight bytes, so that a song of tens of millions of events stays in memory.
struct TimelineEvent {
    std::uint32_t tick = 0;
    MIDIMessage message;
};
static_assert(sizeof(TimelineEvent) == 8);

/// The caller of `Timeline::build` has asked it to give up.
class TimelineCancelled : public std::exception {};

/// A song ready to be played: every message for the synthesizer in order of time (of tracks at the same
/// tick), the tempo map, and what a seek needs. Immutable; may be read from any thread, the audio callback
/// included.
class Timeline {
public:
    /// Reads a whole Standard MIDI File; each track up to its first defect. Data that is none gives an empty
    /// song of no length. Takes one pass over the data. Throws TimelineCancelled once `stop` asks. Any
    /// thread.
    [[nodiscard]] static std::shared_ptr<const Timeline> build(ByteView data,
                                                               const std::stop_token& stop = {});

    [[nodiscard]] std::span<const TimelineEvent> events() const { return events_; }
    [[nodiscard]] const TempoMap& tempoMap() const { return tempoMap_; }
    /// Seconds to the last event of any kind.
    [[nodiscard]] double duration() const { return duration_; }

    /// Index of the first event that is not before `tick`.
    [[nodiscard]] std::size_t firstEventAt(std::uint32_t tick) const;
    /// What the events before `index` have left behind. Takes well under a millisecond wherever it is.
    [[nodiscard]] ChasedState stateBefore(std::size_t index) const;

private:
    class Builder;
    explicit Timeline(Division division) : tempoMap_(division) {}

    // The state after this many events, every 65,536 of them or a few more.
    struct Checkpoint {
        std::size_t events = 0;
        ChasedState state;
    };
    static constexpr std::size_t checkpointInterval = 1 << 16;

    std::vector<TimelineEvent, LargePageAllocator<TimelineEvent>> events_;
    std::vector<Checkpoint> checkpoints_;
    TempoMap tempoMap_;
    double duration_ = 0;
};

} // namespace tambrel
