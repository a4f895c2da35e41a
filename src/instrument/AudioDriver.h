#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace tambrel {

/// No audio device could be opened; `what` says which drivers were tried and what each answered.
class AudioDriverError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What an audio driver plays. Called by the driver's thread.
class AudioSource {
public:
    using Time = std::chrono::steady_clock::time_point;

    virtual ~AudioSource() = default;
    virtual void renderAudio(float* left, float* right, int frames) noexcept = 0;
    /// Takes back the last frames rendered, at most `frames`, which will not be heard; rendering goes on
    /// where they began. Returns how many it took back.
    [[nodiscard]] virtual int takeBack(int /*frames*/) noexcept { return 0; }
    /// At `when`, the first `frames` frames since the driver was opened have been heard, not counting those
    /// taken back; Time::max() before the device plays. Without this call, frames count as heard when they
    /// are rendered.
    virtual void heard(std::int64_t /*frames*/, Time /*when*/) noexcept {}
};

/// A device that asks its source for sound, from its own thread, from construction to destruction.
class AudioDriver {
public:
    virtual ~AudioDriver() = default;
    /// One of the names that `openAudioDriver` takes.
    [[nodiscard]] virtual std::string name() const = 0;
    /// The source has changed its sound: a driver that renders far ahead takes back what has not been heard,
    /// and has it rendered anew. Any thread; returns at once.
    virtual void respond() noexcept {}
    /// True when the device is gone. Any thread.
    [[nodiscard]] virtual bool hasFailed() const noexcept { return false; }
    /// The kernel's number of the thread that renders, where that is the driver's and of usual priority; else
    /// 0. Any thread.
    [[nodiscard]] virtual std::uint64_t usualThread() const noexcept { return 0; }
    /// Underruns since the driver was opened. Any thread.
    [[nodiscard]] virtual std::uint64_t underruns() const noexcept { return 0; }
};

/// How the sound server names the program. Any thread.
struct ApplicationNames {
    std::string name;
    std::string icon;
};

} // namespace tambrel
