#pragma once

#include <memory>
#include <span>

namespace tambrel {

/// Measures how loud stereo sound is heard (EBU R 128). One thread at a time.
class LoudnessMeter {
public:
    explicit LoudnessMeter(int framesPerSecond);
    ~LoudnessMeter();
    LoudnessMeter(const LoudnessMeter&) = delete;
    LoudnessMeter& operator=(const LoudnessMeter&) = delete;

    /// Interleaved samples.
    void add(std::span<const float> samples);

    /// The factor that brings the sound to a loudness in LUFS, no further than to a true peak of -1 dBTP; 1
    /// for silence.
    [[nodiscard]] double gainTo(double loudness) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace tambrel
