#pragma once

#include <string_view>

namespace tambrel {

/// What the player does. Pure, any thread.
enum class PlaybackMode { idle, playing, paused };

/// The name of the case, as log lines write it.
[[nodiscard]] constexpr std::string_view text(PlaybackMode mode) {
    switch (mode) {
    case PlaybackMode::idle:
        return "idle";
    case PlaybackMode::playing:
        return "playing";
    case PlaybackMode::paused:
        return "paused";
    }
    return {};
}

} // namespace tambrel
