#include "SMFByteCodec.h"
#include "MIDI2ClipBuilder.h"
#include "MIDIFileInfo.h"
#include "MIDILoudnessProcessor.h"
#include "SMFBuilder.h"
#include "SMFTrackChunk.h"

#include <gtest/gtest.h>

#include <tuple>

namespace tambrel {
namespace {

using testing::smfBytes;
using testing::TrackBuilder;

TEST(SMFByteCodec, readsVariableLengthQuantitiesOfAtMostFourBytes) {
    const std::tuple<const char*, Bytes, std::int64_t, std::optional<std::uint32_t>, std::int64_t> rows[] = {
        {"zero", {0x00}, 1, 0u, 1},
        {"largest of one byte, more data behind it", {0x7F, 0x05}, 2, 127u, 1},
        {"smallest of two bytes", {0x81, 0x00}, 2, 128u, 2},
        {"largest", {0xFF, 0xFF, 0xFF, 0x7F}, 4, 0x0FFFFFFFu, 4},
        {"padded with leading zero groups", {0x80, 0x80, 0x00}, 3, 0u, 3},
        {"five bytes", {0x81, 0x80, 0x80, 0x80, 0x00}, 5, std::nullopt, 0},
        {"cut off by the limit, not by the data", {0x81, 0x00}, 1, std::nullopt, 0},
        {"nothing left", {0x00}, 0, std::nullopt, 0},
    };
    for (const auto& [name, bytes, limit, value, offsetAfter] : rows) {
        SCOPED_TRACE(name);
        std::int64_t offset = 0;
        EXPECT_EQ(SMFByteCodec::readVarLen(bytes, offset, limit), value);
        EXPECT_EQ(offset, offsetAfter);
    }
}

TEST(SMFByteCodec, writesTheShortestVariableLengthQuantity) {
    Bytes written;
    for (const std::uint32_t value : {0u, 127u, 128u, 16383u, 16384u, 0x0FFFFFFFu, 0x10000000u, 0xFFFFFFFFu})
        SMFByteCodec::appendVarLen(value, written);
    EXPECT_EQ(written, (Bytes{0x00, 0x7F, 0x81, 0x00, 0xFF, 0x7F, 0x81, 0x80, 0x00, 0xFF, 0xFF, 0xFF,
                              0x7F, 0x81, 0x80, 0x80, 0x80, 0x00, 0x8F, 0xFF, 0xFF, 0xFF, 0x7F}));
}

Bytes withByte(Bytes file, std::size_t at, std::uint8_t byte) {
    file.at(at) = byte;
    return file;
}

Bytes cutTo(Bytes file, std::size_t size) {
    file.resize(size);
    return file;
}

TEST(SMFByteCodec, knowsDataThatIsNoStandardMIDIFileSoThatNobodyReadsOn) {
    const Bytes song = smfBytes(1, 480, {TrackBuilder().noteOn(1, 9, 36)});
    for (const Bytes& bytes : {song, Bytes{}, cutTo(song, 13), withByte(song, 3, 'x'), withByte(song, 7, 8),
                               withByte(song, 4, 1)}) {
        const MIDIData data{Bytes(bytes)};
        const bool isRead = bytes == song;
        EXPECT_EQ(MIDIFileInfo::parse(data) != MIDIFileInfo{}, isRead);
        EXPECT_EQ(!MIDI2ClipBuilder::build(data).empty(), isRead);
        EXPECT_EQ(!MIDILoudnessProcessor::boostedDrumsAndBass(data).sharesBytesWith(data), isRead);
    }
}

TEST(SMFTrackChunk, discoveryEndsAtTheFirstChunkThatIsNoWholeTrack) {
    // Tracks with 3, 0 and 7 data bytes, whose chunks begin at 14, 25 and 33.
    const Bytes file = smfBytes(
        1, 480, {TrackBuilder().raw({1, 2, 3}), TrackBuilder(), TrackBuilder().raw({1, 2, 3, 4, 5, 6, 7})});
    const SMFTrackChunk chunks[] = {{0, 14, 22, 25, 3}, {1, 25, 33, 33, 0}, {2, 33, 41, 48, 7}};
    Bytes trailing = file;
    trailing.insert(trailing.end(), {'M', 'T', 'r', 'k', 0, 0, 0});
    const std::tuple<const char*, Bytes, std::int64_t, std::size_t> rows[] = {
        {"all of them, the last ending with the data", file, 3, 3},
        {"fewer declared than present", file, 2, 2},
        {"more declared than present", file, 65535, 3},
        {"a foreign chunk hides those behind it", withByte(file, 25, 'X'), 3, 1},
        {"the last one byte short", cutTo(file, 47), 3, 2},
        {"cut inside a chunk header", cutTo(file, 32), 3, 1},
        {"a length beyond any file", withByte(file, 18, 0xFF), 3, 0},
        {"stray bytes behind the last", trailing, 65535, 3},
        {"empty", {}, 3, 0},
    };
    for (const auto& [name, bytes, declared, found] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(SMFTrackEventWalker::trackChunks(bytes, declared), std::vector(chunks, chunks + found));
    }
}

} // namespace
} // namespace tambrel
