#include "EventFeed.h"

#include <algorithm>

namespace tambrel {
namespace {

constexpr std::size_t mostInCrowd = 1 << 16; // What is looked through within a block takes 0.2 ms.

// In messages of the cheap sort. A reset renders two blocks.
int costOf(MIDIMessage message) {
    constexpr int reset = 32, noteOn = 4;
    if (message.isSystem())
        return message.isReset() ? reset : 1;
    return MIDIStatus::kind(message.status) == MIDIStatus::noteOn ? noteOn : 1;
}

} // namespace

void EventFeed::begin(const Timeline& song, std::size_t firstEvent) noexcept {
    song_ = &song;
    next_ = crowdEnd_ = firstEvent;
}

void EventFeed::play(MIDIInstrument& instrument, std::uint32_t tick) noexcept {
    for (int left = mostMessagesPerBlock; left > 0 && (next_ < crowdEnd_ || beginCrowd(tick)); ++next_) {
        if (!crowd_.matters(next_ - crowdStart_))
            continue;
        const MIDIMessage message = song_->message(next_);
        instrument.send(message);
        left -= costOf(message);
    }
}

bool EventFeed::beginCrowd(std::uint32_t tick) noexcept {
    const auto events = song_->events();
    if (next_ == events.size() || events[next_].tick > tick)
        return false;
    const auto ahead = events.subspan(next_, std::min(events.size() - next_, mostInCrowd));
    const auto due = std::ranges::upper_bound(ahead, tick, {}, &TimelineEvent::tick) - ahead.begin();
    crowdStart_ = next_;
    crowdEnd_ = next_ + static_cast<std::size_t>(due);
    next_ += crowd_.begin(ahead.first(static_cast<std::size_t>(due)));
    return true;
}

} // namespace tambrel
