#pragma once

#include "MIDIData.h"

#include <cstdint>

namespace tambrel::bench {

/// What a pass over a file adds up. Ticks are counted so that every contender has to read them.
struct WalkSums {
    std::uint64_t noteOns = 0;   ///< With a velocity other than 0.
    std::uint64_t lastTicks = 0; ///< Ticks of the last events of all tracks, added up.

    bool operator==(const WalkSums&) const = default;
};

/// The yardstick: one hand-written, bounds-checked loop over the bytes of a Standard MIDI File, which does
/// the least that is needed and shares no code with the walker. Stops a track at the first defect.
[[nodiscard]] WalkSums bareWalk(ByteView file);

} // namespace tambrel::bench
