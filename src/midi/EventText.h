#pragma once

#include "MIDIData.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace tambrel {

/// Songs and clips as text, one event a line, and back. The text keeps every way in which a file may write an
/// event: building it gives the same bytes again. docs/tambrel-midi.md describes the form. Pure, any thread.
namespace EventText {

/// The data or the text cannot be read as events; `what` says why and where.
class Error : public std::runtime_error {
public:
    explicit Error(const std::string& what, std::string byteReason = {}, std::size_t bytePosition = 0)
        : std::runtime_error(what), reason(std::move(byteReason)), position(bytePosition) {}

    std::string reason;       ///< Without the place; empty for text.
    std::size_t position = 0; ///< Of the byte; 0 for text.
};

/// The text of a Standard MIDI File of any format, or of a MIDI 2.0 Clip File. Throws Error with the byte.
[[nodiscard]] std::string dump(ByteView data);

/// The file that a text stands for. Throws Error with the line.
[[nodiscard]] MIDIData build(std::string_view text);

} // namespace EventText
} // namespace tambrel
