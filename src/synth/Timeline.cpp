#include "Timeline.h"

#include "PackedEvent.h"
#include "PartRouter.h"
#include "SMFHeader.h"
#include "SMFTrackMerger.h"
#include "SongParameters.h"
#include "SystemExclusive.h"

#include <algorithm>

namespace tambrel {
namespace {

/// System-exclusive payloads that are several messages, a message of a part, or the channel that a part
/// receives. One travels through the merge as a number in the three data bytes.
using LongMessages = std::vector<ByteView>;
constexpr std::uint8_t longMessage = MIDIStatus::systemExclusiveContinuation;
constexpr std::size_t mostLongMessages = 1 << 24;

std::uint32_t readSystemMessage(ByteView payload, LongMessages& longMessages) {
    const std::vector<MIDIMessage> messages = readSystemExclusive(payload);
    if (messages.empty())
        return 0;
    const MIDIMessage first = messages.front();
    const bool isPlain = first.isSystem() && first.systemKind() != SystemMessage::receiveChannel;
    if ((messages.size() == 1 && isPlain) || longMessages.size() == mostLongMessages)
        return packInRange(first);
    longMessages.push_back(payload);
    return static_cast<std::uint32_t>(longMessages.size() - 1) << 8 | longMessage;
}

// What an event other than a channel message is to the player; 0 if nothing. A tempo travels through the
// merge like a message, with its microseconds in the three data bytes. Out of line, and given a copy, so that
// the loop over the channel messages keeps its registers.
[[gnu::noinline]] std::uint32_t readRareMessage(ByteView data, SMFTimedTrackEvent event,
                                                LongMessages& longMessages) {
    const ByteView payload = event.payload(data);
    if (event.status == MIDIStatus::systemExclusive)
        return readSystemMessage(payload, longMessages);
    if (event.status == MIDIStatus::meta && event.metaType == MetaType::setTempo && payload.size() >= 3)
        return pack({MIDIStatus::meta, payload[0], payload[1], payload[2]});
    return 0;
}

// True, and the message, for an event that is something to the player.
bool readMessage(ByteView data, const SMFTimedTrackEvent& event, PackedEvent& packed,
                 LongMessages& longMessages) {
    if (!MIDIStatus::isChannelMessage(event.status)) {
        packed.message = readRareMessage(data, event, longMessages);
        return packed.message != 0;
    }
    const std::size_t at = event.dataStart;
    const bool hasTwo = MIDIStatus::dataLength(event.status) == 2;
    packed.message = packInRange({event.status, data[at], hasTwo ? data[at + 1] : std::uint8_t{0}, 0});
    return true;
}

} // namespace

/// Takes in the messages of a song in order of time.
class Timeline::Builder {
public:
    Builder(Timeline& timeline, const LongMessages& longMessages, std::size_t trackBytes,
            const std::stop_token& stop)
        : timeline_(timeline),
          longMessages_(longMessages),
          stop_(stop),
          checkpointInterval_(std::max(shortestInterval, trackBytes / mostCheckpoints)) {}

    void add(std::span<const PackedEvent> events) {
        while (!events.empty()) {
            const std::size_t room = checkpointInterval_ - size() % checkpointInterval_;
            const auto part = router_.isUsual() ? upToLongMessage(events.first(std::min(events.size(), room)))
                                                : std::span<const PackedEvent>();
            if (part.empty())
                addOne(events.front());
            else
                addPart(part);
            events = events.subspan(std::max<std::size_t>(part.size(), 1));
            if (size() / checkpointInterval_ > timeline_.checkpoints_.size())
                addCheckpoint();
        }
    }

    void finish() {
        if (!timeline_.velocities_)
            return;
        share();
        timeline_.velocities_->finish();
        timeline_.events_ = Events();
    }

private:
    [[nodiscard]] std::size_t size() const { return sharedCount_ + timeline_.events_.size(); }

    // Of a variant, keeps what the events differ in.
    void share() {
        timeline_.velocities_->add(timeline_.events_);
        sharedCount_ += timeline_.events_.size();
        timeline_.events_.clear();
    }

