#include "TempoMap.h"

#include <algorithm>
#include <cassert>
#include <limits>

namespace tambrel {
namespace {

constexpr double defaultSecondsPerQuarter = 0.5;

} // namespace

TempoMap::TempoMap(Division division) {
    if (division.isTimeCode()) {
        segments_.push_back({0, 0, 1 / (division.framesPerSecond() * division.ticks())});
    } else {
        ticksPerQuarter_ = division.ticks();
        segments_.push_back({0, 0, defaultSecondsPerQuarter / ticksPerQuarter_});
    }
}

void TempoMap::setTempo(std::uint32_t tick, std::uint32_t microsecondsPerQuarter) {
    if (ticksPerQuarter_ == 0 || microsecondsPerQuarter == 0)
        return;
    constexpr double secondsPerMicrosecond = 1e-6;
    const double secondsPerTick = microsecondsPerQuarter * secondsPerMicrosecond / ticksPerQuarter_;
    assert(tick >= segments_.back().tick);
    if (segments_.back().tick == tick)
        segments_.back().secondsPerTick = secondsPerTick;
    else
        segments_.push_back({tick, secondsIn(segments_.back(), tick), secondsPerTick});
}

double TempoMap::secondsAt(std::uint32_t tick) const {
    const auto next = std::ranges::upper_bound(segments_, tick, {}, &Segment::tick);
    return secondsIn(*std::prev(next), tick);
}

std::uint32_t TempoMap::tickAt(double seconds) const {
    return tickIn(segments_[segmentAt(seconds)], seconds);
}

std::uint32_t TempoMap::firstTickFrom(double seconds) const {
    constexpr double roundingSlack = 1e-9;
    const std::uint32_t tick = tickAt(seconds);
    const bool isEarlier = secondsAt(tick) < seconds - roundingSlack;
    return isEarlier && tick < std::numeric_limits<std::uint32_t>::max() ? tick + 1 : tick;
}

std::size_t TempoMap::segmentAt(double seconds) const {
    const auto next = std::ranges::upper_bound(segments_, seconds, {}, &Segment::seconds);
    return next == segments_.begin() ? 0 : static_cast<std::size_t>(next - segments_.begin()) - 1;
}

double TempoMap::secondsIn(const Segment& segment, std::uint32_t tick) {
    return segment.seconds + (tick - segment.tick) * segment.secondsPerTick;
}

std::uint32_t TempoMap::tickIn(const Segment& segment, double seconds) {
    // Far below a tick of any tempo: a time computed from a tick must give that tick back.
    constexpr double roundingSlack = 1e-6;
    const double ticks = (seconds - segment.seconds) / segment.secondsPerTick + roundingSlack;
    const double tick = segment.tick + std::max(ticks, 0.0);
    constexpr double last = std::numeric_limits<std::uint32_t>::max();
    return tick < last ? static_cast<std::uint32_t>(tick) : std::numeric_limits<std::uint32_t>::max();
}

TempoMap::Cursor::Cursor(const TempoMap& map, double seconds)
    : segments_(&map.segments_), index_(map.segmentAt(seconds)) {}

std::uint32_t TempoMap::Cursor::tickAt(double seconds) {
    while (index_ + 1 < segments_->size() && (*segments_)[index_ + 1].seconds <= seconds)
        ++index_;
    return tickIn((*segments_)[index_], seconds);
}

} // namespace tambrel
