#pragma once

#include "MIDIInstrument.h"
#include "ParameterEntry.h"

#include <array>
#include <filesystem>
#include <stdexcept>
#include <vector>

namespace tambrel {

/// A sound bank that cannot be used; `what` names the file and says why.
class SoundBankError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What one channel of the synthesizer stands at, for comparison.
struct ChannelReading {
    std::array<int, 120> controllers{}; ///< Without the mode messages from 120 on, and those of `entry`.
    ParameterEntry entry;
    std::vector<float> generators; ///< Offsets by tuning and non-registered parameters.
    int bank = 0;                  ///< For the next program.
    int program = 0;
    int presetBank = 0; ///< What sounds; 128 for drums.
    int presetProgram = 0;
    int pitchBend = 0; ///< 0 to 16383.
    int bendRange = 0; ///< Semitones.
    int mode = 0;      ///< Mono and omni.

    bool operator==(const ChannelReading&) const = default;
};

/// Reverb and chorus.
enum class Effects { on, off };

/// Of the samples between two of a recording: fourth order, or seventh, which costs a quarter more.
enum class Interpolation { usual, best };

/// Whether voices are given up rather than time: for whoever plays in real time.
enum class UnderLoad { playAll, giveUpVoices };

struct SynthesizerOptions {
    Effects effects = Effects::on;
    Interpolation interpolation = Interpolation::usual;
    UnderLoad underLoad = UnderLoad::playAll;
};

/// The General MIDI synthesizer. One thread at a time.
class Synthesizer : public MIDIInstrument {
public:
    /// Loads the bank whole into memory, which may take seconds. Throws SoundBankError.
    virtual void loadSoundBank(const std::filesystem::path& bank) = 0;

    [[nodiscard]] virtual ChannelReading channel(int number) const = 0;
};

} // namespace tambrel
