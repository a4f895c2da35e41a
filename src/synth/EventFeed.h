#pragma once

#include "EventCrowd.h"
#include "MIDIInstrument.h"
#include "Timeline.h"

#include <cstddef>
#include <cstdint>

namespace tambrel {

/// Hands a song's events to an instrument, block by block and in order, and no more at a block than the
/// instrument can take in while it renders that: what is left comes with the next blocks. Used by the
/// rendering thread: nothing allocates.
class EventFeed {
public:
    /// `song` stays alive while it is played.
    void begin(const Timeline& song, std::size_t firstEvent) noexcept;
    /// Sends what is due at `tick`.
    void play(MIDIInstrument& instrument, std::uint32_t tick) noexcept;
    /// True when every event has been sent.
    [[nodiscard]] bool isOver() const noexcept { return song_ == nullptr || next_ == song_->events().size(); }

    /// At a block, which lasts 1.3 ms. A note on takes FluidSynth 3 microseconds, and 30 when all voices
    /// sound, so that it counts for four.
    static constexpr int mostMessagesPerBlock = 128;

private:
    [[nodiscard]] bool beginCrowd(std::uint32_t tick) noexcept;

    const Timeline* song_ = nullptr;
    std::size_t next_ = 0;
    std::size_t crowdStart_ = 0,
                crowdEnd_ = 0; // The events that were due together; those up to next_ are sent.
    EventCrowd crowd_;
};

} // namespace tambrel
