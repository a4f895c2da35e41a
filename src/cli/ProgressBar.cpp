#include "ProgressBar.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>
#include <utility>

namespace tambrel::cli {

ProgressBar::ProgressBar(std::string title)
    : title_(std::move(title)), isTerminal_(isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar() {
    if (percentShown_ >= 0)
        std::fputs("\r\033[K", stderr);
}

void ProgressBar::show(double part) {
    constexpr int width = 40;
    const int percent = static_cast<int>(std::clamp(part, 0.0, 1.0) * 100);
    if (!isTerminal_ || percent == std::exchange(percentShown_, percent))
        return;
    const auto filled = static_cast<std::size_t>(percent * width / 100);
    const std::string bar = std::string(filled, '#') + std::string(width - filled, '.');
    std::fprintf(stderr, "\r%s [%s] %3d %%", title_.c_str(), bar.c_str(), percent);
}

} // namespace tambrel::cli
