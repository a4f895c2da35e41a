#pragma once

#include "MIDIData.h"

#include <cstddef>

namespace tambrel::bench {

/// How far apart the events of a part are.
enum class Density {
    song,  ///< As music is: 0.1 events a tick in 17 tracks, so that a large file lasts for hours.
    crowd, ///< A sixteenth of the distance, most delta times one byte: as large files are in practice.
};

/// A busy format 1 Standard MIDI File of about `size` bytes (a few hundred more at most) in `trackCount`
/// tracks, of which the first is the conductor: tempo changes, metas, chords, rests, controllers, pitch
/// bends, program changes and system-exclusive events, with running status and 3.1 (crowd) to 3.5 bytes an
/// event on average. The same arguments give the same bytes everywhere. `trackCount` is at least 2 and at
/// most 65535.
[[nodiscard]] Bytes largeFile(std::size_t size, int trackCount, Density density);

} // namespace tambrel::bench
