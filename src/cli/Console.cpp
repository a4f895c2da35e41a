#include "Console.h"

#include "Interruption.h"
#include "UTF8.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>
#include <unistd.h>

namespace tambrel::cli {
namespace {

bool isControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    const bool isC1 =
        character.size() == 2 && first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    return first < 0x20 || first == 0x7F || isC1;
}

} // namespace

std::string printable(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = UTF8::characterLength(text.substr(at));
        const std::string_view character = text.substr(at, std::max<std::size_t>(length, 1));
        if (length > 0 && !isControl(character)) {
            result += character;
        } else {
            for (const char byte : character) {
                char escape[5];
                std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(byte));
                result += escape;
            }
        }
        at += character.size();
    }
    return result;
}

std::string complaint(const std::filesystem::path& file, std::string_view message) {
    return "tambrel-midi: " + printable(file.native()) + ": " + std::string(message) + "\n";
}

void complain(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
}

void print(std::string_view text) {
    while (!text.empty() && !Interruption::signal()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EPIPE)
            Interruption::raise(SIGPIPE);
        else if (errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "Standard output");
    }
}

} // namespace tambrel::cli
