#pragma once

#include "MIDIData.h"
#include "MIDIMessage.h"

#include <optional>

namespace tambrel {

/// Reads a system-exclusive payload (what follows F0, with or without the final F7) down to the message that
/// the synthesizer acts on; absent when it acts on none. Tuning messages are among those left out: the
/// synthesizer would allocate memory for them while it renders. Universal messages: MIDI 1.0 and GM (RP-003).
[[nodiscard]] std::optional<MIDIMessage> readSystemExclusive(ByteView payload);

} // namespace tambrel
