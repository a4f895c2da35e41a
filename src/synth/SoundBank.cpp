#include "SoundBank.h"

#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <cctype>

namespace tambrel {
namespace {

using std::filesystem::path;

constexpr const char* advice = " Install the package timgm6mb-soundfont, or name a bank with --soundfont.";

std::string lowerCased(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

bool hasBankExtension(const path& file) {
    const std::string extension = lowerCased(file.extension().string());
    return extension == ".sf2" || extension == ".sf3" || extension == ".dls";
}

// The smaller, the more likely a General MIDI bank, and the one that was meant.
int rank(const SoundBankFile& bank) {
    const std::string found = lowerCased(bank.path.stem().string());
    if (found == "default-gm" || found == "default")
        return 0;
    const std::string name = lowerCased(bank.name());
    return name.find("gm") != std::string::npos || name.find("general") != std::string::npos ? 1 : 2;
}

std::vector<SoundBankFile> banksIn(const path& folder) {
    std::vector<SoundBankFile> banks;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code isNone;
        if (hasBankExtension(entry->path()) && entry->is_regular_file(isNone))
            banks.push_back({entry->path(), std::filesystem::canonical(entry->path(), isNone)});
    }
    std::ranges::sort(banks, {}, &SoundBankFile::path);
    return banks;
}

} // namespace

// A device or a pipe would be read for ever.
void requireSoundBankFile(const path& bank) {
    using enum std::filesystem::file_type;
    std::error_code ignored;
    const auto refuse = [&](const char* why) {
        throw SoundBankError("The sound bank " + bank.string() + why + advice);
    };
    switch (std::filesystem::status(bank, ignored).type()) {
    case regular:
        return;
    case directory:
        refuse(" is a folder, not a file.");
        break;
    case block:
    case character:
        refuse(" is a device, not a file.");
        break;
    case fifo:
    case socket:
        refuse(" is a pipe, not a file.");
        break;
    default:
        refuse(" does not exist.");
    }
}

std::vector<path> soundBankFolders() {
    constexpr std::array parts{"sounds/sf3", "sounds/sf2", "soundfonts", "sounds"};
    QStringList data = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    data << "/usr/local/share"
         << "/usr/share";
    data.removeDuplicates();
    std::vector<path> folders;
    for (const QString& folder : data) {
        for (const char* part : parts)
            folders.push_back(path(folder.toStdString()) / part);
    }
    return folders;
}

std::vector<SoundBankFile> soundBanks(const std::vector<path>& folders) {
    std::vector<SoundBankFile> all;
    for (const path& folder : folders)
        std::ranges::move(banksIn(folder), std::back_inserter(all));
    std::ranges::stable_sort(all, {}, rank);
    std::vector<SoundBankFile> banks;
    for (SoundBankFile& bank : all) {
        if (std::ranges::find(banks, bank.file, &SoundBankFile::file) == banks.end())
            banks.push_back(std::move(bank));
    }
    return banks;
}

std::vector<path> banksToTry(const SoundBankWish& wish, const std::vector<path>& folders) {
    if (!wish.named.empty()) {
        requireSoundBankFile(wish.named);
        return {wish.named};
    }
    std::vector<path> banks;
    if (!wish.preferred.empty())
        banks.push_back(wish.preferred);
    for (const SoundBankFile& bank : soundBanks(folders))
        banks.push_back(bank.path);
    if (!banks.empty())
        return banks;
    std::string tried;
    for (const path& folder : folders)
        tried += (tried.empty() ? "" : ", ") + folder.string();
    throw SoundBankError(std::string("No General MIDI sound bank was found.") + advice +
                         " Looked in: " + tried + ".");
}

} // namespace tambrel
