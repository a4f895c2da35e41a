#include "Check.h"
#include "TambrelFileLoader.h"

using namespace tambrel;
using fuzz::check;

// A file of any name becomes a whole record, or TambrelLoadError.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const MIDIData data(Bytes(bytes, bytes + size));
    for (const char* name : {"song.mid", "song.clip"}) {
        try {
            const TambrelLoadedFile file = TambrelFileLoader::loadBytes(data, name);
            check(file.fileName == name && file.info.isSupportedFormat && file.info.trackCount > 0);
            check(file.importedMIDI2ClipData.has_value() != file.midi2ClipCompanionSummary.has_value());
            check(file.importedMIDI2ClipData.has_value() == file.importSummary.has_value());
            check(!file.midi2ClipCompanionData || file.midi2ClipCompanionSummary->hasChannelVoice());
        } catch (const TambrelLoadError& error) {
            check(!error.userMessage().empty() && !error.diagnosticDescription().empty());
        }
    }
    return 0;
}
