#pragma once

#include "AudioDriver.h"

#include <memory>
#include <string>

namespace tambrel {

/// Opens a device through one of FluidSynth's own drivers. May block for some time: called on the sound
/// service's thread. Throws AudioDriverError with what FluidSynth reported.
[[nodiscard]] std::unique_ptr<AudioDriver> openFluidAudioDriver(const std::string& name, double sampleRate,
                                                                AudioSource& source);

} // namespace tambrel
