#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tambrel {

/// No audio device could be opened; `what` says which drivers were tried and what each answered.
class AudioDriverError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What an audio driver plays. `renderAudio` is called by the driver's thread.
class AudioSource {
public:
    virtual ~AudioSource() = default;
    virtual void renderAudio(float* left, float* right, int frames) noexcept = 0;
};

/// A device that asks its source for sound, from its own thread, from construction to destruction.
class AudioDriver {
public:
    virtual ~AudioDriver() = default;
    /// One of the names that `openAudioDriver` takes.
    [[nodiscard]] virtual std::string name() const = 0;
};

/// Drivers tried when none is named, in this order: PulseAudio (which reaches PipeWire too), ALSA, JACK.
[[nodiscard]] std::vector<std::string> defaultAudioDrivers();

/// Renders in real time and plays nothing. Never chosen by itself.
inline constexpr std::string_view silentDriverName = "silent";

/// Opens the first of the named drivers that works. May block for some time. Throws AudioDriverError.
[[nodiscard]] std::unique_ptr<AudioDriver> openAudioDriver(const std::vector<std::string>& names,
                                                           double sampleRate, AudioSource& source);

[[nodiscard]] std::unique_ptr<AudioDriver> openSilentDriver(double sampleRate, AudioSource& source);

/// How often a driver has reported that it gave up, in this run of the program. Any thread.
[[nodiscard]] std::uint64_t audioDriverFailures() noexcept;

} // namespace tambrel
