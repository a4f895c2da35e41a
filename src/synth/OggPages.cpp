#include "OggPages.h"

#include <array>

namespace tambrel {
namespace {

constexpr std::size_t serialAt = 14;
constexpr std::size_t checksumAt = 22;
constexpr std::size_t segmentCountAt = 26;
constexpr std::size_t headerSize = 27; // Without the sizes of the segments, a byte each.

std::uint32_t checksum(std::span<const std::uint8_t> page) {
    constexpr std::uint32_t polynomial = 0x04C1'1DB7;
    static const auto table = [] {
        std::array<std::uint32_t, 256> made{};
        for (std::uint32_t byte = 0; byte < made.size(); ++byte) {
            std::uint32_t value = byte << 24;
            for (int bit = 0; bit < 8; ++bit)
                value = value << 1 ^ ((value & 0x8000'0000) != 0 ? polynomial : 0);
            made[byte] = value;
        }
        return made;
    }();
    std::uint32_t sum = 0;
    for (const std::uint8_t byte : page)
        sum = sum << 8 ^ table[(sum >> 24 ^ byte) & 0xFF];
    return sum;
}

void writeLittleEndian(std::uint32_t value, std::span<std::uint8_t> bytes) {
    for (int i = 0; i < 4; ++i, value >>= 8)
        bytes[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value);
}

} // namespace

std::span<const std::uint8_t> OggPages::take(std::span<const std::uint8_t> bytes) {
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(given_));
    waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
    given_ = 0;
    while (const std::size_t size = pageSize(given_)) {
        const auto page = std::span(waiting_).subspan(given_, size);
        writeLittleEndian(1, page.subspan(serialAt));
        writeLittleEndian(0, page.subspan(checksumAt));
        writeLittleEndian(checksum(page), page.subspan(checksumAt));
        given_ += size;
    }
    return std::span(waiting_).first(given_);
}

// 0 while it is not whole.
std::size_t OggPages::pageSize(std::size_t at) const {
    const auto rest = std::span(waiting_).subspan(at);
    if (rest.size() < headerSize || rest.size() < headerSize + rest[segmentCountAt])
        return 0;
    std::size_t size = headerSize + rest[segmentCountAt];
    for (const std::uint8_t segment : rest.subspan(headerSize, rest[segmentCountAt]))
        size += segment;
    return rest.size() < size ? 0 : size;
}

} // namespace tambrel
