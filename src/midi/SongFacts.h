#pragma once

#include "SongDetails.h"

#include <string>
#include <vector>

namespace tambrel {

/// One thing that a file says, in words: "Tempo", "120.000 BPM at tick 0". Texts of the file are unchanged,
/// line ends included.
struct SongFact {
    std::string name;
    std::string value;
};

/// Everything in the details, most interesting first. Pure, any thread.
[[nodiscard]] std::vector<SongFact> songFacts(const SongDetails& details);

} // namespace tambrel
