#include "SoundBank.h"

#include <algorithm>
#include <string>

namespace tambrel {
namespace {

constexpr const char* advice = " Install the package timgm6mb-soundfont, or name a bank with --soundfont.";

bool isFile(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

} // namespace

const std::vector<std::filesystem::path>& defaultSoundBanks() {
    static const std::vector<std::filesystem::path> paths{
        "/usr/share/sounds/sf3/default-GM.sf3", "/usr/share/sounds/sf2/default-GM.sf2",
        "/usr/share/soundfonts/default.sf2", "/usr/share/soundfonts/FluidR3_GM.sf2",
        "/usr/local/share/sounds/sf2/default-GM.sf2"};
    return paths;
}

std::filesystem::path findSoundBank(const std::filesystem::path& named,
                                    const std::vector<std::filesystem::path>& defaults) {
    if (!named.empty()) {
        if (!isFile(named))
            throw SoundBankError("The sound bank " + named.string() + " does not exist." + advice);
        return named;
    }
    const auto found = std::ranges::find_if(defaults, isFile);
    if (found != defaults.end())
        return *found;
    std::string tried;
    for (const auto& path : defaults)
        tried += (tried.empty() ? "" : ", ") + path.string();
    throw SoundBankError(std::string("No General MIDI sound bank was found.") + advice + " Tried: " + tried +
                         ".");
}

} // namespace tambrel
