#pragma once

#include <cstdint>
#include <string>

namespace tambrel {

/// What a bug report always says about the computer.
struct ComputerFacts {
    std::string systemVersion = {}; ///< Name and version of the operating system.
    std::string computerName = {};  ///< May be empty.
    long processorCount = 0;
    std::int64_t physicalMemory = 0; ///< In bytes.

    /// Those of this computer. Any thread.
    [[nodiscard]] static ComputerFacts current();

    /// One line a fact, without a final newline. A computer without a name is "Unknown".
    [[nodiscard]] std::string report() const;
};

/// Bytes in the largest unit of 1024 that leaves at least 1, with at most one fractional digit for megabytes
/// and two from gigabytes on: "0 bytes", "512 KB", "7.5 MB", "15.62 GB", "16 GB".
[[nodiscard]] std::string memoryText(std::int64_t bytes);

} // namespace tambrel
