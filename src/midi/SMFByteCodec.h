#pragma once

#include "MIDIData.h"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tambrel {

/// Byte-level reading and writing of Standard MIDI Files (SMF 1.0, RP-001). Integers are big-endian.
/// Positions are absolute byte indices into the whole file. Pure functions, callable from any thread.
namespace SMFByteCodec {

/// The 2 bytes at `offset`. The caller has made sure that they exist.
[[nodiscard]] inline std::uint16_t readU16(ByteView data, std::size_t offset) {
    assert(offset + 2 <= data.size());
    return static_cast<std::uint16_t>(data[offset] << 8 | data[offset + 1]);
}

/// The 4 bytes at `offset`. The caller has made sure that they exist.
[[nodiscard]] inline std::uint32_t readU32(ByteView data, std::size_t offset) {
    assert(offset + 4 <= data.size());
    return std::uint32_t{data[offset]} << 24 | std::uint32_t{data[offset + 1]} << 16 |
           std::uint32_t{data[offset + 2]} << 8 | data[offset + 3];
}

/// Reads a variable-length quantity of at most 4 bytes and moves `offset` past it. Absent, with `offset`
/// unchanged, when the fourth byte still has its top bit set or `limit` cuts the quantity off.
[[nodiscard]] inline std::optional<std::uint32_t> readVarLen(ByteView data, std::size_t& offset,
                                                             std::size_t limit) {
    assert(limit <= data.size());
    constexpr int maximumLength = 4;
    std::uint32_t value = 0;
    std::size_t at = offset;
    for (int length = 0; length < maximumLength && at < limit; ++length) {
        const std::uint8_t byte = data[at++];
        value = value << 7 | (byte & 0x7Fu);
        if (byte < 0x80) {
            offset = at;
            return value;
        }
    }
    return std::nullopt;
}

void appendU16(std::uint16_t value, Bytes& buffer);
void appendU32(std::uint32_t value, Bytes& buffer);

/// Writes the full unsigned 32-bit range, in up to 5 bytes; `readVarLen` takes at most 4 of them back.
void appendVarLen(std::uint32_t value, Bytes& buffer);

/// True when the 4 bytes at `offset` exist and are the ASCII text `type`.
[[nodiscard]] bool hasChunkType(ByteView data, std::size_t offset, std::string_view type);

} // namespace SMFByteCodec
} // namespace tambrel
