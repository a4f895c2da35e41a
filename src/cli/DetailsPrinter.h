#pragma once

#include "SongCheck.h"
#include "SongDetails.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace tambrel::cli {

/// What a song says about itself, as aligned lines of text. All here is pure, any thread.
[[nodiscard]] std::string detailsText(const SongDetails& details);
[[nodiscard]] nlohmann::ordered_json detailsJSON(const SongDetails& details);

/// What is wrong with a file, a line each, or that nothing is.
[[nodiscard]] std::string findingsText(const std::filesystem::path& file,
                                       const std::vector<SongFinding>& findings);
/// The same as one line of JSON without a line break.
[[nodiscard]] std::string findingsJSON(const std::filesystem::path& file,
                                       const std::vector<SongFinding>& findings);

} // namespace tambrel::cli
