#pragma once

#include "MIDIData.h"

#include <cassert>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tambrel {

/// Size of the header chunk: "MThd", its length, format, track count and division (SMF 1.0, RP-001).
inline constexpr std::int64_t smfHeaderSize = 14;

/// Byte-level reading and writing of Standard MIDI Files (SMF 1.0, RP-001). Integers are big-endian.
/// Positions are absolute byte indices into the whole file. Pure functions, callable from any thread.
namespace SMFByteCodec {

/// The 2 bytes at `offset`. The caller has made sure that they exist.
[[nodiscard]] inline std::uint16_t readU16(ByteView data, std::int64_t offset) {
    const auto at = static_cast<std::size_t>(offset);
    assert(offset >= 0 && at + 2 <= data.size());
    return static_cast<std::uint16_t>(data[at] << 8 | data[at + 1]);
}

/// The 4 bytes at `offset`. The caller has made sure that they exist.
[[nodiscard]] inline std::uint32_t readU32(ByteView data, std::int64_t offset) {
    const auto at = static_cast<std::size_t>(offset);
    assert(offset >= 0 && at + 4 <= data.size());
    return std::uint32_t{data[at]} << 24 | std::uint32_t{data[at + 1]} << 16 |
           std::uint32_t{data[at + 2]} << 8 | data[at + 3];
}

/// Reads a variable-length quantity of at most 4 bytes and moves `offset` past it. Absent, with `offset`
/// unchanged, when the fourth byte still has its top bit set or `limit` cuts the quantity off.
[[nodiscard]] inline std::optional<std::uint32_t> readVarLen(ByteView data, std::int64_t& offset,
                                                             std::int64_t limit) {
    assert(offset >= 0 && limit <= static_cast<std::int64_t>(data.size()));
    constexpr int maximumLength = 4;
    std::uint32_t value = 0;
    std::int64_t at = offset;
    for (int length = 0; length < maximumLength && at < limit; ++length) {
        const std::uint8_t byte = data[static_cast<std::size_t>(at++)];
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
[[nodiscard]] bool hasChunkType(ByteView data, std::int64_t offset, std::string_view type);

/// True when the data begins with a whole header chunk: type "MThd" and length 6.
[[nodiscard]] bool hasHeader(ByteView data);

} // namespace SMFByteCodec
} // namespace tambrel
