#include "ProgressBar.h"

#include "Console.h"
#include "TerminalText.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace tambrel::cli {
ProgressBar::ProgressBar(std::string title, std::size_t jobs)
    : title_(std::move(title)), isShown_(canRedrawLine(STDERR_FILENO)), parts_(jobs) {}

ProgressBar::~ProgressBar() {
    wipe();
}

void ProgressBar::show(std::size_t job, double part) {
    constexpr std::chrono::milliseconds pause(100);
    if (!isShown_)
        return;
    const std::lock_guard lock(mutex_);
    part = std::clamp(part, 0.0, 1.0);
    sum_ += part - std::exchange(parts_[job], part);
    const auto now = Clock::now();
    if (now < nextDrawing_)
        return;
    nextDrawing_ = now + pause;
    draw(sum_ / static_cast<double>(parts_.size()), now);
}

void ProgressBar::draw(double part, Clock::time_point now) {
    const double elapsed = std::chrono::duration<double>(now - began_).count();
    const std::string left = part > 0.01 ? " " + clockText(elapsed / part - elapsed) + " left" : "";
    const std::string percent = " " + std::to_string(static_cast<int>(part * 100)) + " %" + left;
    complain("\r" + barLine(title_, part, percent, terminalWidth(STDERR_FILENO) - 1) + "\033[K");
    isDrawn_ = true;
}

void ProgressBar::wipe() {
    const std::lock_guard lock(mutex_);
    if (std::exchange(isDrawn_, false))
        complain("\r\033[K");
}

} // namespace tambrel::cli
