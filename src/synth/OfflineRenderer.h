#pragma once

#include "SoundFileWriter.h"
#include "Synthesizer.h"
#include "Timeline.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

namespace tambrel {

/// What became of a rendering.
struct RenderResult {
    double seconds = 0; ///< Length of the sound, the release tail included.
    float peak = 0;     ///< Largest sample, 1 being full scale.
    double rms = 0;
    bool wasStopped = false;
    std::string complaints = {}; ///< Of banks that could not be loaded before one could.
};

struct RenderOptions {
    std::vector<std::filesystem::path> soundBanks; ///< The first that can be loaded is used.
    SoundFormat format;
    SynthesizerOptions synthesizer;
    double start = 0;           ///< Seconds into the song.
    std::optional<double> end;  ///< Seconds into the song; absent for its end.
    std::optional<double> tail; ///< Seconds to render after that; absent until the last note has rung out.
    double gain = 1;            ///< Factor.
    /// Loudness in LUFS (EBU R 128) that the sound is brought to before `gain`, but no further than to a true
    /// peak of -1 dBTP. Takes a second rendering.
    std::optional<double> loudness;
    /// Called every now and then with the part done, 0 to 1.
    std::function<void(double part)> onProgress;
    std::stop_token stop;
};

/// Frames to expect, without what a last note rings that has no tail set.
[[nodiscard]] std::int64_t expectedFrames(const Timeline& song, const RenderOptions& options);

/// Plays a song faster than real time into an open descriptor, the same bytes each time. Throws
/// SoundBankError or RenderError. Blocks; any thread.
RenderResult renderTo(int descriptor, const std::shared_ptr<const Timeline>& song,
                      const RenderOptions& options);

/// The same into a file that appears whole or not at all; what stood there before stays when the rendering
/// fails or is stopped. Refuses what will not fit into the file system.
RenderResult renderToFile(const std::filesystem::path& output, const std::shared_ptr<const Timeline>& song,
                          const RenderOptions& options, bool replaceExisting);

} // namespace tambrel
