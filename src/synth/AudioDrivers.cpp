#include "AudioDrivers.h"

#include "ApplicationInfo.h"
#include "ModuleLoader.h"
#include "PulseAudioModule.h"
#include "SynthesizerFactory.h"

#include <cstdlib>

namespace tambrel {
namespace {

std::string withoutFullStop(std::string text) {
    while (text.ends_with('.'))
        text.pop_back();
    return text;
}

std::unique_ptr<AudioDriver> openFluidSynthDriver(const std::string& name, double sampleRate,
                                                  AudioSource& source) {
    if (fluidSynth() == nullptr)
        throw AudioDriverError(name + ": " + fluidSynthIsMissing);
    return fluidSynth()->openDriver(name, sampleRate, source);
}

std::unique_ptr<AudioDriver> openPulseAudio(double sampleRate, AudioSource& source) {
    const auto get = reinterpret_cast<GetPulseAudioModule>(
        functionOfModule(TAMBREL_PULSEAUDIO_MODULE, getPulseAudioModuleName));
    if (get == nullptr)
        throw AudioDriverError("pulseaudio: The library libpulse.so.0 could not be loaded");
    const ApplicationInfo& info = ApplicationInfo::current();
    return get()->openDriver({info.displayName.value_or("Tambrel"), info.identifier.value_or("tambrel")},
                             sampleRate, source);
}

std::unique_ptr<AudioDriver> openOne(const std::string& name, double sampleRate, AudioSource& source) {
    if (name == silentDriverName)
        return openSilentDriver(sampleRate, source);
    if (name == "pulseaudio")
        return openPulseAudio(sampleRate, source);
    return openFluidSynthDriver(name, sampleRate, source);
}

} // namespace

void prepareForAudioDrivers() {
    constexpr int keepTheUsers = 0;
    setenv("JACK_NO_START_SERVER", "1", keepTheUsers);
}

std::uint64_t audioDriverFailures() {
    return fluidSynth() == nullptr ? 0 : fluidSynth()->driverFailures();
}

std::vector<std::string> defaultAudioDrivers() {
    return {"pulseaudio", "alsa", "jack"};
}

std::unique_ptr<AudioDriver> openAudioDriver(const std::vector<std::string>& names, double sampleRate,
                                             AudioSource& source) {
    std::string answers;
    for (const std::string& name : names) {
        try {
            return openOne(name, sampleRate, source);
        } catch (const AudioDriverError& error) {
            answers += (answers.empty() ? "" : "; ") + withoutFullStop(error.what());
        }
    }
    throw AudioDriverError("No sound output could be opened. Tried " + answers + ".");
}

} // namespace tambrel
