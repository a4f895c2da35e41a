#pragma once

#include "SMFBuilder.h"
#include "Synthesizer.h"
#include "Timeline.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <vector>

namespace tambrel::testing {

inline const std::filesystem::path bankTimGM6mb = "/usr/share/sounds/sf2/TimGM6mb.sf2";

/// A time-code division in which a tick is a millisecond.
[[nodiscard]] inline int milliseconds() {
    return timeCodeDivision(25, 40);
}

[[nodiscard]] inline std::shared_ptr<const Timeline> timeline(const std::vector<TrackBuilder>& tracks,
                                                              int division = milliseconds()) {
    return Timeline::build(smfBytes(1, division, tracks));
}

[[nodiscard]] inline std::unique_ptr<Synthesizer> loadedSynthesizer(double sampleRate = 48000) {
    auto synthesizer = std::make_unique<Synthesizer>(sampleRate);
    synthesizer->loadSoundBank(bankTimGM6mb);
    return synthesizer;
}

/// Messages of all kinds but notes, one a tick, crowded on few channels and on what depends on each other.
/// The same seed gives the same track.
[[nodiscard]] TrackBuilder randomTrack(std::uint32_t seed, int eventCount);

/// One step of a 16-bit sample: what is softer cannot be heard.
inline constexpr float inaudible = 1.0F / (1 << 15);

[[nodiscard]] inline float peak(const std::vector<float>& sound) {
    return std::abs(std::ranges::max(sound, {}, [](float sample) { return std::abs(sample); }));
}

} // namespace tambrel::testing
