#include "FluidAudioDriver.h"

#include "FluidSettings.h"

#include <algorithm>

namespace tambrel {
namespace {

constexpr int framesPerPeriod = 1024;
constexpr int periods = 2;

class FluidAudioDriver final : public AudioDriver {
public:
    FluidAudioDriver(const std::string& name, double sampleRate, AudioSource& source)
        : name_(name), settings_(makeFluidSettings(sampleRate)), source_(source) {
        FluidMessageGatherer messages;
        fluid_settings_setstr(settings_.get(), "audio.driver", name.c_str());
        fluid_settings_setint(settings_.get(), "audio.period-size", framesPerPeriod);
        fluid_settings_setint(settings_.get(), "audio.periods", periods);
        fluid_settings_setstr(settings_.get(), "audio.jack.id", "Tambrel");
        driver_.reset(new_fluid_audio_driver2(settings_.get(), callback, this));
        if (!driver_)
            throw AudioDriverError(name + ": " +
                                   (messages.text().empty() ? "not available" : messages.text()));
    }

    [[nodiscard]] std::string name() const override { return name_; }

private:
    static int callback(void* self, int frames, int, float**, int, float* out[]) {
        static_cast<FluidAudioDriver*>(self)->play(out[0], out[1], frames);
        return FLUID_OK;
    }

    // When the device asks for a period, one more still lies before the loudspeaker.
    void play(float* left, float* right, int frames) noexcept {
        source_.heard(std::max<std::int64_t>(rendered_ - frames, 0), std::chrono::steady_clock::now());
        source_.renderAudio(left, right, frames);
        rendered_ += frames;
    }

    std::string name_;
    FluidSettings settings_;
    AudioSource& source_;
    std::int64_t rendered_ = 0;
    // Last: its thread uses all of the above.
    std::unique_ptr<fluid_audio_driver_t, DestroyedBy<delete_fluid_audio_driver>> driver_;
};

} // namespace

std::unique_ptr<AudioDriver> openFluidAudioDriver(const std::string& name, double sampleRate,
                                                  AudioSource& source) {
    return std::make_unique<FluidAudioDriver>(name, sampleRate, source);
}

} // namespace tambrel
