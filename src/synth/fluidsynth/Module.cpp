#include "FluidAudioDriver.h"
#include "FluidSettings.h"
#include "FluidSynthModule.h"
#include "FluidSynthesizer.h"

#include <dlfcn.h>

// FluidSynth renders each block's effects in a parallel region of one thread, for which OpenMP's run time
// allocates and frees memory. This definition, which FluidSynth finds before the run time's, does without.
// Regions of several threads, which there are while a bank is loaded, go on to the run time.
extern "C" [[gnu::visibility("default")]] void GOMP_parallel(void (*region)(void*), void* data,
                                                             unsigned threads, unsigned flags) {
    if (threads == 1) {
        region(data);
        return;
    }
    static void* const library = dlopen("libgomp.so.1", RTLD_NOW | RTLD_NOLOAD);
    static const auto runTime = reinterpret_cast<decltype(&GOMP_parallel)>(dlsym(library, "GOMP_parallel"));
    runTime(region, data, threads, flags);
}

extern "C" [[gnu::visibility("default")]] const tambrel::FluidSynthModule& tambrelFluidSynthModule() {
    using namespace tambrel;
    static constexpr FluidSynthModule module{
        .version = []() -> const char* { return fluid_version_str(); },
        .makeSynthesizer = [](double sampleRate, Effects effects) -> std::unique_ptr<Synthesizer> {
            return std::make_unique<FluidSynthesizer>(sampleRate, effects);
        },
        .openDriver = openFluidAudioDriver,
        .driverFailures = fluidStrayErrors};
    return module;
}
