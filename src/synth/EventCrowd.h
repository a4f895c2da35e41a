#pragma once

#include "TimelineEvent.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tambrel {

/// A block's events when there are too many for the synthesizer to take in time. Finds those that cannot be
/// heard because a later one of the same moment undoes them. Used by the rendering thread: nothing allocates.
class EventCrowd {
public:
    /// Of fewer every one matters, but for what a reset undoes: the voices that a note ends ring on, and as
    /// long as the synthesizer has enough of them they are heard.
    static constexpr std::size_t smallest = 512;

    /// Looks through the events, which stay where they are. Returns how many at the beginning are void
    /// because a reset follows.
    [[nodiscard]] std::size_t begin(std::span<const TimelineEvent> events) noexcept;
    /// Whether the event of this index makes a difference.
    [[nodiscard]] bool matters(std::size_t index) const noexcept;

private:
    static constexpr std::size_t statusCount = 0x80; // From note off to pitch bend, with the channel.
    static constexpr std::size_t valueCount = 0x80;
    using Places = std::array<std::array<std::uint32_t, valueCount>, statusCount>;

    [[nodiscard]] static std::size_t placeOf(MIDIMessage message) noexcept;

    std::span<const TimelineEvent> events_;
    // Where each kind of message of a channel and a key or controller came last, and one more; 0 if nowhere.
    Places last_;
};

} // namespace tambrel
