#pragma once

#include "ParameterEntry.h"

#include <fluidsynth.h>

#include <array>

namespace tambrel {

/// Sets the parameters of the channels as all versions of FluidSynth understand it: it is told a value only
/// once that is whole. 2.3 leaves the low half of data out where it comes after the high half; 2.4 takes the
/// halves one by one, and the second one for another generator. Used by the thread that uses the synthesizer;
/// nothing allocates or locks.
class ParameterSetter {
public:
    explicit ParameterSetter(fluid_synth_t& synth) : synth_(synth) {}

    /// Takes in a controller that `ParameterEntry` takes.
    void apply(int channel, std::uint8_t controller, std::uint8_t value) noexcept;
    /// After a reset of the controllers of a channel, which takes the selection away.
    void reset(int channel) noexcept { entries_[static_cast<std::size_t>(channel)] = {}; }
    /// After a reset of the synthesizer.
    void reset() noexcept { entries_ = {}; }

    [[nodiscard]] const ParameterEntry& entry(int channel) const {
        return entries_[static_cast<std::size_t>(channel)];
    }

private:
    void set(int channel, const ParameterValue& value) noexcept;

    fluid_synth_t& synth_;
    std::array<ParameterEntry, 16> entries_;
};

} // namespace tambrel
