#pragma once

#include "MIDIData.h"
#include "MIDIStatus.h"
#include "SMFByteCodec.h"
#include "SMFTrackChunk.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace tambrel {

/// What a walk does at a malformed channel event. Every other defect ends the walk under either policy.
enum class SMFMalformedEventPolicy {
    stop, ///< End the walk of this track.
    skip, ///< Step over a byte and go on reading.
};

/// What the callback wants after an event.
enum class SMFTrackWalkDecision { continue_, stop };

/// One complete event of a track. Positions are absolute in the whole file buffer, so that a caller can
/// patch a byte of a copy of the buffer at the same place.
struct SMFTimedTrackEvent {
    std::uint32_t tick = 0;    ///< Absolute time from the start of the track, in ticks.
    std::uint8_t status = 0;   ///< Effective status: 0x80 to 0xEF, 0xF0 or 0xF7, 0xFF.
    std::uint8_t metaType = 0; ///< Only meaningful when `status` is 0xFF.
    std::size_t dataStart = 0; ///< First data byte, or first payload byte after a length.
    std::size_t dataEnd = 0;   ///< One past the last byte of the event.

    /// The data bytes; `data` is the whole file buffer.
    [[nodiscard]] ByteView payload(ByteView data) const {
        return data.subspan(dataStart, dataEnd - dataStart);
    }
};

/// Reads the events of one track one after another (SMF 1.0, RP-001): the pull side of the walk, for callers
/// that merge tracks. Never leaves [start, end), allocates nothing and reports no error.
class SMFTrackEventReader {
public:
    SMFTrackEventReader(ByteView data, std::size_t start, std::size_t end, SMFMalformedEventPolicy policy)
        : data_(data), position_(start), end_(end), policy_(policy) {
        assert(start <= end && end <= data.size());
    }

    SMFTrackEventReader(ByteView data, const SMFTrackChunk& track, SMFMalformedEventPolicy policy)
        : SMFTrackEventReader(data, track.dataStart, track.dataEnd, policy) {}

    /// Stores the next event and returns true; false at the end of the walk, and ever after.
    [[gnu::always_inline]] bool next(SMFTimedTrackEvent& event) {
        while (readDelta()) {
            const std::uint8_t first = byteAt(position_);
            if (first < 0x80) { // Running status: this is already the first data byte.
                if (runningStatus_ != 0) {
                    if (readChannelEvent(runningStatus_, event))
                        return true;
                } else {
                    malformed();
                }
                continue;
            }
            ++position_;
            if (first < MIDIStatus::systemExclusive) {
                runningStatus_ = first;
                if (readChannelEvent(first, event))
                    return true;
                continue;
            }
            // A few songs (5 of 13,835) go on with it all the same. They are played no further than this
            // either: facts, lanes, companion and Loudness variant end here, and what is heard is what is
            // shown.
            runningStatus_ = 0;
            if (first == MIDIStatus::meta)
                return readMeta(event) || finish();
            if (first == MIDIStatus::systemExclusive || first == MIDIStatus::systemExclusiveContinuation)
                return readPayload(first, event) || finish();
            malformed(); // A system common or real-time status has no place in a track.
        }
        return finish();
    }

private:
    [[gnu::always_inline]] std::uint8_t byteAt(std::size_t position) const {
        return data_.data()[position]; // Every caller has compared the position with end_.
    }

    // The largest value when the quantity is cut off or too long. Reads through a copy of the position: a
    // member whose address is taken would not stay in a register.
    [[gnu::always_inline]] std::size_t readVarLen() {
        std::size_t position = position_;
        const auto value = SMFByteCodec::readVarLen(data_, position, end_);
        position_ = position;
        return value ? *value : std::numeric_limits<std::size_t>::max();
    }

    // Moves past a delta time and adds it; false when it is cut off, too long, followed by nothing, or when
    // the tick would pass 32 bits.
    [[gnu::always_inline]] bool readDelta() {
        if (position_ >= end_)
            return false;
        std::size_t delta = byteAt(position_);
        if (delta < 0x80)
            ++position_;
        else
            delta = readVarLen();
        if (position_ >= end_ || delta > std::numeric_limits<std::uint32_t>::max() - tick_)
            return false;
        tick_ += static_cast<std::uint32_t>(delta);
        return true;
    }

    // A branch for each length, not a computed length: the processor predicts the branch and reads on.
    [[gnu::always_inline]] bool readChannelEvent(std::uint8_t status, SMFTimedTrackEvent& event) {
        if (MIDIStatus::dataLength(status) == 1) [[unlikely]]
            return readChannelData(1, status, event);
        return readChannelData(2, status, event);
    }

    [[gnu::always_inline]] bool readChannelData(std::size_t length, std::uint8_t status,
                                                SMFTimedTrackEvent& event) {
        if (length > end_ - position_) {
            malformed();
            return false;
        }
        event = {tick_, status, 0, position_, position_ + length};
        position_ += length;
        return true;
    }

    [[gnu::always_inline]] bool readMeta(SMFTimedTrackEvent& event) {
        if (position_ >= end_)
            return false;
        event.metaType = byteAt(position_++);
        return readPayload(MIDIStatus::meta, event);
    }

    [[gnu::always_inline]] bool readPayload(std::uint8_t status, SMFTimedTrackEvent& event) {
        const std::size_t length = readVarLen();
        if (length > end_ - position_)
            return false;
        event.tick = tick_;
        event.status = status;
        event.dataStart = position_;
        event.dataEnd = position_ + length;
        position_ = event.dataEnd;
        return true;
    }

    // Skips a byte, or ends the walk.
    [[gnu::always_inline]] void malformed() {
        position_ = policy_ == SMFMalformedEventPolicy::skip ? position_ + 1 : end_;
    }

    [[gnu::always_inline]] bool finish() {
        position_ = end_;
        return false;
    }

    ByteView data_;
    std::size_t position_; // Never beyond end_.
    std::size_t end_;
    std::uint32_t tick_ = 0;
    std::uint8_t runningStatus_ = 0; // 0 while there is none.
    SMFMalformedEventPolicy policy_;
};

/// The walk over the events of one track: one forward pass, no allocation, the callback inlined.
namespace SMFTrackEventWalker {

/// Calls `onEvent` (taking `const SMFTimedTrackEvent&`, returning `SMFTrackWalkDecision`) once for each
/// complete event of the bytes [start, end), in file order, on the caller's thread. A malformed track ends
/// early or is resynchronised, as the policy says; End of Track gets no special treatment.
template<class OnEvent>
[[gnu::always_inline]] inline void walkTrack(ByteView data, std::size_t start, std::size_t end,
                                             SMFMalformedEventPolicy malformedEventPolicy,
                                             OnEvent&& onEvent) {
    SMFTrackEventReader reader(data, start, end, malformedEventPolicy);
    SMFTimedTrackEvent event;
    while (reader.next(event)) {
        if (onEvent(std::as_const(event)) == SMFTrackWalkDecision::stop)
            return;
    }
}

/// The same for a track chunk.
template<class OnEvent>
[[gnu::always_inline]] inline void walk(ByteView data, const SMFTrackChunk& track,
                                        SMFMalformedEventPolicy malformedEventPolicy, OnEvent&& onEvent) {
    walkTrack(data, track.dataStart, track.dataEnd, malformedEventPolicy, std::forward<OnEvent>(onEvent));
}

} // namespace SMFTrackEventWalker
} // namespace tambrel
