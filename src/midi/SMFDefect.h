#pragma once

#include "MIDIData.h"

#include <cstdint>
#include <string>

namespace tambrel {

/// Why the events of a track cannot be read on.
struct SMFDefect {
    std::size_t position = 0; ///< Of the byte in the file.
    std::string reason;       ///< A sentence.
};

/// What keeps the event that should begin at `start` from being read, in a track that ends at `end`.
/// `hasRunningStatus` says whether the event before was a channel message.
[[nodiscard]] SMFDefect defectOfEvent(ByteView data, std::size_t start, std::size_t end,
                                      bool hasRunningStatus);

} // namespace tambrel
