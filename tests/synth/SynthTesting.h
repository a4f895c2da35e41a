#pragma once

#include "SMFBuilder.h"
#include "SynthesizerFactory.h"
#include "Timeline.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace tambrel::testing {

inline const std::filesystem::path testBank = TAMBREL_TEST_BANK; ///< Of scripts/make-test-bank.
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
    auto synthesizer = makeSynthesizer(sampleRate);
    synthesizer->loadSoundBank(bankTimGM6mb);
    return synthesizer;
}

// Payloads of system-exclusive messages.
inline const Bytes gmOn{0x7E, 0x7F, 0x09, 0x01, 0xF7};
inline const Bytes gsReset{0x41, 0x10, 0x42, 0x12, 0x40, 0x00, 0x7F, 0x00, 0x41, 0xF7};
inline const Bytes xgOn{0x43, 0x10, 0x4C, 0x00, 0x00, 0x7E, 0x00, 0xF7};
inline const Bytes halfVolume{0x7F, 0x7F, 0x04, 0x01, 0x00, 0x40, 0xF7};
/// GS use for rhythm of a part: 0 is channel 10, 1 to 9 the channels of these numbers.
[[nodiscard]] Bytes rhythmPart(std::uint8_t part, std::uint8_t map);

/// Payloads and what they are to the synthesizer.
[[nodiscard]] const std::vector<std::pair<Bytes, std::vector<MIDIMessage>>>& systemExclusives();
/// GS and XG: data from an address on.
[[nodiscard]] Bytes gs(std::initializer_list<std::uint8_t> addressAndData);
[[nodiscard]] Bytes xg(std::initializer_list<std::uint8_t> addressAndData);

/// Messages of all kinds, one a tick, crowded on few channels and on what depends on each other.
/// The same seed gives the same track.
[[nodiscard]] TrackBuilder randomTrack(std::uint32_t seed, int eventCount);

/// One step of a 16-bit sample: what is softer cannot be heard.
inline constexpr float inaudible = 1.0F / (1 << 15);

[[nodiscard]] inline float peak(std::span<const float> sound) {
    float peak = 0;
    for (const float sample : sound)
        peak = std::max(peak, std::abs(sample));
    return peak;
}

} // namespace tambrel::testing
