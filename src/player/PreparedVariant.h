#pragma once

#include "MIDI2ClipBuilder.h"
#include "PlayableSong.h"

namespace tambrel {

/// A variant of a song that is to be made ready for the player.
struct VariantRequest {
    PlayableSong source;        ///< The variant itself, or the song that it is to be made from.
    bool isLoud = false;        ///< Which variant is wanted: the one with Loudness, or the original.
    bool isToBeBoosted = false; ///< `source` is the original, the Loudness variant is wanted.
};

/// All that a change to that variant needs.
struct PreparedVariant {
    bool isLoud = false;
    PlayableSong song;
    MIDIData companion;            ///< The MIDI 2.0 clip made from `song`.
    MIDI2ClipBuildSummary summary; ///< Of the companion.
};

} // namespace tambrel
