#pragma once

#include <filesystem>
#include <optional>

namespace tambrel {

struct ModalQuestion;

/// Asks the question in a modal dialog; true when the first button was chosen, nothing when the application
/// has been told to end before the user has answered.
[[nodiscard]] std::optional<bool> askModally(const ModalQuestion& question);

/// Lets the user choose one of the files that can be loaded; nothing when the user cancels.
[[nodiscard]] std::optional<std::filesystem::path> chooseMIDIFile();

} // namespace tambrel
