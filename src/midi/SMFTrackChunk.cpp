#include "SMFTrackChunk.h"

#include "SMFByteCodec.h"
#include "SMFHeader.h"

namespace tambrel {

std::vector<SMFTrackChunk> SMFTrackEventWalker::trackChunks(ByteView data, std::size_t declaredTrackCount) {
    constexpr std::size_t chunkHeaderSize = 8;

    std::vector<SMFTrackChunk> chunks;
    std::size_t position = SMFHeader::size;
    while (chunks.size() < declaredTrackCount && position + chunkHeaderSize <= data.size() &&
           SMFByteCodec::hasChunkType(data, position, "MTrk")) {
        const std::size_t length = SMFByteCodec::readU32(data, position + 4);
        const std::size_t dataStart = position + chunkHeaderSize;
        if (length > data.size() - dataStart)
            break;
        chunks.push_back({.index = chunks.size(),
                          .headerOffset = position,
                          .dataStart = dataStart,
                          .dataEnd = dataStart + length,
                          .length = length});
        position = dataStart + length;
    }
    return chunks;
}

} // namespace tambrel
