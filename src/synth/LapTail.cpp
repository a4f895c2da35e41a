#include "LapTail.h"

namespace tambrel {

void LapTail::take(MIDIInstrument& instrument) noexcept {
    instrument.releaseNotes();
    for (std::size_t at = 0; at < frames; at += synthesizerBlock)
        instrument.render(&left_[at], &right_[at], synthesizerBlock);
    at_ = 0;
}

void LapTail::addTo(float* left, float* right, int count) noexcept {
    for (int frame = 0; frame < count && at_ < frames; ++frame, ++at_) {
        const float gain = static_cast<float>(frames - at_) / static_cast<float>(frames);
        left[frame] += left_[at_] * gain;
        right[frame] += right_[at_] * gain;
    }
}

} // namespace tambrel
