#include "Timeline.h"

#include "SMFByteCodec.h"
#include "SMFTrackMerger.h"
#include "SystemExclusive.h"

#include <algorithm>

namespace tambrel {

namespace {

ByteView payload(ByteView data, const SMFTimedTrackEvent& event) {
    return data.subspan(static_cast<std::size_t>(event.dataStart),
                        static_cast<std::size_t>(event.dataEnd - event.dataStart));
}

// What an event is to the player: true, and `message`, if anything. A tempo travels through the merge like a
// message, with its microseconds in the three data bytes.
bool readMessage(ByteView data, const SMFTimedTrackEvent& event, MIDIMessage& message) {
    const auto at = static_cast<std::size_t>(event.dataStart);
    if (MIDIStatus::isChannelMessage(event.status)) {
        const bool hasTwo = MIDIStatus::dataLength(event.status) == 2;
        message = {event.status, data[at], hasTwo ? data[at + 1] : std::uint8_t{0}, 0};
        return true;
    }
    if (event.status == MIDIStatus::systemExclusive) {
        const auto system = readSystemExclusive(payload(data, event));
        message = system.value_or(MIDIMessage{});
        return system.has_value();
    }
    if (event.status == MIDIStatus::meta && event.metaType == MetaType::setTempo &&
        event.dataEnd - event.dataStart >= 3) {
        message = {MIDIStatus::meta, data[at], data[at + 1], data[at + 2]};
        return true;
    }
    return false;
}

std::uint32_t microsecondsPerQuarter(MIDIMessage tempo) {
    return std::uint32_t{tempo.data1} << 16 | std::uint32_t{tempo.data2} << 8 | tempo.data3;
}

} // namespace

/// Takes in the messages of a song in order of time.
class Timeline::Builder {
public:
    Builder(Timeline& timeline, const std::stop_token& stop) : timeline_(timeline), stop_(stop) {}

    void add(std::uint32_t tick, MIDIMessage message) {
        if (message.status == MIDIStatus::meta) {
            timeline_.tempoMap_.setTempo(tick, microsecondsPerQuarter(message));
            return;
        }
        // The synthesizer ignores what is out of range, which would leave a note hanging.
        message.data1 &= 0x7F;
        message.data2 &= 0x7F;
        message.data3 &= 0x7F;
        timeline_.events_.push_back({tick, message});
        if (MIDIStatus::kind(message.status) > MIDIStatus::noteOn)
            state_.apply(message);
        if (timeline_.events_.size() % checkpointInterval == 0) {
            if (stop_.stop_requested())
                throw TimelineCancelled();
            timeline_.checkpoints_.push_back(state_);
        }
    }

private:
    Timeline& timeline_;
    const std::stop_token& stop_;
    ChasedState state_;
};

std::shared_ptr<const Timeline> Timeline::build(ByteView data, const std::stop_token& stop) {
    const bool readable = SMFByteCodec::hasHeader(data);
    std::shared_ptr<Timeline> timeline(new Timeline(readable ? SMFByteCodec::readU16(data, 12) : 0));
    if (!readable)
        return timeline;

    const auto tracks = SMFTrackEventWalker::trackChunks(data, SMFByteCodec::readU16(data, 10));
    std::size_t trackBytes = 0;
    for (const SMFTrackChunk& track : tracks)
        trackBytes += static_cast<std::size_t>(track.length);
    // No channel event takes less than two bytes. Memory that is reserved and never written costs nothing.
    timeline->events_.reserve(trackBytes / 2);

    std::uint32_t lastTick = 0;
    Builder builder(*timeline, stop);
    SMFTrackMerger::merge<MIDIMessage>(
        data, tracks, SMFMalformedEventPolicy::stop,
        [&](std::int64_t, const SMFTimedTrackEvent& event, MIDIMessage& message) {
            lastTick = std::max(lastTick, event.tick);
            return readMessage(data, event, message);
        },
        [&](std::uint32_t tick, MIDIMessage message) { builder.add(tick, message); });
    timeline->duration_ = timeline->tempoMap_.secondsAt(lastTick);
    return timeline;
}

std::size_t Timeline::firstEventAt(std::uint32_t tick) const {
    return static_cast<std::size_t>(std::ranges::lower_bound(events_, tick, {}, &TimelineEvent::tick) -
                                    events_.begin());
}

ChasedState Timeline::stateBefore(std::size_t index) const {
    const std::size_t checkpoint = index / checkpointInterval;
    ChasedState state = checkpoint == 0 ? ChasedState{} : checkpoints_[checkpoint - 1];
    for (std::size_t at = checkpoint * checkpointInterval; at < index; ++at)
        state.apply(events_[at].message);
    return state;
}

} // namespace tambrel
