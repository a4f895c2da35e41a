#pragma once

#include "MIDIData.h"

#include <cstdint>

namespace tambrel::bench {

/// What a pass over a file adds up. The ticks are counted so that no contender may leave them out.
struct WalkSums {
    std::uint64_t noteOns = 0;   ///< Of a velocity other than 0.
    std::uint64_t lastTicks = 0; ///< Ticks of the last events of all tracks, added up.

    bool operator==(const WalkSums&) const = default;
};

/// The yardstick: one hand-written loop over the bytes of a Standard MIDI File, checked against its end, that
/// does what it must and shares no code with the walker. Stops a track at the first defect.
[[nodiscard]] WalkSums bareWalk(ByteView file);

} // namespace tambrel::bench
