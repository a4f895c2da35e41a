#pragma once

#include <optional>

namespace tambrel {

struct CommandLine;
class DesktopApplication;
struct LaunchContext;

/// Hands the files to a window that is open already, which comes to the front. The exit status when this
/// program is not needed any more: a failure if one of the files does not exist, which is said on the
/// standard error stream. Otherwise later programs hand over to this one, unless the command line asks for an
/// instance of its own. Takes a millisecond, and two seconds when the window is stuck, which is said too.
/// Main thread.
[[nodiscard]] std::optional<int> handOver(const CommandLine& commandLine, DesktopApplication& desktop,
                                          const LaunchContext& context);

/// Says of each file that cannot be one to play, on the standard error stream, that it is not opened.
void complainOfUnsupportedFiles(const CommandLine& commandLine);

} // namespace tambrel
