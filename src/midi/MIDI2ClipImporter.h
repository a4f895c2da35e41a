#pragma once

#include "MIDI2ClipImportError.h"
#include "MIDI2ClipImportSummary.h"
#include "MIDIData.h"

namespace tambrel {

struct MIDI2ClipImportResult {
    MIDIData smfData; ///< A whole Standard MIDI File of format 1.
    MIDI2ClipImportSummary summary;
};

/// Turns MIDI 2.0 clips (MIDI Clip File, M2-116-U; UMP, M2-104-UM) into Standard MIDI Files. Any thread.
namespace MIDI2ClipImporter {

/// True when the data begins with the signature of a clip.
[[nodiscard]] bool isMIDI2Clip(ByteView data);

/// One track for tempo and time signatures, then one for each group and channel that plays. MIDI 2.0 messages
/// are scaled down to MIDI 1.0; packets that are not understood are counted and left out. Throws
/// `MIDI2ClipImportError`.
[[nodiscard]] MIDI2ClipImportResult importPlayableSMF(ByteView clip);

} // namespace MIDI2ClipImporter
} // namespace tambrel
