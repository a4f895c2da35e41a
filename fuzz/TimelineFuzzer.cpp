#include "Check.h"

#include "Timeline.h"

using namespace tambrel;
using fuzz::check;

// Events are in order and within the duration, and a chased state is the one that playing leads to.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const auto timeline = Timeline::build({bytes, size});
    check(timeline->duration() >= 0);
    ChasedState played;
    std::uint32_t lastTick = 0;
    const auto events = timeline->events();
    for (const TimelineEvent& event : events) {
        check(event.tick >= lastTick);
        lastTick = event.tick;
        played.apply(event.message, event.tick);
    }
    check(timeline->duration() >= timeline->tempoMap().secondsAt(lastTick));
    check(timeline->firstEventAt(lastTick) <= events.size());
    check(timeline->stateBefore(events.size()).messages() == played.messages());
    return 0;
}
