#include "OutputWatch.h"

#include <utility>

namespace tambrel {
namespace {

constexpr std::chrono::milliseconds retryInterval(300);

} // namespace

void OutputWatch::look(bool isPlaying) {
    if (!output_.isWanted())
        return;
    if (output_.state() == AudioOutput::State::open)
        lookAtOpen(isPlaying);
    else if (output_.state() == AudioOutput::State::failed)
        lookAtFailed();
}

void OutputWatch::lookAtOpen(bool isPlaying) {
    if (output_.hasDied()) {
        onNotice("Sound output lost; opening it again");
        setLost(true);
        output_.reopen();
        return;
    }
    if (isLost_)
        onNotice("Sound output opened again");
    setLost(false);
    const std::uint64_t thread = output_.usualThread();
    if (std::exchange(thread_, thread) != thread && thread != 0 && onThread)
        onThread(thread);
    const std::uint64_t underruns = output_.underruns();
    if (std::exchange(underruns_, underruns) < underruns && isPlaying)
        onNotice("Sound output ran out of sound; underruns so far " + std::to_string(underruns));
}

void OutputWatch::lookAtFailed() {
    const auto now = std::chrono::steady_clock::now();
    if (!isLost_) {
        const std::string reason = output_.failureReason();
        output_.close();
        onFailure(reason);
    } else if (now - lastAttempt_ > retryInterval) {
        lastAttempt_ = now;
        output_.reopen();
    }
}

void OutputWatch::release() {
    setLost(false);
    thread_ = 0;
    output_.close();
}

void OutputWatch::setLost(bool isLost) {
    if (std::exchange(isLost_, isLost) != isLost && onLoss)
        onLoss(isLost);
}

} // namespace tambrel
