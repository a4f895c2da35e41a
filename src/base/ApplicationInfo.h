#pragma once

#include <optional>
#include <string>
#include <variant>

namespace tambrel {

/// What this build says about itself. A text that the build leaves empty is absent. Any thread.
struct ApplicationInfo {
    /// Nothing, a text, or a Boolean, as the build wrote it.
    using DiagnosticsSwitch = std::variant<std::monostate, std::string, bool>;

    std::optional<std::string> displayName = {};
    std::optional<std::string> name = {};
    std::optional<std::string> shortVersion = {};
    std::optional<std::string> build = {};
    std::optional<std::string> identifier = {};
    DiagnosticsSwitch diagnosticsSwitch = {};

    /// The information of the running program.
    [[nodiscard]] static const ApplicationInfo& current();

    /// True for an identifier that ends in ".beta"; else what the switch says: a text "yes", "true" or "1" in
    /// any case, or a true Boolean. Takes a few nanoseconds and allocates nothing.
    [[nodiscard]] bool diagnosticsEnabled() const;
};

} // namespace tambrel
