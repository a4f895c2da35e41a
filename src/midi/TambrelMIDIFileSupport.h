#pragma once

#include <span>
#include <string_view>

namespace tambrel {

/// The file name extensions that Tambrel opens, in lower case and without the point. Pure, any thread.
namespace TambrelMIDIFileSupport {

[[nodiscard]] std::span<const std::string_view> standardExtensions();
[[nodiscard]] std::span<const std::string_view> midi2ClipExtensions();
/// The union of the two above.
[[nodiscard]] std::span<const std::string_view> loadableExtensions();

/// True when the extension of the file name (what follows its last point) is one of `extensions`, whatever
/// its case.
[[nodiscard]] bool hasExtension(std::string_view fileName, std::span<const std::string_view> extensions);

} // namespace TambrelMIDIFileSupport
} // namespace tambrel
