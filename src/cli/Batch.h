#pragma once

#include "Commands.h"

#include <cstddef>
#include <functional>
#include <string>

namespace tambrel::cli {

class ProgressBar;

/// The result of one file.
struct Report {
    std::string output; ///< For standard output.
    std::string errors; ///< For standard error.
    bool failed = false;
};

/// Does the jobs 0 to `count` - 1, several at a time, and prints their reports in order, each as soon as it
/// can. With `failFast`, no job begins after a failure. At the end, says how many of several have failed.
/// Main thread; `work` is called on any thread, and gives up soon once the program is interrupted.
[[nodiscard]] ExitStatus runBatch(std::size_t count, const BatchOptions& options,
                                  const std::function<Report(std::size_t)>& work,
                                  ProgressBar* progress = nullptr);

} // namespace tambrel::cli
