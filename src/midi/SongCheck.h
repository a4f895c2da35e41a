#pragma once

#include "MIDIData.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tambrel {

/// Something that is wrong with a file.
struct SongFinding {
    std::size_t position = 0; ///< Of the byte in the file.
    std::size_t track = 0;    ///< From 1; 0 where it is in none.
    std::string_view kind;    ///< A word for programs, such as "endless-note".
    std::string explanation;  ///< A sentence or two.
};

/// Looks for what is wrong with a Standard MIDI File (SMF 1.0, RP-001) or a MIDI 2.0 Clip File (M2-116-U),
/// even if Tambrel plays it. In order of position; empty for a sound file. Pure, any thread.
[[nodiscard]] std::vector<SongFinding> checkSong(ByteView data);

} // namespace tambrel
