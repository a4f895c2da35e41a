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

bool hasChunkType(ByteView data, std::size_t offset, std::string_view type) {
    return offset + type.size() <= data.size() &&
           std::ranges::equal(type, data.subspan(offset, type.size()), [](char wanted, std::uint8_t byte) {
               return static_cast<unsigned char>(wanted) == byte;
           });
}

} // namespace tambrel::SMFByteCodec
