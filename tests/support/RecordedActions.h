#pragma once

#include <QCoreApplication>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tambrel {

/// Keeps what a view reports of the user: its `log()` is the view's `onUserAction`.
class RecordedActions {
public:
    [[nodiscard]] auto log() {
        return [this](std::string_view action, std::string_view procedure) {
            entries_.push_back(std::string(action).append(" | ").append(procedure));
        };
    }

    /// What has been reported since the last call, by now and not later.
    [[nodiscard]] std::vector<std::string> taken() { return std::exchange(entries_, {}); }

    /// The same, once the events that are due have been handled.
    [[nodiscard]] std::vector<std::string> settled() {
        QCoreApplication::processEvents();
        return taken();
    }

private:
    std::vector<std::string> entries_;
};

} // namespace tambrel
