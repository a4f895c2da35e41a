#pragma once

#include "TimelineEvent.h"

#include <cstddef>
#include <exception>
#include <span>
#include <vector>

namespace tambrel {

/// The song is no Loudness variant of the one that it was compared with.
class NoLoudnessVariant : public std::exception {};

/// Which notes of a song its Loudness variant strikes at full velocity: all that the two differ in, and a bit
/// an event instead of eight bytes. Written by one thread, then read by any.
class FullVelocities {
public:
    /// `original` stays alive until `finish`.
    explicit FullVelocities(std::span<const TimelineEvent> original)
        : left_(original), isFull_(original.size()) {}

    /// Compares the variant's next events with the original's; throws NoLoudnessVariant.
    void add(std::span<const TimelineEvent> variant);
    /// All events have been added; throws NoLoudnessVariant when the original has more.
    void finish() const;

    /// The variant's form of the original's message of this index.
    [[nodiscard]] MIDIMessage message(std::size_t index, MIDIMessage original) const noexcept {
        if (isFull_[index])
            original.data2 = fullVelocity;
        return original;
    }

private:
    static constexpr std::uint8_t fullVelocity = 127;

    std::span<const TimelineEvent> left_; // Of the original.
    std::vector<bool> isFull_;
};

} // namespace tambrel
