#include "BareWalk.h"

#include <cstddef>
#include <cstring>

namespace tambrel::bench {
namespace {

bool readQuantity(const std::uint8_t*& at, const std::uint8_t* end, std::uint32_t& value) {
    value = 0;
    for (int length = 0; length < 4 && at < end; ++length) {
        const std::uint8_t byte = *at++;
        value = value << 7 | (byte & 0x7Fu);
        if (byte < 0x80)
            return true;
    }
    return false;
}

void walkTrack(const std::uint8_t* at, const std::uint8_t* end, WalkSums& sums) {
    std::uint64_t noteOns = 0;
    std::uint64_t tick = 0;
    std::uint64_t lastTick = 0;
    std::uint8_t running = 0;
    std::uint32_t quantity = 0;
    while (readQuantity(at, end, quantity) && at < end) {
        tick += quantity;
        if (tick > 0xFFFFFFFF)
            break;
        std::uint8_t status = *at;
        if (status >= 0x80)
            ++at;
        else
            status = running;
        if (status >= 0x80 && status < 0xF0) {
            running = status;
            std::ptrdiff_t length = 2;
            if ((status & 0xE0) == 0xC0) [[unlikely]]
                length = 1;
            if (end - at < length)
                break;
            if ((status & 0xF0) == 0x90 && at[1] != 0)
                ++noteOns;
            at += length;
        } else {
            if (status != 0xF0 && status != 0xF7 && status != 0xFF)
                break;
            running = 0;
            if (status == 0xFF && at++ == end)
                break;
            if (!readQuantity(at, end, quantity) || end - at < static_cast<std::ptrdiff_t>(quantity))
                break;
            at += quantity;
        }
        lastTick = tick;
    }
    sums.noteOns += noteOns;
    sums.lastTicks += lastTick;
}

} // namespace

WalkSums bareWalk(ByteView file) {
    WalkSums sums;
    std::size_t position = 14;
    while (position + 8 <= file.size() && std::memcmp(&file[position], "MTrk", 4) == 0) {
        const std::size_t length = std::size_t{file[position + 4]} << 24 |
                                   std::size_t{file[position + 5]} << 16 |
                                   std::size_t{file[position + 6]} << 8 | file[position + 7];
        position += 8;
        if (length > file.size() - position)
            break;
        walkTrack(file.data() + position, file.data() + position + length, sums);
        position += length;
    }
    return sums;
}

} // namespace tambrel::bench
