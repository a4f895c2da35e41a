#pragma once

#include "MIDIData.h"
#include "SMFByteCodec.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>

namespace tambrel {

/// The top four bits of a packet's first word (UMP, M2-104-UM), as far as Tambrel reads them.
namespace UMPMessageType {

inline constexpr std::uint8_t utility = 0x0;
inline constexpr std::uint8_t midi1ChannelVoice = 0x2;
inline constexpr std::uint8_t midi2ChannelVoice = 0x4;
inline constexpr std::uint8_t flexData = 0xD;
inline constexpr std::uint8_t stream = 0xF;

} // namespace UMPMessageType

/// One Universal MIDI Packet where it lies in a clip (UMP, M2-104-UM): 1 to 4 big-endian words. Any thread.
class UMPPacket {
public:
    /// Words of the longest packet.
    static constexpr std::size_t longest = 4;

    /// `bytes` begins with the packet; more may follow. It has at least the first word; what reads further
    /// words has made sure that the packet is whole.
    explicit UMPPacket(ByteView bytes) : bytes_(bytes), first_(SMFByteCodec::readU32(bytes, 0)) {}

    /// Words of a packet that begins with a word of this message type.
    [[nodiscard]] static constexpr std::size_t wordCount(std::uint8_t type) {
        constexpr std::array<std::uint8_t, 16> counts{1, 1, 1, 2, 2, 4, 1, 1, 2, 2, 2, 3, 3, 4, 4, 4};
        return counts[type];
    }

    [[nodiscard]] std::uint8_t type() const { return static_cast<std::uint8_t>(first_ >> 28); }
    [[nodiscard]] std::size_t wordCount() const { return wordCount(type()); }
    [[nodiscard]] std::uint32_t word(std::size_t index) const {
        assert(index < wordCount());
        return index == 0 ? first_ : SMFByteCodec::readU32(bytes_, 4 * index);
    }

    /// Bits 24 to 27: the group, from 0.
    [[nodiscard]] std::uint8_t group() const { return first_ >> 24 & 0x0F; }
    /// Bits 16 to 23: the status byte of a channel message.
    [[nodiscard]] std::uint8_t status() const { return static_cast<std::uint8_t>(first_ >> 16); }
    /// Bits 8 to 14: the first data byte of a MIDI 1.0 message, note or controller of a MIDI 2.0 message.
    [[nodiscard]] std::uint8_t data1() const { return first_ >> 8 & 0x7F; }
    /// Bits 0 to 6: the second data byte of a MIDI 1.0 message.
    [[nodiscard]] std::uint8_t data2() const { return first_ & 0x7F; }

private:
    ByteView bytes_;
    std::uint32_t first_;
};

} // namespace tambrel
