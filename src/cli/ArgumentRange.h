#pragma once

#include <CLI/CLI.hpp>

#include <sstream>
#include <string>

namespace tambrel::cli {

/// Like CLI::Range, with a text that does not change with the version of CLI11.
inline CLI::Validator within(double lowest, double highest) {
    const auto complaint = [range = CLI::Range(lowest, highest), lowest, highest](std::string& text) {
        std::ostringstream message;
        if (!range(text).empty())
            message << "Value " << text << " not in range " << lowest << " to " << highest;
        return message.str();
    };
    return {complaint, ""};
}

} // namespace tambrel::cli
