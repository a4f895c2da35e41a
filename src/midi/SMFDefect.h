#pragma once

#include "MIDIData.h"

#include <cstdint>
#include <string>

namespace tambrel {

/// Why a track cannot be read any further.
struct SMFDefect {
    std::size_t position = 0; ///< Of the byte in the file.
    std::string reason;       ///< A sentence.
};

/// Why the event that should begin at `start` cannot be read, in a track whose data ends at `end` (SMF 1.0,
/// RP-001). `hasRunningStatus`: the event before was a channel message. Pure, any thread.
[[nodiscard]] SMFDefect defectOfEvent(ByteView data, std::size_t start, std::size_t end,
                                      bool hasRunningStatus);

} // namespace tambrel
