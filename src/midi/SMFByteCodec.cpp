#include "SMFByteCodec.h"

#include <algorithm>
#include <array>

namespace tambrel::SMFByteCodec {

void appendU16(std::uint16_t value, Bytes& buffer) {
    buffer.push_back(static_cast<std::uint8_t>(value >> 8));
    buffer.push_back(static_cast<std::uint8_t>(value));
}

void appendU32(std::uint32_t value, Bytes& buffer) {
    appendU16(static_cast<std::uint16_t>(value >> 16), buffer);
    appendU16(static_cast<std::uint16_t>(value), buffer);
}

void appendVarLen(std::uint32_t value, Bytes& buffer) {
    std::array<std::uint8_t, 5> groups{};
    auto first = groups.end();
    *--first = value & 0x7F;
    while (value >= 0x80) {
        value >>= 7;
        *--first = static_cast<std::uint8_t>(value & 0x7F) | 0x80;
    }
    buffer.insert(buffer.end(), first, groups.end());
}

bool hasChunkType(ByteView data, std::int64_t offset, std::string_view type) {
    const auto at = static_cast<std::size_t>(offset);
    return at + type.size() <= data.size() &&
           std::equal(type.begin(), type.end(), data.begin() + offset, [](char wanted, std::uint8_t byte) {
               return static_cast<unsigned char>(wanted) == byte;
           });
}

bool hasHeader(ByteView data) {
    constexpr std::uint32_t headerLength = 6;
    return data.size() >= static_cast<std::size_t>(smfHeaderSize) && hasChunkType(data, 0, "MThd") &&
           readU32(data, 4) == headerLength;
}

} // namespace tambrel::SMFByteCodec
