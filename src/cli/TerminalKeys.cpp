#include "TerminalKeys.h"

#include <array>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace tambrel::cli {

TerminalKeys::TerminalKeys()
    : descriptor_(isatty(STDIN_FILENO) == 1 ? dup(STDIN_FILENO) : open("/dev/tty", O_RDWR | O_CLOEXEC)) {
    if (descriptor_ < 0)
        return;
    tcgetattr(descriptor_, &before_);
    resume();
}

TerminalKeys::~TerminalKeys() {
    if (descriptor_ < 0)
        return;
    tcsetattr(descriptor_, TCSANOW, &before_);
    close(descriptor_);
}

void TerminalKeys::resume() {
    termios now{};
    if (descriptor_ < 0 || tcgetattr(descriptor_, &now) != 0)
        return;
    constexpr tcflag_t lines = ICANON | ECHO;
    // To set up the terminal would stop a program in the background (SIGTTOU).
    if ((now.c_lflag & lines) == 0 || tcgetpgrp(descriptor_) != getpgrp())
        return;
    now.c_lflag &= ~lines;
    now.c_cc[VMIN] = 0;
    now.c_cc[VTIME] = 0;
    tcsetattr(descriptor_, TCSANOW, &now);
}

std::optional<TerminalKeys::Key> TerminalKeys::next() {
    static constexpr std::array<std::pair<std::string_view, Key>, 14> keys{{
        {" ", Key::pause},
        {"q", Key::quit},
        {"n", Key::next},
        {"p", Key::previous},
        {"\033[C", Key::forward},
        {"\033[D", Key::back},
        {"\033[A", Key::farForward},
        {"\033[B", Key::farBack},
        {"\033OC", Key::forward},
        {"\033OD", Key::back},
        {"\033OA", Key::farForward},
        {"\033OB", Key::farBack},
        {"Q", Key::quit},
        {"\004", Key::quit},
    }};
    std::array<char, 64> read{};
    if (const ssize_t count = ::read(descriptor_, read.data(), read.size()); count > 0)
        waiting_.append(read.data(), static_cast<std::size_t>(count));
    while (!waiting_.empty()) {
        for (const auto& [bytes, key] : keys) {
            if (waiting_.starts_with(bytes)) {
                waiting_.erase(0, bytes.size());
                return key;
            }
        }
        waiting_.erase(0, 1);
    }
    return std::nullopt;
}

} // namespace tambrel::cli
