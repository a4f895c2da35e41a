#pragma once

#include "MIDI2ClipBuilder.h"
#include "MIDI2ClipImportSummary.h"
#include "MIDIData.h"
#include "MIDIFileInfo.h"

#include <filesystem>
#include <optional>
#include <string>

namespace tambrel {

/// Everything about one loaded file; made once by the loader, then read by any thread. Exactly one of
/// `importedMIDI2ClipData` and `midi2ClipCompanionSummary` is present.
struct TambrelLoadedFile {
    std::filesystem::path url;
    std::string fileName;  ///< Last component of the path, in UTF-8; other bytes are U+FFFD.
    MIDIData playbackData; ///< A whole Standard MIDI File: the file itself, or what a clip was turned into.
    MIDIFileInfo info;     ///< Of `playbackData`.
    std::string loadedStatus; ///< "Loaded" or "Loaded MIDI 2.0".

    // Of a clip.
    std::optional<MIDI2ClipImportSummary> importSummary;
    std::optional<MIDIData> importedMIDI2ClipData; ///< The file itself.

    // Of a Standard MIDI File. The companion is absent when it is not worth keeping, and once it is with the
    // playback state.
    std::optional<MIDIData> midi2ClipCompanionData;
    std::optional<MIDI2ClipBuildSummary> midi2ClipCompanionSummary;
};

} // namespace tambrel
