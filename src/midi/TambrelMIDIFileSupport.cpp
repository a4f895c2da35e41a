#include "TambrelMIDIFileSupport.h"

#include "LowerCase.h"

#include <algorithm>
#include <array>

namespace tambrel::TambrelMIDIFileSupport {
namespace {

constexpr std::array<std::string_view, 5> all{"mid", "midi", "midi2", "smf2", "clip"};

} // namespace

std::span<const std::string_view> standardExtensions() {
    return std::span(all).first<2>();
}
std::span<const std::string_view> midi2ClipExtensions() {
    return std::span(all).last<3>();
}
std::span<const std::string_view> loadableExtensions() {
    return all;
}

bool hasExtension(std::string_view fileName, std::span<const std::string_view> extensions) {
    const auto name = fileName.substr(fileName.find_last_of('/') + 1);
    const auto point = name.find_last_of('.');
    if (point == std::string_view::npos || point == 0)
        return false;
    const auto extension = name.substr(point + 1);
    return std::ranges::any_of(extensions, [&](std::string_view candidate) {
        return std::ranges::equal(candidate, extension, {}, {}, lowerCased);
    });
}

} // namespace tambrel::TambrelMIDIFileSupport
