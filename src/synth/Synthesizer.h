#pragma once

#include "MIDIMessage.h"

#include <array>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tambrel {

/// A sound bank that cannot be used; `what` names the file and says why.
class SoundBankError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The name and version of the synthesizer in use.
[[nodiscard]] std::string synthesizerVersion();

/// Frames that the synthesizer renders at once; what is sent to it takes effect at the next such block.
inline constexpr int synthesizerBlock = 64;

/// What one channel of the synthesizer stands at, for comparison.
struct ChannelReading {
    std::array<int, 120> controllers{}; ///< Without the mode messages from 120 on.
    std::vector<float> generators;      ///< Offsets by tuning and non-registered parameters.
    int bank = 0;                       ///< For the next program.
    int program = 0;
    int presetBank = 0; ///< What sounds; 128 for drums.
    int presetProgram = 0;
    int pitchBend = 0; ///< 0 to 16383.
    int bendRange = 0; ///< Semitones.
    int mode = 0;      ///< Mono and omni.

    bool operator==(const ChannelReading&) const = default;
};

/// The General MIDI synthesizer. Not thread-safe: one thread at a time uses it, the audio callback while a
/// device is open. The calls marked noexcept neither allocate, lock nor free.
class Synthesizer {
public:
    explicit Synthesizer(double sampleRate);
    ~Synthesizer();
    Synthesizer(const Synthesizer&) = delete;
    Synthesizer& operator=(const Synthesizer&) = delete;

    /// Loads the bank whole into memory, which may take seconds. Throws SoundBankError.
    void loadSoundBank(const std::filesystem::path& bank);

    void send(MIDIMessage message) noexcept;
    /// Silences everything at once, effects included, and brings all channels to their power-up state.
    void reset() noexcept;
    /// Lets go of all keys and pedals; the notes ring out.
    void releaseNotes() noexcept;
    /// Writes `frames` frames of stereo sound.
    void render(float* left, float* right, int frames) noexcept;
    [[nodiscard]] int activeVoices() const noexcept;

    [[nodiscard]] ChannelReading channel(int number) const;

private:
    void sendController(int channel, std::uint8_t number, std::uint8_t value) noexcept;
    void sendSystem(MIDIMessage message) noexcept;
    void resetTo(SystemMessage standard) noexcept;
    void silence() noexcept;

    struct Handles;
    std::unique_ptr<Handles> handles_;
};

} // namespace tambrel
