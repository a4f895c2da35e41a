#pragma once

#include <fluidsynth.h>

#include <cstdint>

namespace tambrel {

/// Controllers that no song reaches: what songs say in other ways goes through them to the modulators. All
/// are centred on 64. Constants; any thread.
namespace PrivateController {

inline constexpr std::uint8_t modulationDepth = 102; // Tens of cents beyond what the wheel does by itself.
inline constexpr std::uint8_t keyShift = 103;        // Semitones.
inline constexpr std::uint8_t fineTuning = 104;      // Cents.

constexpr bool contains(std::uint8_t controller) {
    return controller >= modulationDepth && controller <= fineTuning;
}

} // namespace PrivateController

/// Has every voice of every bank follow the sound controllers, the soft pedal, polyphonic pressure and the
/// private controllers, unless the bank itself says otherwise. Allocates.
void addSoundModulators(fluid_synth_t& synth);

} // namespace tambrel
