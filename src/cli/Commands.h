#pragma once

#include "Inputs.h"
#include "NoteFilter.h"
#include "OfflineRenderer.h"
#include "Outputs.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tambrel::cli {

/// Exit statuses of the program. The commands below run on the main thread.
enum ExitStatus { allWell = 0, aFileFailed = 1, wrongUsage = 2 };

/// How a command works through its files.
struct BatchOptions {
    unsigned jobs = 0;     ///< At a time; 0 for as many as there are processors.
    bool failFast = false; ///< Begin no further file after a failure.
};

/// The options of all commands.
struct CommonOptions {
    InputOptions input;
    BatchOptions batch;
};

struct InfoOptions : CommonOptions {
    bool json = false;
    bool all = false;   ///< What a song says of itself besides the facts.
    bool check = false; ///< What is wrong with the files instead of the facts.
};
[[nodiscard]] ExitStatus runInfo(const InfoOptions& options);

struct ConvertOptions : CommonOptions {
    OutputOptions output;
    bool loudness = false; ///< Convert the Loudness variant.
};
/// A clip becomes the Standard MIDI File that is played for it, a Standard MIDI File a MIDI 2.0 Clip File.
[[nodiscard]] ExitStatus runConvert(ConvertOptions options);
/// Writes the Loudness variant of what would be played.
[[nodiscard]] ExitStatus runLoudness(ConvertOptions options);

enum class Stems { none, tracks, channels };

struct RenderCommandOptions : CommonOptions {
    OutputOptions output;
    std::filesystem::path soundFont; ///< Empty for the default bank.
    std::optional<SoundContainer> container;
    RenderOptions sound;
    NoteFilter notes;
    Stems stems = Stems::none;
    bool loudness = false; ///< Render the Loudness variant.
};
[[nodiscard]] ExitStatus runRender(RenderCommandOptions options);

struct EventsOptions : CommonOptions {
    OutputOptions output;
};
/// Writes the events of songs and clips as text.
[[nodiscard]] ExitStatus runDump(const EventsOptions& options);
/// Makes songs and clips of such texts.
[[nodiscard]] ExitStatus runBuild(const EventsOptions& options);

struct PlayOptions : CommonOptions {
    std::filesystem::path soundFont;       ///< Empty for the default bank.
    std::vector<std::string> audioDrivers; ///< Empty for the default drivers.
    bool loudness = false;                 ///< Play the Loudness variant.
    bool loop = false;                     ///< Begin again after the last song.
};
/// Plays songs one after another; keys of the terminal control it.
[[nodiscard]] ExitStatus runPlay(const PlayOptions& options);

} // namespace tambrel::cli
