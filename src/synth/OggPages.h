#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tambrel {

/// Gives the pages of an Ogg stream (RFC 3533) a serial number that is always the same, in place of the
/// random one of the encoder. One thread at a time.
class OggPages {
public:
    /// Takes the next bytes of the stream, cut anywhere, and returns the pages that are whole by now. They
    /// are valid until the next call.
    [[nodiscard]] std::span<const std::uint8_t> take(std::span<const std::uint8_t> bytes);

private:
    [[nodiscard]] std::size_t pageSize(std::size_t at) const;

    std::vector<std::uint8_t> waiting_;
    std::size_t given_ = 0; // Bytes at the front that were returned by the last call.
};

} // namespace tambrel
