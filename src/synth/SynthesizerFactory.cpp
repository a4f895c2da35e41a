#include "SynthesizerFactory.h"

#include "SoundBank.h"

#include <dlfcn.h>
#include <filesystem>
#include <initializer_list>
#include <system_error>

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
