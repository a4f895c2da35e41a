#include "AudioOutput.h"

#include <array>
#include <thread>
#include <utility>

namespace tambrel {

AudioOutput::AudioOutput(Sequencer& sequencer, SerialExecutor& executor, std::vector<std::string> driverNames,
                         double sampleRate, AudioDriverOpener opener)
    : buffer_(sequencer, sampleRate),
      executor_(executor),
      driverNames_(std::move(driverNames)),
      sampleRate_(sampleRate),
      opener_(std::move(opener)) {}

void AudioOutput::open() {
    submitOpening(&AudioOutput::openAny);
}

void AudioOutput::reopen() {
    close();
    submitOpening(&AudioOutput::openSame);
}

void AudioOutput::submitOpening(void (AudioOutput::*job)()) {
    if (std::exchange(wanted_, true))
        return;
    state_.store(State::closed, std::memory_order_relaxed);
    lastCallbackSeen_ = std::chrono::steady_clock::now();
    submit(job);
}

void AudioOutput::openAny() {
    openNow(driverNames_);
}

void AudioOutput::openSame() {
    openNow({lastDriverName_});
}

void AudioOutput::openNow(const std::vector<std::string>& driverNames) {
    failuresBefore_.store(audioDriverFailures(), std::memory_order_relaxed);
    buffer_.beginStream();
    try {
        driver_ = opener_(driverNames, sampleRate_, *this);
        lastDriverName_ = driver_->name();
        state_.store(State::open, std::memory_order_release);
    } catch (const AudioDriverError& error) {
        failureReason_ = error.what();
        state_.store(State::failed, std::memory_order_release);
    }
}

void AudioOutput::close() {
    if (!std::exchange(wanted_, false))
        return;
    submit(&AudioOutput::closeNow);
}

void AudioOutput::closeNow() {
    if (driver_ != nullptr && !driver_->hasFailed())
        waitForSilence();
    driver_.reset();
    buffer_.endStream();
    state_.store(State::closed, std::memory_order_release);
}

void AudioOutput::waitForSilence() {
    using namespace std::chrono_literals;
    const auto deadline = std::chrono::steady_clock::now() + 150ms; // Where nothing has told it to be silent.
    while (!buffer_.isQuiet() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(5ms);
}

AudioDriver* AudioOutput::openDriver() const {
    const bool isSteady = wanted_ && pendingJobs_.load(std::memory_order_acquire) == 0;
    return isSteady ? driver_.get() : nullptr;
}

void AudioOutput::respond() {
    if (AudioDriver* const driver = openDriver())
        driver->respond();
}

void AudioOutput::setVolume(double volume) {
    buffer_.volume().set(volume);
    respond();
}

std::string AudioOutput::driverName() const {
    const AudioDriver* const driver = openDriver();
    return driver == nullptr ? std::string() : driver->name();
}

std::uint64_t AudioOutput::underruns() const {
    const AudioDriver* const driver = openDriver();
    return driver == nullptr ? 0 : driver->underruns();
}

std::uint64_t AudioOutput::usualThread() const {
    const AudioDriver* const driver = openDriver();
    return driver == nullptr ? 0 : driver->usualThread();
}

// Without a device that renders, carries out the order to halt, which lets go of the song.
void AudioOutput::silence() {
    std::array<float, synthesizerBlock> left{};
    std::array<float, synthesizerBlock> right{};
    while (!buffer_.isSilent())
        buffer_.renderAudio(left.data(), right.data(), synthesizerBlock);
}

void AudioOutput::submit(void (AudioOutput::*job)()) {
    pendingJobs_.fetch_add(1, std::memory_order_relaxed);
    executor_.run([this, job] {
        (this->*job)();
        pendingJobs_.fetch_sub(1, std::memory_order_release);
    });
}

bool AudioOutput::hasDied() {
    // A sound server may take two seconds to start a stream; one that runs asks every 20 ms or so.
    constexpr std::chrono::milliseconds patience(3000);
    const auto now = std::chrono::steady_clock::now();
    const std::uint64_t callbacks = callbacks_.load(std::memory_order_relaxed);
    if (state() != State::open || callbacks != std::exchange(callbacksSeen_, callbacks)) {
        lastCallbackSeen_ = now;
        return false;
    }
    const AudioDriver* const driver = openDriver();
    return (driver != nullptr && driver->hasFailed()) ||
           audioDriverFailures() != failuresBefore_.load(std::memory_order_relaxed) ||
           now - lastCallbackSeen_ > patience;
}

void AudioOutput::renderAudio(float* left, float* right, int frames) noexcept {
    callbacks_.fetch_add(1, std::memory_order_relaxed);
    buffer_.renderAudio(left, right, frames);
}

} // namespace tambrel
