#include "TambrelFileLoader.h"

#include "MIDI2ClipImporter.h"
#include "SMFByteCodec.h"
#include "SMFHeader.h"
#include "SMFTrackChunk.h"
#include "TambrelMIDIFileSupport.h"
#include "UTF8.h"

#include <future>
#include <new>
#include <utility>

namespace tambrel::TambrelFileLoader {
namespace {

void checkForCancellation(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw TambrelLoadCancelled();
}

// Without a slash at the end, which the path of a folder may have; the root is nothing else.
std::filesystem::path lastComponent(const std::filesystem::path& url) {
    const auto name = url.has_filename() ? url.filename() : url.parent_path().filename();
    return name.empty() ? url : name;
}

std::string displayName(const std::filesystem::path& url) {
    return UTF8::repaired(lastComponent(url).native());
}

bool isClip(const MIDIData& data, const std::filesystem::path& url) {
    return MIDI2ClipImporter::isMIDI2Clip(data) ||
           TambrelMIDIFileSupport::hasExtension(lastComponent(url).native(),
                                                TambrelMIDIFileSupport::midi2ClipExtensions());
}

// Checks the header and the track chunks, before any track is walked.
void requireSupportedSMF(ByteView data) {
    if (data.size() < SMFHeader::size)
        throw TambrelLoadError::malformedMIDIData("The file is too short to contain a Standard MIDI header.");
    if (!SMFByteCodec::hasChunkType(data, 0, "MThd"))
        throw TambrelLoadError::malformedMIDIData("The Standard MIDI header chunk is missing.");
    const auto header = SMFHeader::read(data);
    if (!header)
        throw TambrelLoadError::malformedMIDIData("The Standard MIDI header length is invalid.");
    if (header->format > 1)
        throw TambrelLoadError::unsupportedMIDIFormat(header->format);
    if (header->trackCount < 1)
        throw TambrelLoadError::malformedMIDIData("The MIDI file does not declare any tracks.");
    if (SMFTrackEventWalker::trackChunks(data, header->trackCount).size() != header->trackCount)
        throw TambrelLoadError::malformedMIDIData("The declared MIDI track chunk data is incomplete.");
}

struct Companion {
    MIDIData clip;
    MIDI2ClipBuildSummary summary;
};

Companion buildCompanion(const MIDIData& smf, const std::stop_token& stop) {
    Companion companion{MIDI2ClipBuilder::build(smf, stop), {}};
    companion.summary = MIDI2ClipBuilder::summary(companion.clip);
    return companion;
}

void loadSMF(TambrelLoadedFile& file, const MIDIData& data, const std::stop_token& stop,
             const PlaybackDataHook& onPlaybackData) {
    requireSupportedSMF(data);
    checkForCancellation(stop);
    if (onPlaybackData)
        onPlaybackData(data);
    // Facts and companion each walk all tracks, side by side. For a small song a thread costs more.
    constexpr std::size_t smallSong = 1 << 16;
    const auto policy = data.size() < smallSong ? std::launch::deferred : std::launch::async;
    auto companionInMaking = std::async(policy, buildCompanion, data, stop);
    file.info = MIDIFileInfo::parse(data, stop);
    Companion companion = companionInMaking.get();
    if (companion.summary.hasChannelVoice())
        file.midi2ClipCompanionData = std::move(companion.clip);
    file.midi2ClipCompanionSummary = companion.summary;
    file.playbackData = data;
    file.loadedStatus = "Loaded";
}

MIDI2ClipImportResult imported(const MIDIData& clip) {
    try {
        return MIDI2ClipImporter::importPlayableSMF(clip);
    } catch (const MIDI2ClipImportError& error) {
        throw TambrelLoadError::invalidMIDI2Clip(TambrelLoadError::diagnosticReason(error));
    }
}

void loadClip(TambrelLoadedFile& file, const MIDIData& clip, const std::stop_token& stop,
              const PlaybackDataHook& onPlaybackData) {
    MIDI2ClipImportResult result = imported(clip);
    checkForCancellation(stop);
    requireSupportedSMF(result.smfData);
    if (onPlaybackData)
        onPlaybackData(result.smfData);
    file.info = MIDIFileInfo::parse(result.smfData);
    file.playbackData = std::move(result.smfData);
    file.loadedStatus = "Loaded MIDI 2.0";
    file.importSummary = std::move(result.summary);
    file.importedMIDI2ClipData = clip;
}

MIDIData readFile(const std::filesystem::path& url, const std::stop_token& stop, FileReader reader) {
    try {
        return reader(url, stop);
    } catch (const TambrelLoadCancelled&) {
        throw;
    } catch (const std::exception& error) {
        throw TambrelLoadError::unreadableFile(displayName(url), TambrelLoadError::diagnosticReason(error));
    }
}

} // namespace

TambrelLoadedFile load(const std::filesystem::path& url, const std::stop_token& stop,
                       const PlaybackDataHook& onPlaybackData, FileReader reader) {
    return loadBytes(readFile(url, stop, reader), url, stop, onPlaybackData);
}

TambrelLoadedFile loadBytes(const MIDIData& data, const std::filesystem::path& url,
                            const std::stop_token& stop, const PlaybackDataHook& onPlaybackData) {
    checkForCancellation(stop);
    if (data.empty())
        throw TambrelLoadError::malformedMIDIData("The file is empty.");
    TambrelLoadedFile file;
    file.url = url;
    file.fileName = displayName(url);
    try {
        if (isClip(data, url))
            loadClip(file, data, stop, onPlaybackData);
        else
            loadSMF(file, data, stop, onPlaybackData);
    } catch (const MIDI2ClipBuildCancelled&) {
        throw TambrelLoadCancelled();
    } catch (const std::bad_alloc& error) {
        throw TambrelLoadError::unreadableFile(file.fileName, TambrelLoadError::diagnosticReason(error));
    }
    checkForCancellation(stop);
    return file;
}

} // namespace tambrel::TambrelFileLoader
