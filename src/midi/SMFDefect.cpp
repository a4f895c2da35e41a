#include "SMFDefect.h"

#include "MIDIStatus.h"
#include "SMFByteCodec.h"

#include <algorithm>

namespace tambrel {
namespace {

std::string hexadecimal(std::uint8_t byte) {
    constexpr const char* digits = "0123456789ABCDEF";
    return {'0', 'x', digits[byte >> 4], digits[byte & 15]};
}

// Of a variable-length quantity that cannot be read.
SMFDefect brokenQuantity(std::size_t position, std::size_t end, const char* what) {
    constexpr std::size_t longest = 4;
    if (end - position < longest)
        return {position, std::string("The track ends within ") + what + "."};
    return {position, std::string("There are more than four bytes in ") + what + "."};
}

} // namespace

SMFDefect defectOfEvent(ByteView data, std::size_t start, std::size_t end, bool hasRunningStatus) {
    const auto byteAt = [&](std::size_t position) { return data[position]; };
    std::size_t position = start;
    if (!SMFByteCodec::readVarLen(data, position, end))
        return brokenQuantity(start, end, "a delta time");
    if (position >= end)
        return {start, "The track ends after a delta time."};
    const std::size_t statusAt = position;
    const std::uint8_t status = byteAt(position);
    if (status < 0x80)
        return hasRunningStatus
                   ? SMFDefect{start, "The track ends within a message, or its time passes 32 bits."}
                   : SMFDefect{statusAt,
                               "The data byte " + hexadecimal(status) + " stands where a status belongs."};
    if (status < MIDIStatus::systemExclusive)
        return end - position <= MIDIStatus::dataLength(status)
                   ? SMFDefect{statusAt, "The track ends within a message."}
                   : SMFDefect{start, "The time of the track passes 32 bits."};
    const bool isMeta = status == MIDIStatus::meta;
    if (!isMeta && status != MIDIStatus::systemExclusive && status != MIDIStatus::systemExclusiveContinuation)
        return {statusAt, "The status " + hexadecimal(status) + " has no place in a file."};
    position += isMeta ? 2 : 1;
    if (position > end)
        return {statusAt, "The track ends within a meta event."};
    const std::size_t lengthAt = position;
    const auto length = SMFByteCodec::readVarLen(data, position, end);
    if (!length)
        return brokenQuantity(lengthAt, end, "the length of an event");
    if (*length > end - position)
        return {lengthAt, "An event of " + std::to_string(*length) + " bytes has room for only " +
                              std::to_string(end - position) + "."};
    return {start, "The time of the track passes 32 bits."};
}

} // namespace tambrel
