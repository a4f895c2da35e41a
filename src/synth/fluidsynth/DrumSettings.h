#pragma once

#include "FluidVoice.h"
#include "MIDIMessage.h"

#include <array>
#include <cstdint>

namespace tambrel {

/// What a channel sends to the effects: the values of its controllers.
struct EffectSends {
    int reverb = 0;
    int chorus = 0;
};

/// What songs set for single drums, in two setups of which each drum part uses one. Used by the thread that
/// uses the synthesizer; nothing allocates or locks.
class DrumSettings {
public:
    DrumSettings() { reset(); }

    /// Every drum is as the bank has it.
    void reset() noexcept;
    /// One of the system messages from `drumPitch` to `lastDrumSetting`.
    void apply(MIDIMessage message) noexcept;
    /// False while every drum is as the bank has it.
    [[nodiscard]] bool areSet() const noexcept { return areSet_; }
    /// Changes a voice that has just begun. The setup is 0 or 1.
    void shape(FluidVoice voice, std::size_t setup, std::size_t key, EffectSends sends) const noexcept;

private:
    static constexpr std::size_t setups = 2;
    static constexpr auto kinds = static_cast<std::size_t>(SystemMessage::secondDrumPitch) -
                                  static_cast<std::size_t>(SystemMessage::drumPitch);

    std::array<std::array<std::array<std::uint8_t, 128>, kinds>, setups> values_{};
    bool areSet_ = true; // By a song.
};

} // namespace tambrel
