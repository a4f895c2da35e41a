#pragma once

#include "MIDIInstrument.h"

#include <array>
#include <cstddef>

namespace tambrel {

/// What rings on when a song begins again. The instrument cannot play on while it is reset, so the first 21
/// ms (at 48 kHz) are rendered before and mixed into the next lap, as they fade out. One thread; nothing
/// allocates.
class LapTail {
public:
    static constexpr std::size_t frames = std::size_t{16} * synthesizerBlock;

    void drop() noexcept { at_ = frames; }
    /// Releases all notes and renders what rings.
    void take(MIDIInstrument& instrument) noexcept;
    /// Adds the next `count` frames.
    void addTo(float* left, float* right, int count) noexcept;

private:
    std::array<float, frames> left_{}, right_{};
    std::size_t at_ = frames; // How much has been added.
};

} // namespace tambrel
