#include "SMFTrackChunk.h"

#include "SMFByteCodec.h"

#include <cassert>

namespace tambrel {

std::vector<SMFTrackChunk> SMFTrackEventWalker::trackChunks(ByteView data, std::int64_t declaredTrackCount) {
    assert(declaredTrackCount >= 0);
    constexpr std::int64_t chunkHeaderSize = 8;
    const auto size = static_cast<std::int64_t>(data.size());

    std::vector<SMFTrackChunk> chunks;
    std::int64_t position = smfHeaderSize;
    while (static_cast<std::int64_t>(chunks.size()) < declaredTrackCount &&
           position + chunkHeaderSize <= size && SMFByteCodec::hasChunkType(data, position, "MTrk")) {
        const std::int64_t length = SMFByteCodec::readU32(data, position + 4);
        const std::int64_t dataStart = position + chunkHeaderSize;
        if (length > size - dataStart)
            break;
        chunks.push_back({.index = static_cast<std::int64_t>(chunks.size()),
                          .headerOffset = position,
                          .dataStart = dataStart,
                          .dataEnd = dataStart + length,
                          .length = length});
        position = dataStart + length;
    }
    return chunks;
}

} // namespace tambrel
