#pragma once

#include "MIDI2Clip.h"
#include "SMFByteCodec.h"

#include <vector>

namespace tambrel::testing {

/// The bytes of a whole MIDI 2.0 clip: the signature, then the words.
[[nodiscard]] inline Bytes clipBytes(const std::vector<std::uint32_t>& words) {
    Bytes clip(MIDI2Clip::signature.begin(), MIDI2Clip::signature.end());
    for (const std::uint32_t word : words)
        SMFByteCodec::appendU32(word, clip);
    return clip;
}

} // namespace tambrel::testing
