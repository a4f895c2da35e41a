#pragma once

#include "MIDIData.h"

#include <cstddef>
#include <vector>

namespace tambrel {

/// Where one track chunk lies in the file buffer (SMF 1.0, RP-001). `dataEnd` never exceeds the buffer.
struct SMFTrackChunk {
    std::size_t index = 0;        ///< Position among the track chunks found, from 0.
    std::size_t headerOffset = 0; ///< Position of the chunk's "MTrk".
    std::size_t dataStart = 0;    ///< First data byte, `headerOffset` + 8.
    std::size_t dataEnd = 0;      ///< One past the last data byte.
    std::size_t length = 0;       ///< Data length as the chunk header has it.

    bool operator==(const SMFTrackChunk&) const = default;
};

namespace SMFTrackEventWalker {

/// The track chunks of a whole file, in file order: at most `declaredTrackCount`, fewer where the data ends,
/// a foreign chunk follows, or a chunk is truncated. Reports no error. Any thread.
[[nodiscard]] std::vector<SMFTrackChunk> trackChunks(ByteView data, std::size_t declaredTrackCount);

} // namespace SMFTrackEventWalker
} // namespace tambrel
