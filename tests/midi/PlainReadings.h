#pragma once

#include "MIDI2ClipBuilder.h"
#include "MIDI2ClipImportSummary.h"
#include "MIDIFileInfo.h"

#include <cstdint>
#include <string>
#include <vector>

/// The formats read and written a second time, slowly and without a line of src, for its results to be
/// compared with.
namespace tambrel::plain {

[[nodiscard]] inline Bytes bytes(const MIDIData& data) {
    return {data.view().begin(), data.view().end()};
}

struct Chunk {
    std::size_t start;
    std::size_t end;
};

struct Event {
    std::uint64_t tick;
    int status;
    int metaType; ///< 0 in other events.
    std::size_t start;
    std::size_t end;

    bool operator==(const Event&) const = default;
};

enum class Defects { endTheTrack, areSkipped };

[[nodiscard]] bool hasHeader(const Bytes& file);
/// The data of the tracks that are there, at most as many as the header declares.
[[nodiscard]] std::vector<Chunk> tracks(const Bytes& file);
[[nodiscard]] std::vector<Event> events(const Bytes& file, Chunk track, Defects defects);
[[nodiscard]] MIDIFileInfo facts(const Bytes& file);
[[nodiscard]] Bytes boosted(const Bytes& file);
[[nodiscard]] Bytes companion(const Bytes& file);
[[nodiscard]] MIDI2ClipBuildSummary summary(const Bytes& clip);

struct Import {
    std::string error; ///< Empty when the clip can be played.
    Bytes song;
    MIDI2ClipImportSummary summary;
};
[[nodiscard]] Import imported(const Bytes& clip);

} // namespace tambrel::plain
