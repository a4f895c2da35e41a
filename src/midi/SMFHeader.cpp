#include "SMFHeader.h"

#include "SMFByteCodec.h"

namespace tambrel {

std::optional<SMFHeader> SMFHeader::read(ByteView data) {
    constexpr std::uint32_t contentLength = 6;
    if (data.size() < size || !SMFByteCodec::hasChunkType(data, 0, "MThd") ||
        SMFByteCodec::readU32(data, 4) != contentLength)
        return std::nullopt;
    return SMFHeader{.format = SMFByteCodec::readU16(data, 8),
                     .trackCount = SMFByteCodec::readU16(data, 10),
                     .division = Division(SMFByteCodec::readU16(data, 12))};
}

} // namespace tambrel
