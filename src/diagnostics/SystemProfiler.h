#pragma once

#include "ComputerFacts.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace tambrel {

/// A program that prints something about the computer.
struct ProfilerTool {
    QString program; ///< Looked up on PATH.
    QStringList arguments = {};
    QStringList leftOut = {}; ///< Beginnings of printed lines to leave out.
};

[[nodiscard]] std::vector<ProfilerTool> standardProfilerTools();

/// Describes hardware and software in a few dozen lines.
struct SystemProfiler {
    std::vector<ProfilerTool> tools = standardProfilerTools();
    /// For all tools together. One that is not done by then is ended; what it printed counts.
    std::chrono::milliseconds limit{5000};
    std::function<ComputerFacts()> computer = ComputerFacts::current;
    std::stop_token stop = {}; ///< Ends the report early.

    /// What the tools print, one after another, in UTF-8. When that is nothing, a short text that says why,
    /// with the facts that are always known. Blocks for the limit at most, or until
    /// it is stopped; any thread.
    [[nodiscard]] std::string report() const;
};

} // namespace tambrel
