#pragma once

namespace tambrel {

/// What has changed, for listeners besides the window, such as the desktop. Main thread.
enum class PlaybackChange {
    song,     ///< Another song is loaded, or none any more.
    mode,     ///< The mode was assigned, perhaps unchanged.
    position, ///< The playhead has jumped.
};

} // namespace tambrel
