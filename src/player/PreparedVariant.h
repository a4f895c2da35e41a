#pragma once

#include "MIDI2ClipBuilder.h"
#include "PlayableSong.h"

namespace tambrel {

/// A request to prepare a variant of a song for the player. Any thread.
struct VariantRequest {
    PlayableSong source;        ///< The variant itself, or the song that it is to be made from.
    bool isLoud = false;        ///< Which variant is wanted: the one with Loudness, or the original.
    bool isToBeBoosted = false; ///< `source` is the original, the Loudness variant is wanted.
};

/// The prepared variant: all that is needed to change to it. Any thread.
struct PreparedVariant {
    bool isLoud = false;
    PlayableSong song;
    MIDIData companion;            ///< The MIDI 2.0 clip made from `song`.
    MIDI2ClipBuildSummary summary; ///< Of the companion.
};

} // namespace tambrel
