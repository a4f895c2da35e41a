#include "FullVelocities.h"

#include "MIDIStatus.h"

namespace tambrel {

void FullVelocities::add(std::span<const TimelineEvent> variant) {
    if (variant.size() > left_.size())
        throw NoLoudnessVariant();
    const std::size_t first = isFull_.size() - left_.size();
    for (std::size_t index = 0; index < variant.size(); ++index) {
        TimelineEvent expected = left_[index];
        if (variant[index] == expected)
            continue;
        const bool isStruck =
            MIDIStatus::kind(expected.message.status) == MIDIStatus::noteOn && expected.message.data2 != 0;
        expected.message.data2 = fullVelocity;
        if (!isStruck || variant[index] != expected)
            throw NoLoudnessVariant();
        isFull_[first + index] = true;
    }
    left_ = left_.subspan(variant.size());
}

void FullVelocities::finish() const {
    if (!left_.empty())
        throw NoLoudnessVariant();
}

} // namespace tambrel
