#pragma once

#include "MIDIData.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tambrel {

/// A span of the song in which notes are struck, as fractions of its length in ticks. `end` is at least 0.005
/// past `start`, so it may exceed 1.0.
struct MIDIPhrase {
    double start = 0;
    double end = 0;

    bool operator==(const MIDIPhrase&) const = default;
};

/// The phrases of one track (format 1) or one channel (format 0), in time order.
struct MIDITrackPhraseLane {
    std::string label;
    std::vector<MIDIPhrase> phrases;

    bool operator==(const MIDITrackPhraseLane&) const = default;
};

/// What the interface shows of a Standard MIDI File.
struct MIDIFileInfo {
    std::uint16_t format = 0;
    bool isSupportedFormat = false;          ///< Format 0 or 1.
    std::int64_t trackCount = 0;             ///< As the header declares it.
    std::int64_t displayTrackCount = 0;      ///< The same, or the lanes of an exploded format 0 file.
    std::optional<double> tempoBPM;          ///< Of the first usable tempo event, in beats per minute.
    std::optional<std::string> keySignature; ///< Tonic, a blank, mode: "D major".
    std::vector<MIDITrackPhraseLane> timelineLanes;
    bool wasExplodedFromFormat0 = false; ///< A format 0 file split by channel into more than one lane.

    bool operator==(const MIDIFileInfo&) const = default;

    /// Reads a whole file once. Never fails: data that is no Standard MIDI File gives empty facts, a
    /// malformed track the facts up to the defect. Pure, any thread.
    [[nodiscard]] static MIDIFileInfo parse(ByteView data, const std::stop_token& stop = {});
};

} // namespace tambrel
