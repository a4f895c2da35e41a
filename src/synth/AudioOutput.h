#pragma once

#include "AudioDrivers.h"
#include "PlaybackBuffer.h"
#include "SerialExecutor.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tambrel {

/// The audio device, opened and closed off the main thread, since either may block. Main thread only, but for
/// the rendering.
class AudioOutput final : private AudioSource {
public:
    enum class State { closed, open, failed };

    /// `sequencer` and `executor` outlive this object, and `executor` has run dry when it is destroyed.
    AudioOutput(Sequencer& sequencer, SerialExecutor& executor, std::vector<std::string> driverNames,
                double sampleRate, AudioDriverOpener opener = openAudioDriver);

    /// Begins to open the device, unless that was done. `state` tells what came of it.
    void open();
    /// Begins to close the device; a sound that is fading out is heard to its end.
    void close();
    /// Begins to open anew a device that was lost: by the driver that has worked before, since another one
    /// might take the hardware from a sound server that is just starting again.
    void reopen();
    [[nodiscard]] bool isWanted() const { return wanted_; }
    /// True when there is no device and none is being opened, so that nothing renders.
    [[nodiscard]] bool isClosed() const {
        return !wanted_ && pendingJobs_.load(std::memory_order_acquire) == 0;
    }
    [[nodiscard]] State state() const { return state_.load(std::memory_order_acquire); }
    /// Which drivers were tried and what they answered; only in State::failed.
    [[nodiscard]] const std::string& failureReason() const { return failureReason_; }

    /// The sequencer has an order: it is to be heard soon.
    void respond();
    /// 0 (silence) to 1 (as it comes), on top of everything that sounds.
    void setVolume(double volume);
    [[nodiscard]] double volume() { return buffer_.volume().get(); }
    /// What is heard of the sequencer.
    [[nodiscard]] const PlaybackBuffer& sound() const { return buffer_; }
    /// Renders until nothing sounds; only while `isClosed`.
    void silence();

    /// True when an open device has given up or has asked for no sound for too long. To be asked regularly.
    [[nodiscard]] bool hasDied();
    /// Of the open device; empty without one.
    [[nodiscard]] std::string driverName() const;
    /// How often the open device has run out of sound; 0 without one.
    [[nodiscard]] std::uint64_t underruns() const;
    /// The kernel's number of the open device's thread, if it might do with a higher priority; else 0.
    [[nodiscard]] std::uint64_t usualThread() const;

private:
    void renderAudio(float* left, float* right, int frames) noexcept override;
    [[nodiscard]] int takeBack(int frames) noexcept override { return buffer_.takeBack(frames); }
    void heard(std::int64_t frames, Time when) noexcept override { buffer_.heard(frames, when); }
    [[nodiscard]] AudioDriver* openDriver() const;
    void submit(void (AudioOutput::*job)());
    void openAny();
    void openSame();
    void openNow(const std::vector<std::string>& driverNames);
    void closeNow();
    void waitForSilence();
    void submitOpening(void (AudioOutput::*job)());

    PlaybackBuffer buffer_;
    SerialExecutor& executor_;
    const std::vector<std::string> driverNames_;
    const double sampleRate_;
    const AudioDriverOpener opener_;

    bool wanted_ = false;
    std::uint64_t callbacksSeen_ = 0;
    std::chrono::steady_clock::time_point lastCallbackSeen_;

    std::atomic<int> pendingJobs_{0};
    std::atomic<State> state_{State::closed};
    std::atomic<std::uint64_t> callbacks_{0};
    std::atomic<std::uint64_t> failuresBefore_{0};
    std::string failureReason_; // Written before state_ says failed, read after.

    // The executor's thread makes and destroys it; the main thread uses it while no job is pending.
    std::unique_ptr<AudioDriver> driver_;
    std::string lastDriverName_; // Only the executor's thread touches this.
};

} // namespace tambrel
