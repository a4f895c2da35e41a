#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

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
    /// How often the sound has begun anew, at another place. Asked by the driver's thread.
    [[nodiscard]] virtual std::uint64_t beginnings() const noexcept { return 0; }
};

/// A device that asks its source for sound, from its own thread, from construction to destruction.
class AudioDriver {
public:
    virtual ~AudioDriver() = default;
    /// One of the names that `openAudioDriver` takes.
    [[nodiscard]] virtual std::string name() const = 0;
};

} // namespace tambrel
