#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tambrel::cli {

/// True for a terminal in which a line can be written over. All here: any thread.
[[nodiscard]] bool canRedrawLine(int descriptor);

/// Characters in a line of the terminal; 80 where that is unknown.
[[nodiscard]] std::size_t terminalWidth(int descriptor);

/// "4:05", or "1:04:05" from an hour on; whole seconds, rounded down.
[[nodiscard]] std::string clockText(double seconds);

/// "TITLE [####....] END" in `width` characters: the title is cut in its middle, then the bar is left out.
[[nodiscard]] std::string barLine(std::string_view title, double part, std::string_view end,
                                  std::size_t width);

} // namespace tambrel::cli
