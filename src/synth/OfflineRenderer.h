#pragma once

#include "MIDIData.h"
#include "Synthesizer.h"

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <stop_token>

namespace tambrel {

/// The sound file could not be written; `what` says why.
class RenderError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// What became of a rendering.
struct RenderResult {
    double seconds = 0; ///< Length of the sound, the release tail included.
    float peak = 0;     ///< Largest sample, 1 being full scale.
    double rms = 0;
    bool wasStopped = false;
};

struct RenderOptions {
    std::filesystem::path soundBank; ///< A bank that exists.
    double sampleRate = 48000;       ///< Frames per second, 8000 to 96000.
    /// Called every now and then with the part done, 0 to 1.
    std::function<void(double part)> onProgress;
    std::stop_token stop;
};

/// Plays a Standard MIDI File faster than real time into a 16-bit stereo WAV file, until its last note has
/// rung out. The file appears whole or not at all; one that stood there before stays when the rendering fails
/// or is stopped. Throws SoundBankError or RenderError. Blocks; any thread.
RenderResult renderToWAV(ByteView song, const std::filesystem::path& output, const RenderOptions& options);

} // namespace tambrel
