#pragma once

#include "MIDIData.h"

namespace tambrel {

/// Makes the data that plays while Loudness is on. Pure, any thread.
namespace MIDILoudnessProcessor {

/// A copy of a Standard MIDI File in which every struck note of the drum and bass parts has velocity 127. No
/// other byte changes. A drum or bass part is known by channel 10, by the track's name so far, or by the
/// channel's latest program in the same track. Data without a header or a track comes back unchanged; a
/// malformed track is rewritten up to the defect.
[[nodiscard]] MIDIData boostedDrumsAndBass(const MIDIData& data);

} // namespace MIDILoudnessProcessor
} // namespace tambrel
