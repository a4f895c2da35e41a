#pragma once

#include "MIDIData.h"
#include "MIDIMessage.h"

#include <vector>

namespace tambrel {

/// Reads a system-exclusive payload (what follows F0, with or without the final F7) down to the messages that
/// the synthesizer acts on; none when it acts on none. Universal messages: MIDI 1.0, GM (RP-003), GM2
/// (RP-024) and tuning (MMA CA-020, CA-021); GS and XG: `SongParameters`. Pure, any thread.
[[nodiscard]] std::vector<MIDIMessage> readSystemExclusive(ByteView payload);

} // namespace tambrel
