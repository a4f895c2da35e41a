#pragma once

#include <cstdint>
#include <string_view>

namespace tambrel {

// Characters as a reader counts them (the extended grapheme clusters of Unicode, UAX 29) in UTF-8 text. Any
// thread. The time taken grows with the characters asked about, not with the text.

[[nodiscard]] std::int64_t characterCount(std::string_view text);

/// Whether the text has more than `limit` characters, at least 0.
[[nodiscard]] bool hasMoreCharactersThan(std::string_view text, std::int64_t limit);

/// The last `count` characters, at least 0, or the whole text when it has no more.
[[nodiscard]] std::string_view lastCharacters(std::string_view text, std::int64_t count);

} // namespace tambrel
