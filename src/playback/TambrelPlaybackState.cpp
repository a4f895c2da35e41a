#include "TambrelPlaybackState.h"

#include "MIDILoudnessProcessor.h"
#include "TambrelBetaLog.h"

#include <string>
#include <utility>

namespace tambrel {
namespace {

std::string sizes(const MIDI2ClipBuildSummary& summary) {
    return "; bytes " + std::to_string(summary.byteCount) + "; UMP words " +
           std::to_string(summary.umpWordCount) + "; channel voice words " +
           std::to_string(summary.channelVoiceWordCount);
}

} // namespace

void TambrelPlaybackState::forgetSong() {
    originalMIDIData_.reset();
    loudMIDIData_.reset();
    prepared_.reset();
    midi2ClipCompanionData_.reset();
    companionSource_.reset();
    loadedPlaybackIsLoud_ = false;
    loadedMIDI2ClipIsLoud_.reset();
    loudnessEnabled_ = false;
}

void TambrelPlaybackState::replaceLoadedMIDI(const PlayableSong& song) {
    log_.procedure("TambrelPlaybackState.replaceLoadedMIDI", "Replacing loaded playback snapshot");
    forgetSong();
    originalMIDIData_ = song;
}

void TambrelPlaybackState::reset() {
    log_.procedure("TambrelPlaybackState.reset", "Clearing loaded playback snapshot");
    forgetSong();
}

void TambrelPlaybackState::keepCompanion(const std::optional<MIDIData>& clip,
                                         const std::optional<MIDIData>& source, bool isLoud) {
    midi2ClipCompanionData_ = clip;
    companionSource_ = clip ? source : std::nullopt;
    loadedMIDI2ClipIsLoud_ = isLoud;
}

void TambrelPlaybackState::freeMIDI2ClipCompanion() {
    if (companionSource_)
        midi2ClipCompanionData_.reset();
}

const std::optional<MIDIData>& TambrelPlaybackState::midi2ClipCompanionData() {
    if (companionSource_ && !midi2ClipCompanionData_)
        midi2ClipCompanionData_ = MIDI2ClipBuilder::build(*companionSource_);
    return midi2ClipCompanionData_;
}

void TambrelPlaybackState::cacheImportedMIDI2ClipCompanion(const MIDIData& data) {
    keepCompanion(data, std::nullopt, false);
    log_.procedure("TambrelPlaybackState.cacheImportedMIDI2ClipCompanion",
                   "Cached original MIDI 2.0 clip companion from imported file");
}

void TambrelPlaybackState::cacheGeneratedMIDI2ClipCompanion(const std::optional<MIDIData>& data,
                                                            const MIDI2ClipBuildSummary& summary, bool isLoud,
                                                            std::string_view context) {
    const bool isOfOriginal = originalMIDIData_ && !isLoud;
    keepCompanion(data, isOfOriginal ? std::optional(originalMIDIData_->data) : std::nullopt, isLoud);
    log_.procedure("TambrelPlaybackState.cacheGeneratedMIDI2ClipCompanion", [&] {
        return summary.hasChannelVoice()
                   ? std::string("MIDI 2.0 companion ready for ").append(context) + sizes(summary)
                   : std::string("MIDI 2.0 companion unavailable for ").append(context);
    });
}

std::optional<VariantRequest> TambrelPlaybackState::missingVariant() const {
    if (!originalMIDIData_ || loudnessEnabled_ == loadedPlaybackIsLoud_ || isPrepared(loudnessEnabled_))
        return std::nullopt;
    if (loudnessEnabled_ && loudMIDIData_)
        return VariantRequest{.source = *loudMIDIData_, .isLoud = true, .isToBeBoosted = false};
    return VariantRequest{
        .source = *originalMIDIData_, .isLoud = loudnessEnabled_, .isToBeBoosted = loudnessEnabled_};
}

std::optional<TambrelPlaybackSnapshot> TambrelPlaybackState::selectedSnapshot(std::string_view context) {
    constexpr std::string_view name = "TambrelPlaybackState.selectedSnapshot";
    if (!originalMIDIData_) {
        log_.procedure(name, [&] { return std::string("No MIDI data is loaded for ").append(context); });
        return std::nullopt;
    }
    if (!loudnessEnabled_)
        return TambrelPlaybackSnapshot{*originalMIDIData_, false};
    if (!loudMIDIData_) {
        log_.procedure(name, [&] {
            return std::string("Generating loudness-processed MIDI data for ").append(context);
        });
        loudMIDIData_ =
            isPrepared(true)
                ? prepared_->song
                : PlayableSong(MIDILoudnessProcessor::boostedDrumsAndBass(originalMIDIData_->data));
    }
    return TambrelPlaybackSnapshot{*loudMIDIData_, true};
}

void TambrelPlaybackState::markPlaybackLoaded(const TambrelPlaybackSnapshot& snapshot) {
    loadedPlaybackIsLoud_ = snapshot.isLoud;
    log_.procedure("TambrelPlaybackState.markPlaybackLoaded",
                   snapshot.isLoud ? "Playback snapshot is now loud" : "Playback snapshot is now original");
}

void TambrelPlaybackState::prepareMIDI2ClipCompanion(const TambrelPlaybackSnapshot& snapshot,
                                                     std::string_view context) {
    constexpr std::string_view name = "TambrelPlaybackState.prepareMIDI2ClipCompanion";
    if (loadedMIDI2ClipIsLoud_ == snapshot.isLoud && (midi2ClipCompanionData_ || companionSource_)) {
        log_.procedure(name,
                       [&] { return std::string("Reusing MIDI 2.0 clip companion for ").append(context); });
        return;
    }
    log_.function(name,
                  [&] { return std::string("Generating MIDI 2.0 clip companion for ").append(context); });
    keepCompanion({}, {}, snapshot.isLoud); // Freed before the next one is made.
    if (!isPrepared(snapshot.isLoud)) {
        const MIDIData clip = MIDI2ClipBuilder::build(snapshot.song.data);
        prepared_ = {snapshot.isLoud, snapshot.song, clip, MIDI2ClipBuilder::summary(clip)};
    }
    const auto prepared = *std::exchange(prepared_, std::nullopt);
    const MIDI2ClipBuildSummary& summary = prepared.summary;
    if (summary.hasChannelVoice())
        keepCompanion(prepared.companion, snapshot.song.data, snapshot.isLoud);
    log_.procedure(name, [&] {
        return summary.hasChannelVoice() ? "MIDI 2.0 companion ready" + sizes(summary)
                                         : "MIDI 2.0 companion unavailable for current MIDI data";
    });
}

} // namespace tambrel
