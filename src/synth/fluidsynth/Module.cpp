#include "FluidAudioDriver.h"
#include "FluidSettings.h"
#include "FluidSynthModule.h"
#include "FluidSynthesizer.h"

extern "C" [[gnu::visibility("default")]] const tambrel::FluidSynthModule* tambrelFluidSynthModule() {
    using namespace tambrel;
    static constexpr FluidSynthModule module{
        .version = []() -> const char* { return fluid_version_str(); },
        .makeSynthesizer = [](double sampleRate,
                              const SynthesizerOptions& options) -> std::unique_ptr<Synthesizer> {
            return std::make_unique<FluidSynthesizer>(sampleRate, options);
        },
        .openDriver = openFluidAudioDriver,
        .driverFailures = fluidStrayErrors};
    return &module;
}
