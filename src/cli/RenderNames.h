#pragma once

#include "Commands.h"

#include <string_view>
#include <vector>

namespace tambrel::cli {

/// The names of the sound formats, which are the extensions of their files. All here: any thread.
[[nodiscard]] std::optional<SoundContainer> containerCalled(std::string_view name);
[[nodiscard]] std::string_view extensionOf(SoundContainer container);
/// What a file of this name holds; absent when the name says nothing.
[[nodiscard]] std::optional<SoundContainer> containerNamed(const std::filesystem::path& file);

/// Settles the format by the option, else by the name of the output, else as WAV. Throws UsageError when it
/// cannot be written.
void decideFormat(RenderCommandOptions& options);

/// One file that a song is rendered to.
struct Part {
    std::filesystem::path output;
    NoteFilter notes;
};

/// The whole song, or one part for each track or channel that is heard.
[[nodiscard]] std::vector<Part> parts(ByteView song, const std::filesystem::path& output,
                                      const RenderCommandOptions& options);

} // namespace tambrel::cli
