#pragma once

#include "Synthesizer.h"

#include <filesystem>
#include <vector>

namespace tambrel {

/// Where the distributions keep their default General MIDI bank, the most likely place first.
[[nodiscard]] const std::vector<std::filesystem::path>& defaultSoundBanks();

/// The bank to load: `named` when it is not empty, else the first of the defaults that exists. Throws
/// SoundBankError with the paths tried and what to install.
[[nodiscard]] std::filesystem::path
findSoundBank(const std::filesystem::path& named,
              const std::vector<std::filesystem::path>& defaults = defaultSoundBanks());

} // namespace tambrel
