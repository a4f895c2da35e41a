#pragma once

#include "MIDIData.h"

#include <array>
#include <cstdint>
#include <set>
#include <vector>

namespace tambrel {

/// The tracks and channels of a song in which notes are struck. Both count from 1.
struct NoteParts {
    std::set<std::size_t> tracks;
    std::set<std::size_t> channels;
};

/// Tells which notes of a song are heard, by track and channel. Both count from 1.
struct NoteFilter {
    NoteParts muted;
    NoteParts soloed; ///< When there are any, they alone are heard.

    [[nodiscard]] bool isEmpty() const;
    [[nodiscard]] bool lets(std::size_t track, std::size_t channel) const;

    /// The song without the notes that are not heard. Everything else stays, at its time, so that channels
    /// keep their settings. A track ends at its first defect, as it does when played. Pure. Any thread.
    [[nodiscard]] MIDIData applied(ByteView smf) const;
};

/// The tracks and channels of a whole song in which notes are struck. Pure, any thread.
[[nodiscard]] NoteParts partsWithNotes(ByteView smf);

} // namespace tambrel
