#include "TerminalText.h"

#include "UTF8.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>
#include <vector>

namespace tambrel::cli {
namespace {

std::vector<std::string_view> characters(std::string_view text) {
    std::vector<std::string_view> result;
    while (!text.empty()) {
        const std::size_t length = std::max<std::size_t>(UTF8::characterLength(text), 1);
        result.push_back(text.substr(0, length));
        text.remove_prefix(length);
    }
    return result;
}

// At most `width` characters, cut in the middle: names differ at their beginning or end.
std::string shortened(std::string_view text, std::size_t width) {
    const auto all = characters(text);
    if (all.size() <= width)
        return std::string(text);
    std::string result;
    const std::size_t kept = width == 0 ? 0 : width - 1;
    for (std::size_t i = 0; i < kept - kept / 2; ++i)
        result += all[i];
    result += width == 0 ? "" : "\u2026";
    for (std::size_t i = all.size() - kept / 2; i < all.size(); ++i)
        result += all[i];
    return result;
}

} // namespace

bool canRedrawLine(int descriptor) {
    const char* const terminal = std::getenv("TERM");
    return isatty(descriptor) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

std::size_t terminalWidth(int descriptor) {
    constexpr std::size_t usual = 80;
    winsize size{};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

std::string clockText(double seconds) {
    const auto whole = static_cast<long long>(std::clamp(seconds, 0.0, 1e12));
    char text[40];
    if (whole < 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
    return text;
}

std::string barLine(std::string_view title, double part, std::string_view end, std::size_t width) {
    constexpr std::size_t widestBar = 40;
    constexpr std::size_t narrowestBar = 8;
    constexpr std::size_t frame = 3; // Brackets and the blank before them.
    const std::size_t forBoth = width > end.size() ? width - end.size() : 0;
    const std::size_t titleWidth =
        std::min(characters(title).size(), forBoth - std::min(forBoth, narrowestBar + frame));
    std::string line = shortened(title, titleWidth);
    const std::size_t forBar = forBoth - titleWidth;
    if (forBar >= narrowestBar + frame) {
        const std::size_t bar = std::min(forBar - frame, widestBar);
        const auto filled = static_cast<std::size_t>(std::clamp(part, 0.0, 1.0) * static_cast<double>(bar));
        line += " [" + std::string(filled, '#') + std::string(bar - filled, '.') + "]";
    }
    return line + std::string(end.substr(0, width));
}

} // namespace tambrel::cli
