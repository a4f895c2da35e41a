#pragma once

namespace tambrel {

struct CommandLine;
class DesktopApplication;
struct LaunchContext;

/// Hands the files to a window that is open already, which comes to the front. True when that has been done:
/// this program is not needed. Otherwise later programs hand over to this one, unless the command line asks
/// for an instance of its own. Takes a millisecond. Main thread.
[[nodiscard]] bool handOver(const CommandLine& commandLine, DesktopApplication& desktop,
                            const LaunchContext& context);

/// Says of each file that cannot be one to play, on the standard error stream, that it is not opened.
void complainOfUnsupportedFiles(const CommandLine& commandLine);

} // namespace tambrel
