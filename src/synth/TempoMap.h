#pragma once

#include "SMFHeader.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tambrel {

/// Relates ticks to seconds (SMF 1.0, RP-001). Built once in order of ticks, then only read, from any thread.
class TempoMap {
public:
    /// Of ticks per quarter note, at 120 beats per minute until a tempo is set; or of time code, which no
    /// tempo changes.
    explicit TempoMap(Division division);

    /// A tempo holds from `tick` on, which is never below the tick of the call before; of several at one tick
    /// the last counts. 0 microseconds is no tempo and is ignored.
    void setTempo(std::uint32_t tick, std::uint32_t microsecondsPerQuarter);

    [[nodiscard]] double secondsAt(std::uint32_t tick) const;
    /// The last tick that is not later than `seconds`, which is not negative.
    [[nodiscard]] std::uint32_t tickAt(double seconds) const;
    /// The first tick that is not earlier than `seconds`.
    [[nodiscard]] std::uint32_t firstTickFrom(double seconds) const;

private:
    struct Segment {
        std::uint32_t tick;
        double seconds; // At `tick`.
        double secondsPerTick;
    };

public:
    /// Answers for times that never decrease, in constant time on average.
    class Cursor {
    public:
        explicit Cursor(const TempoMap& map, double seconds = 0);
        [[nodiscard]] std::uint32_t tickAt(double seconds);

    private:
        const std::vector<Segment>* segments_;
        std::size_t index_;
    };

private:
    [[nodiscard]] std::size_t segmentAt(double seconds) const;
    [[nodiscard]] static double secondsIn(const Segment& segment, std::uint32_t tick);
    [[nodiscard]] static std::uint32_t tickIn(const Segment& segment, double seconds);

    std::vector<Segment> segments_; // Never empty; the first begins at tick 0.
    double ticksPerQuarter_ = 0;    // 0 for a time-code division.
};

} // namespace tambrel
