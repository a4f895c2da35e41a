#pragma once

#include "AudioOutput.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace tambrel {

/// Looks after the audio device: has one that died opened anew, and says what became of it. Main thread only.
class OutputWatch {
public:
    /// `output` outlives this object.
    explicit OutputWatch(AudioOutput& output) : output_(output) {}

    /// No device can be opened, with the reason; it is not tried again before somebody opens it.
    std::function<void(const std::string& reason)> onFailure;
    /// A sentence: the device was lost, is back, or has run out of sound.
    std::function<void(const std::string& sentence)> onNotice;
    /// The device was lost and is waited for, or that is over. May be empty.
    std::function<void(bool isLost)> onLoss;

    /// The device that has been opened renders by this thread, which might do with a higher priority. May be
    /// empty.
    std::function<void(std::uint64_t thread)> onThread;

    /// To be called regularly. A device that was lost is tried again and again, until it is released.
    void look(bool isPlaying);
    /// True while it should be called often.
    [[nodiscard]] bool isWaiting() const {
        return output_.isWanted() ? output_.state() != AudioOutput::State::open : !output_.isClosed();
    }
    /// The device is not needed any more.
    void release();

private:
    void lookAtOpen(bool isPlaying);
    void lookAtFailed();
    void setLost(bool isLost);

    AudioOutput& output_;
    bool isLost_ = false;
    std::uint64_t underruns_ = 0;
    std::uint64_t thread_ = 0;
    std::chrono::steady_clock::time_point lastAttempt_;
};

} // namespace tambrel
