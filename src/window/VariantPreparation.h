#pragma once

#include <functional>
#include <stop_token>

namespace tambrel {

class SongLoader;
class TambrelPlaybackState;

/// Makes, ahead of Play and off the main thread, what the Loudness switch selects, and hands it to the
/// playback state. Main thread only.
class VariantPreparation {
public:
    /// Both outlive the preparation.
    VariantPreparation(SongLoader& loader, TambrelPlaybackState& state) : loader_(loader), state_(state) {}
    ~VariantPreparation() { cancel(); }
    VariantPreparation(const VariantPreparation&) = delete;
    VariantPreparation& operator=(const VariantPreparation&) = delete;

    /// Called when the variant is there, or could not be made: Play then tries to make it itself.
    std::function<void()> onDone;

    /// True when Play finds all that it needs.
    [[nodiscard]] bool isReady() const;
    /// Begins with what is missing, unless that is being made; what the switch does not select any more is
    /// dropped.
    void begin();
    void cancel();

private:
    SongLoader& loader_;
    TambrelPlaybackState& state_;
    std::stop_source task_{std::nostopstate}; ///< Of what is being made.
    bool isLoud_ = false;                     ///< Which variant that is.
};

} // namespace tambrel