    [[nodiscard]] std::span<const PackedEvent> upToLongMessage(std::span<const PackedEvent> events) const {
        if (longMessages_.empty())
            return events;
        const auto isLong = [](const PackedEvent& event) { return (event.message & 0xFF) == longMessage; };
        const auto found = std::ranges::find_if(events, isLong);
        return events.first(static_cast<std::size_t>(found - events.begin()));
    }

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
                events[index].message = parameters_.read(message);
                state_.apply(events[index].message, part[index].tick);
            }
        }
        applyNotes(events.subspan(next));
        if (hasTempo) {
            const auto isTempoEvent = [](const TimelineEvent& event) { return isTempo(event.message); };
            all.erase(std::remove_if(all.begin() + before, all.end(), isTempoEvent), all.end());
        }
    }

    void addOne(PackedEvent packed) {
        const MIDIMessage message = unpack(packed.message);
        if (message.status == longMessage) {
            for (const MIDIMessage each : readSystemExclusive(longMessages_[packed.message >> 8]))
                addMessage(packed.tick, unpack(packInRange(each)));
        } else if (isTempo(message)) {
            timeline_.tempoMap_.setTempo(packed.tick, microsecondsPerQuarter(message));
        } else if (message.isSystem()) {
            addMessage(packed.tick, message);
        } else {
            addToParts(packed.tick, message);
        }
    }

    // A song that has grown that long goes on with the first part that listens.
    void addToParts(std::uint32_t tick, MIDIMessage message) {
        constexpr std::size_t mostEvents = 1 << 24;
        const std::uint8_t channel = MIDIStatus::channel(message.status);
        for (std::uint8_t part = 0; part < PartRouter::parts; ++part) {
            if (!router_.receives(part, channel))
                continue;
            message.status = static_cast<std::uint8_t>(MIDIStatus::kind(message.status) | part);
            addMessage(tick, message);
            if (size() >= mostEvents)
                return;
        }
    }

    // The channel of the message is the part.
    void addMessage(std::uint32_t tick, MIDIMessage message) {
        if (message.isSystem() && message.systemKind() == SystemMessage::receiveChannel) {
            if (router_.setChannel(message.data2, message.data3))
                endNotes(tick, message.data2);
            return;
        }
        if (message.isSystem() && message.isReset())
            router_ = {};
        timeline_.events_.push_back({tick, parameters_.read(message)});
        state_.apply(timeline_.events_.back().message, tick);
    }

    // What ends them would come on the channel that was received before.
    void endNotes(std::uint32_t tick, std::uint8_t part) {
        const auto status = static_cast<std::uint8_t>(MIDIStatus::controlChange | part);
        for (const std::uint8_t number :
             {Controller::sostenuto, Controller::sustain, Controller::allNotesOff})
            addMessage(tick, {status, number, 0, 0});
    }

    void applyNotes(std::span<const TimelineEvent> notes) {
        for (const TimelineEvent& note : notes)
            state_.applyNote(note.message, note.tick);
    }

    // Returns the indices of all but the notes, found without a branch, which the processor could not
    // predict.
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
        timeline_.checkpoints_.push_back({size(), state_});
        if (timeline_.velocities_)
            share();
    }

    Timeline& timeline_;
    const LongMessages& longMessages_;
    const std::stop_token& stop_;
    const std::size_t checkpointInterval_; // In events.
    ChasedState state_;
    ParameterReader parameters_;
    PartRouter router_;
    std::vector<std::uint32_t> indices_;
    std::size_t sharedCount_ = 0; // Events that are with the original.
};

Timeline::Timeline(Division division, std::shared_ptr<const Timeline> original)
    : original_(std::move(original)), tempoMap_(division) {
    if (original_)
        velocities_.emplace(original_->events());
}

std::shared_ptr<const Timeline> Timeline::build(ByteView data, const std::stop_token& stop,
                                                std::shared_ptr<const Timeline> original) {
    const auto header = SMFHeader::read(data);
    if (!header)
        return std::shared_ptr<Timeline>(new Timeline(Division(1), {}));
    std::shared_ptr<Timeline> timeline(new Timeline(header->division, std::move(original)));
    try {
        timeline->read(data, header->trackCount, stop);
    } catch (const NoLoudnessVariant&) { // Velocities out of range can make the two differ in more.
        return build(data, stop);
    }
    return timeline;
}

void Timeline::read(ByteView data, std::uint16_t trackCount, const std::stop_token& stop) {
    const auto tracks = SMFTrackEventWalker::trackChunks(data, trackCount);
    std::size_t trackBytes = 0;
    for (const SMFTrackChunk& track : tracks)
        trackBytes += track.length;
    // No channel event takes less than two bytes. Memory that is reserved and never written costs nothing.
    if (!original_)
        events_.reserve(trackBytes / 2);

    LongMessages longMessages;
    Builder builder(*this, longMessages, trackBytes, stop);
    const std::uint32_t lastTick = SMFTrackMerger::merge<PackedEvent>(
        data, tracks, SMFMalformedEventPolicy::stop,
        [data, &longMessages](const SMFTimedTrackEvent& event, PackedEvent& packed) {
            return readMessage(data, event, packed, longMessages);
        },
        [&builder](std::span<const PackedEvent> events) { builder.add(events); });
    builder.finish();
    duration_ = tempoMap_.secondsAt(lastTick);
}

std::size_t Timeline::firstEventAt(std::uint32_t tick) const {
    const auto all = events();
    return static_cast<std::size_t>(std::ranges::lower_bound(all, tick, {}, &TimelineEvent::tick) -
                                    all.begin());
}

ChasedState Timeline::stateBefore(std::size_t index) const {
    const auto after = std::ranges::upper_bound(checkpoints_, index, {}, &Checkpoint::events);
    const Checkpoint last = after == checkpoints_.begin() ? Checkpoint{} : *std::prev(after);
    ChasedState state = last.state;
    for (std::size_t at = last.events; at < index; ++at)
        state.apply(message(at), events()[at].tick);
    return state;
}

} // namespace tambrel
