#include "AudioDrivers.h"

#include "SynthesizerFactory.h"

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

} // namespace

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
        if (name == silentDriverName)
            return openSilentDriver(sampleRate, source);
        try {
            return openFluidSynthDriver(name, sampleRate, source);
        } catch (const AudioDriverError& error) {
            answers += (answers.empty() ? "" : "; ") + withoutFullStop(error.what());
        }
    }
    throw AudioDriverError("No sound output could be opened. Tried " + answers + ".");
}

} // namespace tambrel
