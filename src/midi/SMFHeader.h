#pragma once

#include "MIDIData.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tambrel {

/// What a tick of a Standard MIDI File is: a part of a quarter note, or a part of a frame of time code. Pure.
class Division {
public:
    /// From the last word of the header chunk.
    explicit constexpr Division(std::uint16_t word) : word_(word) {}

    [[nodiscard]] constexpr bool isTimeCode() const { return (word_ & 0x8000) != 0; }
    /// Ticks in a quarter note, or in a frame of time code: at least 1, because a file may say 0.
    [[nodiscard]] constexpr std::uint16_t ticks() const {
        const std::uint16_t ticks = isTimeCode() ? word_ & 0xFF : word_;
        return ticks == 0 ? std::uint16_t{1} : ticks;
    }
    /// Of time code: 24, 25, 30000/1001 (written 29, drop frame) or 30; any other number is taken as it is, 1
    /// to 128.
    [[nodiscard]] constexpr double framesPerSecond() const {
        constexpr int dropFrame = 29;
        const int frames = 0x100 - (word_ >> 8); // Stored negative.
        return frames == dropFrame ? 30000.0 / 1001.0 : frames;
    }

private:
    std::uint16_t word_;
};

/// The header chunk of a Standard MIDI File (SMF 1.0, RP-001).
struct SMFHeader {
    /// Bytes of the chunk: "MThd", its length, format, track count and division.
    static constexpr std::size_t size = 14;

    std::uint16_t format;
    std::uint16_t trackCount; ///< As declared.
    Division division;

    /// Absent when the data does not begin with a whole header chunk: type "MThd" and length 6. Any thread.
    [[nodiscard]] static std::optional<SMFHeader> read(ByteView data);
};

} // namespace tambrel
