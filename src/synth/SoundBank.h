#pragma once

#include "Synthesizer.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tambrel {

/// Where distributions and users put sound banks, the user's own folders first: what XDG_DATA_HOME and
/// XDG_DATA_DIRS name, and the usual places beside. All here: any thread; blocks on the disk.
[[nodiscard]] std::vector<std::filesystem::path> soundBankFolders();

/// A bank that was found.
struct SoundBankFile {
    std::filesystem::path path; ///< As it was found; a default bank is a link.
    std::filesystem::path file; ///< What that leads to.

    /// For the user's eyes.
    [[nodiscard]] std::string name() const { return file.stem().string(); }
};

/// The SF2, SF3 and DLS files in the folders, each once: the system's default first, then what calls itself
/// General MIDI, then the rest.
[[nodiscard]] std::vector<SoundBankFile>
soundBanks(const std::vector<std::filesystem::path>& folders = soundBankFolders());

/// Throws SoundBankError, which says what it is instead, unless there is a file of this name.
void requireSoundBankFile(const std::filesystem::path& bank);

/// Which bank is wanted. Both may be empty.
struct SoundBankWish {
    std::filesystem::path named;     ///< This one and no other.
    std::filesystem::path preferred; ///< This one, if it can be loaded.
};

/// The banks to try, in this order. Throws SoundBankError when the one that was named is no file, and when
/// there is none at all.
[[nodiscard]] std::vector<std::filesystem::path>
banksToTry(const SoundBankWish& wish, const std::vector<std::filesystem::path>& folders = soundBankFolders());

} // namespace tambrel
