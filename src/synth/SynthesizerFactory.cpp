#include "SynthesizerFactory.h"

#include "ModuleLoader.h"
#include "SoundBank.h"

#include <dlfcn.h>

// FluidSynth renders each block's effects in a parallel region of one thread, for which OpenMP's run time
// allocates and frees memory. This definition does not. It has to be in the program itself: only there it is
// found before the run time's, which Qt loads too. Regions of several threads, which there are while a bank
// is loaded, go on to the run time.
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

namespace tambrel {

const FluidSynthModule* fluidSynth() {
    static const FluidSynthModule* const module = [] {
        const auto get = reinterpret_cast<GetFluidSynthModule>(
            functionOfModule(TAMBREL_FLUIDSYNTH_MODULE, getFluidSynthModuleName));
        return get == nullptr ? nullptr : get();
    }();
    return module;
}

std::string synthesizerVersion() {
    return std::string("FluidSynth ") + (fluidSynth() != nullptr ? fluidSynth()->version() : "(missing)");
}

std::unique_ptr<Synthesizer> makeSynthesizer(double sampleRate, const SynthesizerOptions& options) {
    if (fluidSynth() == nullptr)
        throw SoundBankError(fluidSynthIsMissing);
    return fluidSynth()->makeSynthesizer(sampleRate, options);
}

BankedSynthesizer loadSynthesizer(double sampleRate, const std::vector<std::filesystem::path>& banks,
                                  const SynthesizerOptions& options) {
    auto synthesizer = makeSynthesizer(sampleRate, options);
    std::string complaints;
    for (const auto& bank : banks) {
        try {
            requireSoundBankFile(bank);
            synthesizer->loadSoundBank(bank);
            return {std::move(synthesizer), bank, complaints};
        } catch (const SoundBankError& error) {
            complaints += (complaints.empty() ? "" : " ") + std::string(error.what());
        }
    }
    throw SoundBankError(complaints);
}

} // namespace tambrel
