#pragma once

#include "MIDI2ClipBuilder.h"
#include "PreparedVariant.h"

#include <optional>
#include <string_view>
#include <utility>

namespace tambrel {

class TambrelBetaLog;

/// What to hand to the player.
struct TambrelPlaybackSnapshot {
    PlayableSong song;
    bool isLoud = false; ///< `song` is the Loudness variant.
};

/// The loaded song in its variants: as loaded, with Loudness, and the MIDI 2.0 clip that goes with what
/// plays. Main thread only. Nothing fails; every operation writes its line to the diagnostic log. `context`
/// is the name of the calling procedure, for the log.
class TambrelPlaybackState {
public:
    /// `log` outlives the state.
    explicit TambrelPlaybackState(TambrelBetaLog& log) : log_(log) {}

    /// Takes a newly loaded song. Loudness is off.
    void replaceLoadedMIDI(const PlayableSong& song);
    void reset();

    /// Keeps the clip that the song was imported from.
    void cacheImportedMIDI2ClipCompanion(const MIDIData& data);
    /// Keeps what the loader built, as it is.
    void cacheGeneratedMIDI2ClipCompanion(const std::optional<MIDIData>& data,
                                          const MIDI2ClipBuildSummary& summary, bool isLoud,
                                          std::string_view context);

    /// The variant that Play would have to make now, which takes long for a large song; nothing when all is
    /// there.
    [[nodiscard]] std::optional<VariantRequest> missingVariant() const;
    /// Takes a variant that was made ahead, by a request of the song that is loaded now.
    void takePrepared(PreparedVariant variant) { prepared_ = std::move(variant); }

    /// The variant that the Loudness switch selects; none without a song. The Loudness variant is made the
    /// first time it is asked for, unless it has been handed in.
    [[nodiscard]] std::optional<TambrelPlaybackSnapshot> selectedSnapshot(std::string_view context);

    /// Frees a generated companion, so that the next one finds room; until that comes, it is made again when
    /// it is asked for.
    void freeMIDI2ClipCompanion();

    /// The player now holds this snapshot.
    void markPlaybackLoaded(const TambrelPlaybackSnapshot& snapshot);

    /// Makes the companion that belongs to the snapshot, unless it is there or has been handed in.
    void prepareMIDI2ClipCompanion(const TambrelPlaybackSnapshot& snapshot, std::string_view context);

    [[nodiscard]] const std::optional<PlayableSong>& originalMIDIData() const { return originalMIDIData_; }
    [[nodiscard]] const std::optional<MIDIData>& midi2ClipCompanionData();
    /// The player holds the Loudness variant.
    [[nodiscard]] bool loadedPlaybackIsLoud() const { return loadedPlaybackIsLoud_; }
    /// The variant that the companion was made from, if that is known.
    [[nodiscard]] std::optional<bool> loadedMIDI2ClipIsLoud() const { return loadedMIDI2ClipIsLoud_; }
    [[nodiscard]] bool loudnessEnabled() const { return loudnessEnabled_; }
    void setLoudnessEnabled(bool enabled) { loudnessEnabled_ = enabled; }

private:
    void forgetSong();
    void keepCompanion(const std::optional<MIDIData>& clip, const std::optional<MIDIData>& source,
                       bool isLoud);
    [[nodiscard]] bool isPrepared(bool isLoud) const { return prepared_ && prepared_->isLoud == isLoud; }

    TambrelBetaLog& log_;
    std::optional<PlayableSong> originalMIDIData_;
    std::optional<PlayableSong> loudMIDIData_; ///< Made from `originalMIDIData_` when it was needed.
    std::optional<PreparedVariant> prepared_;  ///< Of this song, until its companion is taken.
    std::optional<MIDIData> midi2ClipCompanionData_;
    std::optional<MIDIData> companionSource_; ///< The song that a generated companion is made from.
    bool loadedPlaybackIsLoud_ = false;
    std::optional<bool> loadedMIDI2ClipIsLoud_;
    bool loudnessEnabled_ = false;
};

} // namespace tambrel
