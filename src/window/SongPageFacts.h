#pragma once

#include "MIDIData.h"
#include "SongFacts.h"

#include <vector>

namespace tambrel {

/// What the Song page says of the song that is loaded. Any thread.
struct SongPageFacts {
    std::vector<SongFact> facts; ///< Of the whole file.
    MIDIData data;               ///< In which everything else is found.
};

} // namespace tambrel
