#pragma once

#include "MIDIMessage.h"

namespace tambrel {

/// Frames that an instrument renders at once; what is sent to it takes effect at the next such block.
inline constexpr int synthesizerBlock = 64;

/// What a song is played on: the synthesizer, or a recorder of what it is sent. One thread at a time uses it,
/// the audio callback while a device is open. The calls neither allocate, lock nor free.
class MIDIInstrument {
public:
    MIDIInstrument() = default;
    MIDIInstrument(const MIDIInstrument&) = delete;
    MIDIInstrument& operator=(const MIDIInstrument&) = delete;
    virtual ~MIDIInstrument() = default;

    virtual void send(MIDIMessage message) noexcept = 0;
    /// Starts a note as it sounds `age` seconds after its beginning, with a fade-in of a few milliseconds.
    /// One that would have died away by then, and one of a drum kit, is left out.
    virtual void resumeNote(MIDIMessage noteOn, double age) noexcept {
        static_cast<void>(age);
        send(noteOn);
    }
    /// Silences everything at once, effects included, and brings all channels to their power-up state.
    virtual void reset() noexcept = 0;
    /// Lets go of all keys and pedals; the notes ring out.
    virtual void releaseNotes() noexcept = 0;
    /// Writes `frames` frames of stereo sound.
    virtual void render(float* left, float* right, int frames) noexcept = 0;
    [[nodiscard]] virtual int activeVoices() const noexcept = 0;
};

} // namespace tambrel
