#pragma once

#include "MIDIData.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

namespace tambrel {

/// A byte buffer that is written once, from front to back, and becomes `MIDIData` without a copy. A large
/// buffer grows by remapping its pages, not by copying, and memory that is not written is never touched: the
/// peak is little more than the content. Integers are big-endian. Throws `std::bad_alloc`. One thread at a
/// time.
class MIDIDataWriter {
public:
    explicit MIDIDataWriter(std::size_t expectedSize) { grow(expectedSize); }

    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(position_ - buffer_.get()); }

    void append(ByteView bytes) {
        makeRoom(bytes.size());
        if (!bytes.empty())
            std::memcpy(position_, bytes.data(), bytes.size());
        position_ += bytes.size();
    }

    /// Appends the first `count` bytes of a small array.
    template<std::size_t capacity>
    void append(const std::array<std::uint8_t, capacity>& bytes, std::size_t count = capacity) {
        assert(count <= capacity);
        makeRoom(capacity);
        std::memcpy(position_, bytes.data(), capacity); // A fixed length is one or two moves.
        position_ += count;
    }

    void appendU16(std::uint16_t value) {
        makeRoom(2);
        *position_++ = static_cast<std::uint8_t>(value >> 8);
        *position_++ = static_cast<std::uint8_t>(value);
    }

    void appendU32(std::uint32_t value) {
        makeRoom(4);
        write(value, position_);
        position_ += 4;
    }

    /// A variable-length quantity of up to 5 bytes, as `SMFByteCodec::appendVarLen` writes it.
    void appendVarLen(std::uint32_t value) {
        makeRoom(5);
        std::uint8_t* at = position_;
        if (value >= 0x80) {
            for (int shift = 28; shift > 0; shift -= 7) {
                if (value >> shift != 0)
                    *at++ = static_cast<std::uint8_t>(value >> shift | 0x80);
            }
        }
        *at++ = value & 0x7F;
        position_ = at;
    }

    /// At least `atLeast` free bytes behind what is written; `commit` then counts in those that were filled.
    [[nodiscard]] std::span<std::uint8_t> room(std::size_t atLeast) {
        makeRoom(atLeast);
        return {position_, end_};
    }
    void commit(std::size_t bytes) {
        assert(bytes <= static_cast<std::size_t>(end_ - position_));
        position_ += bytes;
    }

    /// Replaces 4 bytes written before.
    void overwriteU32(std::size_t at, std::uint32_t value) {
        assert(at + 4 <= size());
        write(value, buffer_.get() + at);
    }

    /// Hands the bytes over and leaves the writer empty.
    [[nodiscard]] MIDIData finish();

private:
    struct Free {
        void operator()(std::uint8_t* bytes) const { std::free(bytes); }
    };

    void makeRoom(std::size_t bytes) {
        if (bytes > static_cast<std::size_t>(end_ - position_)) [[unlikely]]
            grow(bytes);
    }

    static void write(std::uint32_t value, std::uint8_t* at) {
        const std::array bytes{static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
                               static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
        std::memcpy(at, bytes.data(), bytes.size()); // One store.
    }

    void grow(std::size_t bytes);
    void reallocate(std::size_t capacity);

    std::unique_ptr<std::uint8_t, Free> buffer_;
    std::uint8_t* position_ = nullptr;
    std::uint8_t* end_ = nullptr;
};

} // namespace tambrel
