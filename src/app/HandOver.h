#pragma once

namespace tambrel {

struct CommandLine;
class DesktopApplication;
struct LaunchContext;

/// Lets the window that is open already, if there is one, have the files, and come to the front. True when
/// that has been done: this program is not needed then. Otherwise this program is the one that later ones
/// hand over to, if the command line does not ask for one of its own. Takes a millisecond.
[[nodiscard]] bool handOver(const CommandLine& commandLine, DesktopApplication& desktop,
                            const LaunchContext& context);

/// Says of each file that cannot be one to play, on the standard error stream, that it is not opened.
void complainOfUnsupportedFiles(const CommandLine& commandLine);

} // namespace tambrel
