#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace tambrel::cli {

/// A line on standard error that shows how far the jobs are and how long they will still take. Draws nothing
/// unless standard error is a terminal that can wipe a line. Any thread.
class ProgressBar {
public:
    /// `title` says what is done; it is cut where the terminal is narrow.
    ProgressBar(std::string title, std::size_t jobs);
    ~ProgressBar(); ///< Wipes the line.
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// `part` of one job, from 0 to 1.
    void show(std::size_t job, double part);
    /// Makes room for other text.
    void wipe();

private:
    using Clock = std::chrono::steady_clock;

    void draw(double part, Clock::time_point now);

    const std::string title_;
    const bool isShown_;
    const Clock::time_point began_ = Clock::now();
    std::mutex mutex_;
    std::vector<double> parts_;
    double sum_ = 0;
    Clock::time_point nextDrawing_ = began_;
    bool isDrawn_ = false;
};

} // namespace tambrel::cli
