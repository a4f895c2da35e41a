#pragma once

#include "EventNames.h"
#include "MIDIData.h"
#include "TextWriter.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What the texts of songs and of clips share. Pure, any thread; what cannot be read throws Error.
namespace tambrel::EventText {

[[nodiscard]] std::string dumpSong(ByteView data);
[[nodiscard]] std::string dumpClip(ByteView data);
[[nodiscard]] MIDIData buildSong(std::string_view text);
[[nodiscard]] MIDIData buildClip(std::string_view text);

/// Throws Error for a byte of a file.
[[noreturn]] void fail(std::size_t position, const std::string& reason);

/// Bytes of the shortest variable-length quantity.
[[nodiscard]] constexpr std::size_t quantityLength(std::uint32_t value) {
    return value < 0x80 ? 1 : value < 0x4000 ? 2 : value < 0x20'0000 ? 3 : 4;
}

/// Writes the name of a channel message, its channel by `writeChannel`, and its data.
template<class WriteChannel>
void writeChannelMessage(std::uint8_t status, std::uint8_t data1, std::uint8_t data2, TextWriter& out,
                         WriteChannel writeChannel) {
    out.word(channelNames[(status >> 4) - 8U]);
    writeChannel();
    if (MIDIStatus::kind(status) == MIDIStatus::pitchBend) {
        out.number(data1 | data2 << 7);
        return;
    }
    out.number(data1);
    if (MIDIStatus::dataLength(status) == 2)
        out.number(data2);
}

} // namespace tambrel::EventText
