#include "PlaybackBuffer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

namespace tambrel {
namespace {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;

constexpr int fadeFrames = 5 * synthesizerBlock; // 7 ms at 48 kHz: short, and free of a click.
constexpr int framesAtOnce = 4 * synthesizerBlock;
constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t atOnce = std::numeric_limits<std::int64_t>::min(); // Instead of a clock.

} // namespace

PlaybackBuffer::PlaybackBuffer(Sequencer& sequencer, double sampleRate, Clock clock)
    : sequencer_(sequencer),
      sampleRate_(sampleRate),
      clock_(clock),
      master_(sampleRate),
      volume_(sampleRate),
      past_(capacity),
      ahead_(std::size_t{2} * capacity + framesAtOnce),
      clockZero_(atOnce) {}

// --- Control side ---

std::int64_t PlaybackBuffer::heardFrames() const {
    const std::int64_t zero = clockZero_.load(std::memory_order_acquire);
    const std::int64_t written = written_.load(std::memory_order_acquire);
    if (zero == atOnce)
        return written;
    const std::int64_t begin = streamBegins_.load(std::memory_order_relaxed);
    if (zero == never)
        return begin;
    const nanoseconds now = clock_().time_since_epoch();
    const double seconds = std::chrono::duration<double>(now - nanoseconds(zero)).count();
    return std::max(begin, std::min<std::int64_t>(written, std::llround(seconds * sampleRate_)));
}

std::int64_t PlaybackBuffer::songFrame() const {
    return heardFrames() - songBegins_.load(std::memory_order_acquire);
}

double PlaybackBuffer::position() const {
    return sequencer_.positionAt(songFrame());
}

bool PlaybackBuffer::hasFinished() const {
    return sequencer_.hasFinished() && songFrame() >= sequencer_.endFrame();
}

// --- While no driver renders ---

void PlaybackBuffer::beginStream() {
    streamBegins_.store(frame_, std::memory_order_relaxed);
}

void PlaybackBuffer::endStream() {
    static_cast<void>(giveAgain(static_cast<int>(frame_ - heardFrames())));
    isTakenBack_ = false;
    clockZero_.store(atOnce, std::memory_order_release);
}

// --- Rendering side ---

void PlaybackBuffer::renderAudio(float* left, float* right, int frames) noexcept {
    if (!isTakenBack_)
        takeOrder();
    for (int at = 0; at < frames; ++at) {
        if (wish_ && fadeLeft_ == 0)
            carryOut();
        Frame frame = nextFrame();
        if (fadeLeft_ > 0) {
            const float gain = static_cast<float>(fadeLeft_--) / fadeFrames;
            frame = {frame.left * gain, frame.right * gain};
        }
        past(frame_++) = frame;
        left[at] = frame.left;
        right[at] = frame.right;
    }
    volume_.process(left, right, frames);
    written_.store(frame_, std::memory_order_release);
}

// An order that came into force where the driver merely asks for more would be heard that much later.
int PlaybackBuffer::takeBack(int frames) noexcept {
    isTakenBack_ = true;
    const int count = giveAgain(frames);
    takeOrder();
    return count;
}

int PlaybackBuffer::giveAgain(int frames) noexcept {
    const auto most = std::min<std::int64_t>(frame_, capacity - again_);
    const auto count = static_cast<int>(std::clamp<std::int64_t>(frames, 0, most));
    frame_ -= count;
    again_ += count;
    written_.store(frame_, std::memory_order_release);
    return count;
}

// What the driver says is a little off each time, so the clock follows slowly, unless it is plainly wrong.
void PlaybackBuffer::heard(std::int64_t frames, Time when) noexcept {
    constexpr std::int64_t plainlyWrong = 20'000'000;
    constexpr std::int64_t slowness = 8;
    if (when == Time::max())
        return clockZero_.store(never, std::memory_order_release);
    const auto all = static_cast<double>(streamBegins_.load(std::memory_order_relaxed) + frames);
    const std::int64_t zero =
        duration_cast<nanoseconds>(when.time_since_epoch()).count() - std::llround(all / sampleRate_ * 1e9);
    const std::int64_t before = clockZero_.load(std::memory_order_relaxed);
    const bool isKnown = before != never && before != atOnce && std::abs(zero - before) < plainlyWrong;
    clockZero_.store(isKnown ? before + (zero - before) / slowness : zero, std::memory_order_release);
}

PlaybackBuffer::Frame PlaybackBuffer::nextFrame() noexcept {
    if (again_ > 0) {
        --again_;
        return past(frame_);
    }
    if (isStill_)
        return {};
    if (aheadAt_ == aheadEnd_ && sequencer_.isSoundless()) { // It has rung out.
        goStill();
        return {};
    }
    if (aheadAt_ == aheadEnd_)
        renderAhead();
    return ahead_[aheadAt_++];
}

void PlaybackBuffer::renderAhead() noexcept {
    std::array<float, framesAtOnce> left;
    std::array<float, framesAtOnce> right;
    sequencer_.render(left.data(), right.data(), framesAtOnce);
    master_.process(left.data(), right.data(), framesAtOnce);
    if (!keepsAhead_ || aheadEnd_ + framesAtOnce > ahead_.size())
        aheadAt_ = aheadEnd_ = 0;
    for (std::size_t at = 0; at < framesAtOnce; ++at)
        ahead_[aheadEnd_++] = {left[at], right[at]};
}

// --- Orders ---

void PlaybackBuffer::takeOrder() noexcept {
    const auto wish = sequencer_.takeOrder();
    if (!wish)
        return;
    if (wish->kind == Sequencer::OrderKind::resume && !isStill_ && !keepsAhead_)
        return sequencer_.carryOut(); // Of a pause that nobody has seen.
    wish_ = wish;
    if (wish->kind == Sequencer::OrderKind::pause && !isStill_ && !keepsAhead_)
        keepAhead();
    if (fadeLeft_ == 0 && !isQuietAhead())
        fadeLeft_ = fadeFrames;
}

// What has been given out and will not be heard goes before what has only been rendered. What was given out
// before the song began is none of it.
void PlaybackBuffer::keepAhead() noexcept {
    const std::int64_t from = std::clamp(stateBegan_, frame_, frame_ + again_);
    const auto count = static_cast<std::size_t>(frame_ + again_ - from);
    const std::size_t rest = std::min<std::size_t>(aheadEnd_ - aheadAt_, capacity);
    std::memmove(&ahead_[count], &ahead_[aheadAt_], rest * sizeof(Frame));
    for (std::size_t at = 0; at < count; ++at)
        ahead_[at] = past(from + static_cast<std::int64_t>(at));
    aheadAt_ = count;
    aheadEnd_ = count + rest;
    keepsAhead_ = true;
    songFrameKept_ = from - songBegins_.load(std::memory_order_relaxed);
}

// There is nothing to fade out.
bool PlaybackBuffer::isQuietAhead() noexcept {
    const int count = std::min(again_, fadeFrames);
    for (int at = 0; at < count; ++at) {
        const Frame& frame = past(frame_ + at);
        if (frame.left != 0 || frame.right != 0)
            return false;
    }
    return isStill_ || count == fadeFrames;
}

void PlaybackBuffer::carryOut() noexcept {
    const Sequencer::Wish wish = *std::exchange(wish_, std::nullopt);
    again_ = 0;
    stateBegan_ = frame_;
    switch (wish.kind) {
    case Sequencer::OrderKind::play:
        forgetAhead();
        begin(wish.firstFrame - master_.latency());
        break;
    case Sequencer::OrderKind::halt:
        forgetAhead();
        goStill();
        break;
    case Sequencer::OrderKind::pause:
        goStill();
        break;
    case Sequencer::OrderKind::resume:
        goOn();
        break;
    }
    sequencer_.carryOut();
}

void PlaybackBuffer::begin(std::int64_t songFrame) noexcept {
    isStill_ = false;
    songBegins_.store(frame_ - songFrame, std::memory_order_release);
    silentFrom_.store(never, std::memory_order_release);
}

void PlaybackBuffer::forgetAhead() noexcept {
    aheadAt_ = aheadEnd_ = 0;
    keepsAhead_ = false;
    master_.reset();
}

void PlaybackBuffer::goStill() noexcept {
    isStill_ = true;
    silentFrom_.store(frame_, std::memory_order_release);
}

void PlaybackBuffer::goOn() noexcept {
    if (!std::exchange(keepsAhead_, false))
        return;
    aheadAt_ = 0;
    const std::size_t count = std::min<std::size_t>(fadeFrames, aheadEnd_);
    for (std::size_t at = 0; at < count; ++at) {
        const float gain = static_cast<float>(at) / fadeFrames;
        ahead_[at] = {ahead_[at].left * gain, ahead_[at].right * gain};
    }
    begin(songFrameKept_);
}

} // namespace tambrel
