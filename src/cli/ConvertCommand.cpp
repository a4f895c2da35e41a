#include "Commands.h"

#include "MIDI2ClipBuilder.h"
#include "MIDILoudnessProcessor.h"
#include "NewFile.h"
#include "TambrelFileLoader.h"
#include "TambrelLoadError.h"

#include <system_error>

namespace tambrel::cli {
namespace {

// What is loaded, with Loudness on or off.
MIDIData playbackData(const TambrelLoadedFile& loaded, bool loudness) {
    return loudness ? MIDILoudnessProcessor::boostedDrumsAndBass(loaded.playbackData) : loaded.playbackData;
}

MIDIData converted(const TambrelLoadedFile& loaded, bool loudness) {
    if (loaded.importedMIDI2ClipData)
        return playbackData(loaded, loudness);
    MIDIData clip = loudness ? MIDI2ClipBuilder::build(playbackData(loaded, true))
                             : loaded.midi2ClipCompanionData.value_or(MIDIData());
    if (!MIDI2ClipBuilder::summary(clip).hasChannelVoice())
        throw TambrelLoadError::playbackPreparationFailed(
            "The file has no channel voice messages for a clip.");
    return clip;
}

ExitStatus write(const ConvertOptions& options, const MIDIData& data) {
    try {
        NewFile file(options.output);
        file.write(data.view());
        file.keep(options.force ? NewFile::Existing::replace : NewFile::Existing::keep);
        return allWell;
    } catch (const std::system_error& error) {
        const bool exists = error.code() == std::errc::file_exists;
        complain(options.output, exists ? "The file exists; --force overwrites it." : error.code().message());
        return aFileFailed;
    }
}

template<class Make>
ExitStatus run(const ConvertOptions& options, Make make) {
    MIDIData data;
    try {
        data = make(TambrelFileLoader::load(options.input));
    } catch (const TambrelLoadError& error) {
        complain(options.input, error.diagnosticDescription());
        return aFileFailed;
    }
    return write(options, data);
}

} // namespace

ExitStatus runConvert(const ConvertOptions& options) {
    return run(options, [&](const TambrelLoadedFile& loaded) { return converted(loaded, options.loudness); });
}

ExitStatus runLoudness(const ConvertOptions& options) {
    return run(options, [](const TambrelLoadedFile& loaded) { return playbackData(loaded, true); });
}

} // namespace tambrel::cli
