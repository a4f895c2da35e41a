#include "Check.h"
#include "MIDI2ClipImporter.h"
#include "TambrelFileLoader.h"

using namespace tambrel;
using fuzz::check;

// A clip is refused with MIDI2ClipImportError, or becomes a song that the loader takes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    try {
        const auto [smf, summary] = MIDI2ClipImporter::importPlayableSMF({bytes, size});
        const MIDIFileInfo info = TambrelFileLoader::loadBytes(smf, "imported.mid").info;
        check(info.format == 1 && info.trackCount == summary.trackCount + 1);
        check(summary.importedPackets + summary.unsupportedPackets + summary.deltaClockstampPackets <=
              summary.totalPackets);
        check(summary.groups.size() == summary.channelsByGroup.size());
        std::int64_t channels = 0;
        for (const auto& [group, ofGroup] : summary.channelsByGroup)
            channels += static_cast<std::int64_t>(ofGroup.size());
        check(channels == summary.trackCount && !summary.debugDescription().empty());
    } catch (const MIDI2ClipImportError& error) {
        check(!error.description().empty());
    }
    return 0;
}
