#include "EventCrowd.h"

#include <algorithm>

namespace tambrel {
namespace {

// Controllers of which each message does something by itself, in its place among the others.
bool isStep(std::uint8_t controller) {
    using namespace Controller;
    return controller == bankSelectMSB || controller == bankSelectLSB || controller == dataEntryMSB ||
           controller == dataEntryLSB || controller == sustain || controller == sostenuto ||
           controller == portamentoControl || (controller >= 96 && controller <= registeredMSB) ||
           controller >= allSoundOff;
}

// A note on of no velocity is a note off.
MIDIMessage plain(MIDIMessage message) {
    if (MIDIStatus::kind(message.status) == MIDIStatus::noteOn && message.data2 == 0)
        message.status = static_cast<std::uint8_t>(message.status - 0x10);
    return message;
}

} // namespace

// Pitch bend and channel pressure have one value a channel.
std::size_t EventCrowd::placeOf(MIDIMessage message) noexcept {
    const std::uint8_t kind = MIDIStatus::kind(message.status);
    const bool hasNumber = kind != MIDIStatus::pitchBend && kind != MIDIStatus::channelPressure;
    return hasNumber ? message.data1 & 0x7F : 0;
}

std::size_t EventCrowd::begin(std::span<const TimelineEvent> events) noexcept {
    const auto isReset = [](const TimelineEvent& event) {
        return event.message.isSystem() && event.message.isReset();
    };
    const auto lastReset = std::find_if(events.rbegin(), events.rend(), isReset);
    const auto isVoid = lastReset == events.rend() ? 0 : events.rend() - lastReset - 1;
    events_ = events;
    if (events.size() < smallest)
        return static_cast<std::size_t>(isVoid);
    last_ = {};
    for (std::size_t index = static_cast<std::size_t>(isVoid); index < events.size(); ++index) {
        const MIDIMessage message = plain(events[index].message);
        if (MIDIStatus::isChannelMessage(message.status))
            last_[message.status - MIDIStatus::noteOff][placeOf(message)] =
                static_cast<std::uint32_t>(index + 1);
    }
    return static_cast<std::size_t>(isVoid);
}

// A note takes the place of the one before on its key, so that of many the last is heard, and what ends it.
bool EventCrowd::matters(std::size_t index) const noexcept {
    if (events_.size() < smallest)
        return true;
    const MIDIMessage message = plain(events_[index].message);
    const std::uint8_t kind = MIDIStatus::kind(message.status);
    if (!MIDIStatus::isChannelMessage(message.status) || kind == MIDIStatus::programChange ||
        (kind == MIDIStatus::controlChange && isStep(message.data1)))
        return true;
    const auto& places = last_[message.status - MIDIStatus::noteOff];
    return places[placeOf(message)] == index + 1;
}

} // namespace tambrel
