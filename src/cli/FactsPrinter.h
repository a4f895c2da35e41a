#pragma once

#include "TambrelLoadError.h"
#include "TambrelLoadedFile.h"

#include <filesystem>
#include <string>

namespace tambrel::cli {

/// The facts as aligned lines of text, ending in a line break. `duration` in seconds. All here is pure, any
/// thread.
[[nodiscard]] std::string factsText(const TambrelLoadedFile& loaded, double duration);

/// The facts as one line of JSON without a line break; bytes of the path that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string factsJSON(const TambrelLoadedFile& loaded, double duration);

/// The same for a file that does not load.
[[nodiscard]] std::string errorJSON(const std::filesystem::path& file, const TambrelLoadError& error);

} // namespace tambrel::cli
