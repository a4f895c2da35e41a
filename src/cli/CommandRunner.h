#pragma once

#include "Commands.h"

namespace tambrel::cli {

/// Does what the words of the command line say, and returns the exit status of the program. Throws
/// UsageError, std::system_error when standard output cannot be written, or std::runtime_error.
[[nodiscard]] int runCommandLine(int count, char** words);

} // namespace tambrel::cli
