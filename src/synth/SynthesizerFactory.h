#pragma once

#include "FluidSynthModule.h"

namespace tambrel {

/// The module with FluidSynth in it; null where it could not be loaded, which `fluidSynthIsMissing` says.
/// The first call loads it, which takes tens of milliseconds: off the main thread, if somebody waits. Any
/// thread.
[[nodiscard]] const FluidSynthModule* fluidSynth();

/// For the user's eyes.
inline constexpr const char* fluidSynthIsMissing =
    "The synthesizer library libfluidsynth.so.3 could not be loaded.";

/// The name and version of the synthesizer in use.
[[nodiscard]] std::string synthesizerVersion();

/// A synthesizer without a sound bank. Throws SoundBankError where FluidSynth is missing.
[[nodiscard]] std::unique_ptr<Synthesizer> makeSynthesizer(double sampleRate, Effects effects = Effects::on);

} // namespace tambrel
