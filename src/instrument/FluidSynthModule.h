#pragma once

#include "AudioDriver.h"
#include "Synthesizer.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tambrel {

/// What the module that is linked against FluidSynth offers. It is the only part of Tambrel that knows
/// FluidSynth, and is loaded at run time: FluidSynth takes longer to load than the rest of the program.
struct FluidSynthModule {
    /// FluidSynth's version, such as "2.3.1".
    const char* (*version)();
    /// The sample rate is in frames per second.
    std::unique_ptr<Synthesizer> (*makeSynthesizer)(double sampleRate, const SynthesizerOptions& options);
    /// Opens a device through one of FluidSynth's drivers. May block for some time. Throws AudioDriverError.
    std::unique_ptr<AudioDriver> (*openDriver)(const std::string& name, double sampleRate,
                                               AudioSource& source);
    /// How often a driver has reported that it gave up, in this run of the program. Any thread.
    std::uint64_t (*driverFailures)() noexcept;
};

/// The one function that the module exports, by this name.
using GetFluidSynthModule = const FluidSynthModule* (*)();
inline constexpr const char* getFluidSynthModuleName = "tambrelFluidSynthModule";

} // namespace tambrel
