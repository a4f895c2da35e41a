#pragma once

#include <stop_token>

namespace tambrel::cli {

/// The signals that ask the program to end: SIGINT, SIGTERM, SIGHUP, and SIGPIPE when the reader of its
/// output is gone. Unfinished files are given up, then the program dies of the signal, so that its shell
/// knows. A second signal ends it at once. Any thread.
namespace Interruption {

/// To be called before the first thread is started. Signals that the caller has ignored stay so.
void listen();

/// Requested to stop once the program is interrupted.
[[nodiscard]] std::stop_token token();
/// The signal, 0 while there is none.
[[nodiscard]] int signal();
/// A file descriptor that becomes readable once the program is interrupted, for `poll`.
[[nodiscard]] int descriptor();

/// As if the signal had come from outside.
void raise(int signal);

/// Ends the program by the signal, if there was one.
void die();

} // namespace Interruption
} // namespace tambrel::cli
