#include "Timeline.h"

#include "SMFHeader.h"
#include "SMFTrackMerger.h"
#include "SystemExclusive.h"

#include <algorithm>

namespace tambrel {

namespace {

// A message on its way through the merge, packed into one number that stays in a register.
struct PackedEvent {
    std::uint32_t tick;
    std::uint32_t message;
};

constexpr std::uint32_t pack(MIDIMessage message) {
    return std::uint32_t{message.data3} << 24 | std::uint32_t{message.data2} << 16 |
           std::uint32_t{message.data1} << 8 | message.status;
}

// The synthesizer ignores a data byte that is out of range, which would leave a note hanging.
constexpr std::uint32_t packInRange(MIDIMessage message) {
    return pack(message) & 0x7F7F7FFF;
}

constexpr MIDIMessage unpack(std::uint32_t packed) {
    return {static_cast<std::uint8_t>(packed), static_cast<std::uint8_t>(packed >> 8),
            static_cast<std::uint8_t>(packed >> 16), static_cast<std::uint8_t>(packed >> 24)};
}

// What an event other than a channel message is to the player; 0 if nothing. A tempo travels through the
// merge like a message, with its microseconds in the three data bytes. Out of line, and given a copy, so that
// the loop over the channel messages keeps its registers.
[[gnu::noinline]] std::uint32_t readRareMessage(ByteView data, SMFTimedTrackEvent event) {
    const ByteView payload = event.payload(data);
    if (event.status == MIDIStatus::systemExclusive)
        return packInRange(readSystemExclusive(payload).value_or(MIDIMessage{}));
    if (event.status == MIDIStatus::meta && event.metaType == MetaType::setTempo && payload.size() >= 3)
        return pack({MIDIStatus::meta, payload[0], payload[1], payload[2]});
    return 0;
}

// True, and the message, for an event that is something to the player.
bool readMessage(ByteView data, const SMFTimedTrackEvent& event, PackedEvent& packed) {
    if (!MIDIStatus::isChannelMessage(event.status)) {
        packed.message = readRareMessage(data, event);
        return packed.message != 0;
    }
    const std::size_t at = event.dataStart;
    const bool hasTwo = MIDIStatus::dataLength(event.status) == 2;
    packed.message = packInRange({event.status, data[at], hasTwo ? data[at + 1] : std::uint8_t{0}, 0});
    return true;
}

bool isTempo(MIDIMessage message) {
    return message.status == MIDIStatus::meta;
}

std::uint32_t microsecondsPerQuarter(MIDIMessage tempo) {
    return std::uint32_t{tempo.data1} << 16 | std::uint32_t{tempo.data2} << 8 | tempo.data3;
}

} // namespace

/// Takes in the messages of a song in order of time.
class Timeline::Builder {
public:
    Builder(Timeline& timeline, const std::stop_token& stop) : timeline_(timeline), stop_(stop) {}

    void add(std::span<const PackedEvent> events) {
        while (!events.empty()) {
            const std::size_t room = checkpointInterval - timeline_.events_.size() % checkpointInterval;
            const auto part = events.first(std::min(events.size(), room));
            addPart(part);
            events = events.subspan(part.size());
            if (timeline_.events_.size() / checkpointInterval > timeline_.checkpoints_.size())
                addCheckpoint();
        }
    }

private:
    void addPart(std::span<const PackedEvent> part) {
        auto& all = timeline_.events_;
        const auto before = static_cast<std::ptrdiff_t>(all.size());
        all.resize(all.size() + part.size());
        const auto events = std::span(all).last(part.size());
        bool hasTempo = false;
        std::size_t next = 0;
        for (const std::uint32_t index : unpackInto(events, part)) {
            applyNotes(events.subspan(next, index - next));
            next = index + 1;
            const MIDIMessage message = unpack(part[index].message);
            if (isTempo(message)) {
                timeline_.tempoMap_.setTempo(part[index].tick, microsecondsPerQuarter(message));
                hasTempo = true;
            } else {
                state_.apply(message, part[index].tick);
            }
        }
        applyNotes(events.subspan(next));
        if (hasTempo) {
            const auto isTempoEvent = [](const TimelineEvent& event) { return isTempo(event.message); };
            all.erase(std::remove_if(all.begin() + before, all.end(), isTempoEvent), all.end());
        }
    }

    void applyNotes(std::span<const TimelineEvent> notes) {
        for (const TimelineEvent& note : notes)
            state_.applyNote(note.message, note.tick);
    }

    // Returns the indices of all but the notes, found without a branch: which are notes cannot be foretold.
    std::span<const std::uint32_t> unpackInto(std::span<TimelineEvent> events,
                                              std::span<const PackedEvent> packed) {
        indices_.resize(std::max(indices_.size(), packed.size()));
        const std::span<std::uint32_t> indices = indices_;
        std::size_t count = 0;
        for (std::size_t index = 0; index < packed.size(); ++index) {
            const MIDIMessage message = unpack(packed[index].message);
            events[index] = {packed[index].tick, message};
            indices[count] = static_cast<std::uint32_t>(index);
            count += message.status >= MIDIStatus::polyphonicPressure ? std::size_t{1} : 0;
        }
        return indices.first(count);
    }

    void addCheckpoint() {
        if (stop_.stop_requested())
            throw TimelineCancelled();
        timeline_.checkpoints_.push_back(state_);
    }

    Timeline& timeline_;
    const std::stop_token& stop_;
    ChasedState state_;
    std::vector<std::uint32_t> indices_;
};

std::shared_ptr<const Timeline> Timeline::build(ByteView data, const std::stop_token& stop) {
    const auto header = SMFHeader::read(data);
    std::shared_ptr<Timeline> timeline(new Timeline(header ? header->division : Division(1)));
    if (!header)
        return timeline;

    const auto tracks = SMFTrackEventWalker::trackChunks(data, header->trackCount);
    std::size_t trackBytes = 0;
    for (const SMFTrackChunk& track : tracks)
        trackBytes += track.length;
    // No channel event takes less than two bytes. Memory that is reserved and never written costs nothing.
    timeline->events_.reserve(trackBytes / 2);

    Builder builder(*timeline, stop);
    const std::uint32_t lastTick = SMFTrackMerger::merge<PackedEvent>(
        data, tracks, SMFMalformedEventPolicy::stop,
        [data](const SMFTimedTrackEvent& event, PackedEvent& packed) {
            return readMessage(data, event, packed);
        },
        [&builder](std::span<const PackedEvent> events) { builder.add(events); });
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
        state.apply(events_[at].message, events_[at].tick);
    return state;
}

} // namespace tambrel
