#pragma once

#include "MIDIData.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace tambrel {

/// Songs and clips as text, one event a line, and back. What is written as text becomes the same bytes again,
/// whatever way of writing them the file has chosen. The form is described in docs/tambrel-midi.md. Pure, any
/// thread.
namespace EventText {

/// The data cannot be read as events, or the text is none of events; `what` says why and where.
class Error : public std::runtime_error {
public:
    explicit Error(const std::string& what, std::string byteReason = {}, std::size_t bytePosition = 0)
        : std::runtime_error(what), reason(std::move(byteReason)), position(bytePosition) {}

    std::string reason;       ///< Without the place; only of data.
    std::size_t position = 0; ///< Of the byte; only of data.
};

/// The text of a Standard MIDI File of any format, or of a MIDI 2.0 Clip File. Throws Error with the byte.
[[nodiscard]] std::string dump(ByteView data);

/// The file that a text stands for. Throws Error with the line.
[[nodiscard]] MIDIData build(std::string_view text);

} // namespace EventText
} // namespace tambrel
