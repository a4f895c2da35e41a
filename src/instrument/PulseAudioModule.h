#pragma once

#include "AudioDriver.h"

#include <memory>

namespace tambrel {

/// What the module that is linked against libpulse offers. It is loaded at run time, so that the program runs
/// where libpulse is missing.
struct PulseAudioModule {
    /// Opens a stream on the default sink of the user's server. May block for some time: called on the sound
    /// service's thread. Throws AudioDriverError.
    std::unique_ptr<AudioDriver> (*openDriver)(const ApplicationNames& names, double sampleRate,
                                               AudioSource& source);
};

/// The one function that the module exports, by this name.
using GetPulseAudioModule = const PulseAudioModule* (*)();
inline constexpr const char* getPulseAudioModuleName = "tambrelPulseAudioModule";

} // namespace tambrel
