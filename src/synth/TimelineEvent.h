#pragma once

#include "MIDIMessage.h"

#include <cstdint>

namespace tambrel {

/// One message and its time. Eight bytes, so that a song of tens of millions of events stays in memory.
struct TimelineEvent {
    std::uint32_t tick = 0;
    MIDIMessage message;

    bool operator==(const TimelineEvent&) const = default;
};
static_assert(sizeof(TimelineEvent) == 8);

} // namespace tambrel
