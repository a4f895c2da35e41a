#pragma once

#include "MIDIData.h"

#include <memory>
#include <utility>

namespace tambrel {

class Timeline;

/// A song on its way to the player: the bytes, and the timeline that was made from them. A copy shares both.
/// May be made and freed on any thread.
struct PlayableSong {
    MIDIData data;                            ///< A whole Standard MIDI File.
    std::shared_ptr<const Timeline> timeline; ///< Null until it is prepared.

    PlayableSong() = default;
    // Implicit: bytes alone are a song without a prepared timeline.
    PlayableSong(MIDIData bytes, std::shared_ptr<const Timeline> prepared = {})
        : data(std::move(bytes)), timeline(std::move(prepared)) {}
};

} // namespace tambrel
