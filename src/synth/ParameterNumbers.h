#pragma once

#include <algorithm>
#include <cstdint>

/// The numbers of registered and non-registered parameters that FluidSynth acts on.
namespace tambrel::ParameterNumber {

inline constexpr std::uint8_t bendRange = 0; // Registered parameters.
inline constexpr std::uint8_t coarseTuning = 2;
inline constexpr std::uint8_t nullParameter = 127;

// SoundFont 2.01, 9.6: the high half of a non-registered number that selects generators. Low halves below 100
// add up to the generator, those from 100 to 102 add that many hundreds, thousands and so on. A high half and
// an entry of data start the sum anew.
inline constexpr std::uint8_t generatorMSB = 120;
inline constexpr std::uint8_t hundred = 100;
inline constexpr std::uint8_t noGenerator = 63; // Stands for every sum that is too large.

constexpr std::uint8_t addedBy(std::uint8_t lsb) {
    if (lsb < hundred)
        return std::min(lsb, noGenerator);
    return lsb <= hundred + 2 ? noGenerator : 0;
}

} // namespace tambrel::ParameterNumber
