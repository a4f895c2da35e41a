#pragma once

#include <filesystem>
#include <optional>

class QSettings;

namespace tambrel {

struct ModalQuestion;

/// Asks the question in a modal dialog; true when the first button was chosen, nothing when the application
/// has been told to end before the user has answered. Main thread, like all here.
[[nodiscard]] std::optional<bool> askModally(const ModalQuestion& question);

/// Lets the user choose one of the files that can be loaded; nothing when the user cancels. Begins in the
/// folder of the song that is loaded, else in the one used last, which is kept in the settings.
[[nodiscard]] std::optional<std::filesystem::path> chooseMIDIFile(const std::filesystem::path& loadedSong,
                                                                  QSettings& settings);

} // namespace tambrel
