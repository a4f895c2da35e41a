#include "SynthesizerFactory.h"

#include "SoundBank.h"

#include <dlfcn.h>
#include <filesystem>
#include <initializer_list>
#include <system_error>

// FluidSynth renders each block's effects in a parallel region of one thread, for which OpenMP's run time
// allocates and frees memory. This definition does without. It is the program's own, because nothing else is
// found before the run time's, which comes with Qt as well. Regions of several threads, which there are while
// a bank is loaded, go on to the run time.
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
namespace {

// Beside the program in the build folder, in the library folder of the installation otherwise. Not left to
// the loader's own search path, which a sanitizer's dlopen does not know.
void* openModule() {
    std::error_code error;
    const auto programs = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const char* folder : {"lib/tambrel", TAMBREL_MODULES_FROM_PROGRAMS}) {
        const auto module = programs / folder / TAMBREL_FLUIDSYNTH_MODULE;
        if (std::filesystem::exists(module, error))
            return dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    return nullptr;
}

const FluidSynthModule* loadModule() {
    void* const module = openModule(); // Never unloaded.
    if (module == nullptr)
        return nullptr;
    const auto get = reinterpret_cast<GetFluidSynthModule>(dlsym(module, getFluidSynthModuleName));
    return get == nullptr ? nullptr : &get();
}

} // namespace

const FluidSynthModule* fluidSynth() {
    static const FluidSynthModule* const module = loadModule();
    return module;
}

std::string synthesizerVersion() {
    return std::string("FluidSynth ") + (fluidSynth() != nullptr ? fluidSynth()->version() : "(missing)");
}

std::unique_ptr<Synthesizer> makeSynthesizer(double sampleRate, Effects effects) {
    if (fluidSynth() == nullptr)
        throw SoundBankError(fluidSynthIsMissing);
    return fluidSynth()->makeSynthesizer(sampleRate, effects);
}

BankedSynthesizer loadSynthesizer(double sampleRate, const std::vector<std::filesystem::path>& banks,
                                  Effects effects) {
    auto synthesizer = makeSynthesizer(sampleRate, effects);
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
