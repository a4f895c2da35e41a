#pragma once

#include "MIDIData.h"

#include <cstddef>

namespace tambrel::bench {

/// How far apart the events of a part are.
enum class Density {
    song,  ///< As a player plays; a large file then lasts for hours, 0.1 events a tick in 17 tracks.
    crowd, ///< A sixteenth of that, nearly all delta times in one byte: what fills a large file in practice.
};

/// A busy format 1 Standard MIDI File of about `size` bytes (a few hundred more at most) in `trackCount`
/// tracks, of which the first is the conductor: tempo changes, metas, chords, rests, controllers, pitch
/// bends, program changes and system-exclusive events, with running status and 3.1 (crowd) to 3.5 bytes an
/// event on average. The same arguments give the same bytes everywhere. `trackCount` is at least 2 and at
/// most 65535.
[[nodiscard]] Bytes largeFile(std::size_t size, int trackCount, Density density);

} // namespace tambrel::bench
