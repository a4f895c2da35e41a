#pragma once

#include "MIDIFileInfo.h"

#include <filesystem>
#include <string>

namespace tambrel::cli {

/// The facts as aligned lines of text, ending in a line break.
[[nodiscard]] std::string factsText(const std::filesystem::path& file, const MIDIFileInfo& info,
                                    double duration);

/// The facts as one line of JSON without a line break; bytes of the file name that are no UTF-8 become
/// U+FFFD.
[[nodiscard]] std::string factsJSON(const std::filesystem::path& file, const MIDIFileInfo& info,
                                    double duration);

} // namespace tambrel::cli
