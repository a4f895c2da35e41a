#pragma once

#include <string>

namespace tambrel::cli {

/// A bar on standard error that grows as a job goes on. Draws nothing unless standard error is a terminal.
class ProgressBar {
public:
    explicit ProgressBar(std::string title);
    ~ProgressBar(); ///< Wipes the bar.
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// `part` from 0 to 1; drawn only when the picture changes.
    void show(double part);

private:
    std::string title_;
    bool isTerminal_;
    int percentShown_ = -1;
};

} // namespace tambrel::cli
