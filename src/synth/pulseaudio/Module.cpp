#include "PulseAudioDriver.h"
#include "PulseAudioModule.h"

extern "C" [[gnu::visibility("default")]] const tambrel::PulseAudioModule* tambrelPulseAudioModule() {
    using namespace tambrel;
    static constexpr PulseAudioModule module{
        .openDriver = [](const ApplicationNames& names, double sampleRate,
                         AudioSource& source) -> std::unique_ptr<AudioDriver> {
            return std::make_unique<PulseAudioDriver>(names, sampleRate, source);
        }};
    return &module;
}
