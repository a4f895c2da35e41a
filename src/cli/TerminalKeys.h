#pragma once

#include <optional>
#include <string>
#include <termios.h>

namespace tambrel::cli {

/// Single keys from the terminal, without waiting for a line and without showing them. The destructor
/// restores the terminal. Main thread.
class TerminalKeys {
public:
    enum class Key { pause, back, forward, farBack, farForward, next, previous, quit };

    /// From standard input where that is a terminal, else from the terminal that the program runs in, if any.
    TerminalKeys();
    ~TerminalKeys();
    TerminalKeys(const TerminalKeys&) = delete;
    TerminalKeys& operator=(const TerminalKeys&) = delete;

    /// Readable when there are keys; -1 without a terminal.
    [[nodiscard]] int descriptor() const { return descriptor_; }
    /// The next key that means something.
    [[nodiscard]] std::optional<Key> next();
    /// Sets the terminal up again, after the program was stopped and has gone on.
    void resume();

private:
    int descriptor_ = -1;
    termios before_{};
    std::string waiting_;
};

} // namespace tambrel::cli
