#include "RingOut.h"

#include <algorithm>
#include <cmath>

namespace tambrel {
namespace {

constexpr float inaudible = 1.0F / (1 << 15); // One step of a 16-bit sample.
constexpr double quietSecondsToEnd = 0.1;
constexpr double longestRinging = 10; // Seconds.

} // namespace

bool RingOut::isOver(const float* left, const float* right, int frames, int activeVoices) noexcept {
    const auto isLoud = [](float sample) { return std::abs(sample) > inaudible; };
    const bool heard = std::any_of(left, left + frames, isLoud) || std::any_of(right, right + frames, isLoud);
    frames_ += frames;
    quietFrames_ = heard ? 0 : quietFrames_ + frames;
    return (static_cast<double>(quietFrames_) > quietSecondsToEnd * sampleRate_ && activeVoices == 0) ||
           static_cast<double>(frames_) > longestRinging * sampleRate_;
}

} // namespace tambrel
