#pragma once

#include "Commands.h"

#include <cstddef>
#include <functional>
#include <string>

namespace tambrel::cli {

class ProgressBar;

/// What came of one file.
struct Report {
    std::string output; ///< For standard output.
    std::string errors; ///< For standard error.
    bool failed = false;
};

/// Does the jobs 0 to `count` - 1, several at a time, and prints their reports in order as soon as that can
/// be. A job that fails keeps the others from being begun only where the options say so. At the end, says how
/// many of several have failed. `work` is called on any thread, and is expected to give up soon once the
/// program is interrupted.
[[nodiscard]] ExitStatus runBatch(std::size_t count, const BatchOptions& options,
                                  const std::function<Report(std::size_t)>& work,
                                  ProgressBar* progress = nullptr);

} // namespace tambrel::cli
