#pragma once

#include "FluidSynthModule.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

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
[[nodiscard]] std::unique_ptr<Synthesizer> makeSynthesizer(double sampleRate,
                                                           const SynthesizerOptions& options = {});

/// A synthesizer with its bank.
struct BankedSynthesizer {
    std::unique_ptr<Synthesizer> synthesizer;
    std::filesystem::path bank;
    std::string complaints; ///< Of the banks that were tried before; empty if none.
};

/// With the first of the banks that can be loaded. Throws SoundBankError when none can. May take seconds.
[[nodiscard]] BankedSynthesizer loadSynthesizer(double sampleRate,
                                                const std::vector<std::filesystem::path>& banks,
                                                const SynthesizerOptions& options = {});

} // namespace tambrel
