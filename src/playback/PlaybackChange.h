#pragma once

namespace tambrel {

/// What those who look on beside the interface may want to know of.
enum class PlaybackChange {
    song,     ///< Another song is there, or there is none any more.
    mode,     ///< The mode has been assigned, perhaps the one it already was.
    position, ///< The playhead has moved in another way than by playing.
};

} // namespace tambrel
