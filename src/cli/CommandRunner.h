#pragma once

#include "Commands.h"

namespace tambrel::cli {

/// Runs the command line and returns the exit status of the program. Main thread, once. Throws UsageError,
/// std::system_error when standard output cannot be written, or std::runtime_error.
[[nodiscard]] int runCommandLine(int count, char** words);

} // namespace tambrel::cli
