#pragma once

#include "MIDIData.h"

#include <cstdint>
#include <exception>
#include <stop_token>

namespace tambrel {

/// Counts of a MIDI 2.0 clip.
struct MIDI2ClipBuildSummary {
    std::int64_t byteCount = 0;
    std::int64_t umpWordCount = 0;
    std::int64_t channelVoiceWordCount = 0; ///< Words that begin like a MIDI 1.0 channel voice packet.

    /// True when the clip has more than its frame, and is worth keeping.
    [[nodiscard]] bool hasChannelVoice() const {
        constexpr std::int64_t frameSize = 28;
        return byteCount >= frameSize && channelVoiceWordCount >= 1;
    }

    bool operator==(const MIDI2ClipBuildSummary&) const = default;
};

/// Thrown by a build that was asked to stop.
class MIDI2ClipBuildCancelled : public std::exception {};

/// Makes MIDI 2.0 clips (MIDI Clip File, M2-116-U; UMP, M2-104-UM) from Standard MIDI Files. Pure, any
/// thread.
namespace MIDI2ClipBuilder {

/// The channel voice messages of all tracks as MIDI 1.0 packets on group 0, in order of time, timed by delta
/// clockstamps. Empty when the data has no Standard MIDI File header; a malformed track is resynchronised.
/// Start and end of the clip are marked by single words, so the clip is no input for the importer. Throws
/// MIDI2ClipBuildCancelled once `stop` asks.
[[nodiscard]] MIDIData build(ByteView smf, const std::stop_token& stop = {});

/// A MIDI 2.0 Clip File for any reader: every packet after its delta clockstamp, start and end of the clip as
/// packets of four words, tempo, time and key signatures as flex data, whole system exclusive messages. A
/// time-code division becomes ticks per quarter note at 60 beats per minute, of the same length. Left out:
/// what a clip has no packet for, and a track from its first defect on. Empty when the data has no Standard
/// MIDI File header. Throws MIDI2ClipBuildCancelled once `stop` asks.
[[nodiscard]] MIDIData buildFile(ByteView smf, const std::stop_token& stop = {});

/// Counts word by word, not packet by packet. Both word counts are 0 when the clip's signature is missing.
[[nodiscard]] MIDI2ClipBuildSummary summary(ByteView clip);

} // namespace MIDI2ClipBuilder
} // namespace tambrel
