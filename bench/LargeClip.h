#pragma once

#include "MIDIData.h"

#include <cstdint>

namespace tambrel::bench {

/// A Standard MIDI File as a clip that can be imported: a clockstamp before each message, every second
/// channel in MIDI 2.0 messages.
[[nodiscard]] Bytes largeClip(ByteView smf);

/// The yardstick: one hand-written pass over the words of a clip, that knows what a packet is and no more.
struct ClipSums {
    std::uint64_t packets = 0;
    std::uint64_t noteOns = 0;
    std::uint64_t ticks = 0;
    std::uint32_t words = 0; ///< All words added up.
};
[[nodiscard]] ClipSums barePass(ByteView clip);

} // namespace tambrel::bench
