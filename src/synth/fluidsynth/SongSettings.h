#pragma once

#include "DrumSettings.h"
#include "MIDIMessage.h"

#include <fluidsynth.h>

#include <array>
#include <cstdint>

namespace tambrel {

/// What songs set beside the controllers that FluidSynth knows: tuning, transposition, balance, the kinds of
/// the effects, and which channels are drums by their bank. Used by the thread that uses the synthesizer;
/// nothing allocates or locks.
class SongSettings {
public:
    explicit SongSettings(fluid_synth_t& synth) : synth_(synth) {}

    /// After a reset of the synthesizer to this standard.
    void reset(SystemMessage standard) noexcept;
    /// One of the system messages from `masterTuning` on.
    void apply(MIDIMessage message) noexcept;
    /// GM2's bank of drum kits, for the programs to come; called before the synthesizer is told.
    void selectBank(int channel, std::uint8_t msb) noexcept;
    /// The channel is a drum part of this map of GS or XG now, or with 0 is none.
    void setDrums(int channel, std::uint8_t map) noexcept;
    /// Puts the private controllers back that a reset of controllers takes away.
    void restoreControllers(int channel) noexcept;

    /// Whether single drums are to sound otherwise than in the bank.
    [[nodiscard]] bool changesDrums() const noexcept { return drums_.areSet(); }
    /// Changes a voice that has just begun for this key of a drum part.
    void shapeDrum(FluidVoice voice, int channel, int key) const noexcept;
    /// Cents by which this key is to sound higher.
    [[nodiscard]] float tuningOf(int channel, int key) const noexcept;
    /// Applies the balance.
    void process(float* left, float* right, int frames) const noexcept;

private:
    static constexpr std::size_t channelCount = 16;
    static constexpr std::size_t keyCount = 128;
    static constexpr std::size_t notesOfOctave = 12;
    static constexpr std::uint8_t centre = 64;
    static constexpr std::uint8_t usualDepth = 5; // Tens of cents.

    struct Channel {
        bool isDrums = false;
        bool isDrumsByBank = false;
        std::size_t drumSetup = 0;
        std::uint8_t keyShift = centre;
        std::uint8_t depth = usualDepth;
        bool isTuned = false;
        std::array<std::uint8_t, notesOfOctave> scale{};
    };

    void setReverb(std::uint8_t kind) noexcept;
    void setChorus(std::uint8_t kind) noexcept;
    void setChannelType(int channel) noexcept;
    void setBalance(std::uint8_t value) noexcept;

    fluid_synth_t& synth_;
    bool isXG_ = false;
    std::array<Channel, channelCount> channels_;
    DrumSettings drums_;
    std::array<float, keyCount> keyTuning_{}; // Cents.
    std::array<float, keyCount> keyTuningFraction_{};
    int masterKeyShift_ = 0;  // Semitones.
    double masterTuning_ = 0; // Cents.
    float left_ = 1, right_ = 1;
    bool effectsAreChanged_ = false;
};

} // namespace tambrel
