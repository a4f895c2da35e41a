#include "FluidSettings.h"

#include <alsa/asoundlib.h>

#include <atomic>

namespace tambrel {
namespace {

// FluidSynth reports to one global function. While a thread opens something, its messages are gathered for
// the error text; an error from any other thread is a driver that has given up.
thread_local std::string* gatheredMessages = nullptr;
std::atomic<std::uint64_t> strayErrors{0};

void gatherMessage(int level, const char* message, void*) {
    if (gatheredMessages == nullptr) {
        if (level <= FLUID_ERR)
            strayErrors.fetch_add(1, std::memory_order_relaxed);
    } else if (level <= FLUID_ERR) {
        if (!gatheredMessages->empty())
            *gatheredMessages += "; ";
        *gatheredMessages += message;
    }
}

void ignoreALSAMessage(const char*, int, const char*, int, const char*, ...) {}

// What holds for the whole process.
bool prepareFluidSynth() {
    for (const int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG})
        fluid_set_log_function(level, gatherMessage, nullptr);
    static const char* drivers[] = {"alsa", "jack", nullptr};
    fluid_audio_driver_register(drivers);
    snd_lib_error_set_handler(ignoreALSAMessage); // It would write to standard error.
    return true;
}

} // namespace

FluidSettings makeFluidSettings(double sampleRate) {
    [[maybe_unused]] static const bool isPrepared = prepareFluidSynth();
    FluidSettings settings(new_fluid_settings());
    fluid_settings_setnum(settings.get(), "synth.sample-rate", sampleRate);
    return settings;
}

FluidMessageGatherer::FluidMessageGatherer() {
    gatheredMessages = &text_;
}

FluidMessageGatherer::~FluidMessageGatherer() {
    gatheredMessages = nullptr;
}

std::uint64_t fluidStrayErrors() noexcept {
    return strayErrors.load(std::memory_order_relaxed);
}

} // namespace tambrel
