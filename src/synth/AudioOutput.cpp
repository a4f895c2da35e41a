#include "AudioOutput.h"

#include <utility>

namespace tambrel {

AudioOutput::AudioOutput(AudioSource& source, SerialExecutor& executor, std::vector<std::string> driverNames,
                         double sampleRate, AudioDriverOpener opener)
    : source_(source),
      executor_(executor),
      driverNames_(std::move(driverNames)),
      sampleRate_(sampleRate),
      opener_(std::move(opener)),
      master_(sampleRate),
      volume_(sampleRate) {}

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
    driver_.reset();
    state_.store(State::closed, std::memory_order_release);
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
    return audioDriverFailures() != failuresBefore_.load(std::memory_order_relaxed) ||
           now - lastCallbackSeen_ > patience;
}

void AudioOutput::renderAudio(float* left, float* right, int frames) noexcept {
    callbacks_.fetch_add(1, std::memory_order_relaxed);
    source_.renderAudio(left, right, frames);
    if (std::exchange(beginnings_, source_.beginnings()) != beginnings_)
        master_.forgetPast();
    master_.process(left, right, frames);
    volume_.process(left, right, frames);
}

} // namespace tambrel
