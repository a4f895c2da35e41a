#pragma once

#include "MIDIMessage.h"
#include "Timeline.h"

#include <cstddef>
#include <vector>

namespace tambrel {

/// A message that restores the state of a song at some place; a note has been sounding for `age` seconds.
struct Chased {
    MIDIMessage message;
    bool isNote;
    double age;
};

/// What brings a reset synthesizer to where `song` is at `seconds`, before its event `index`. Any thread.
[[nodiscard]] std::vector<Chased> chaseTo(const Timeline& song, std::size_t index, double seconds);

} // namespace tambrel
