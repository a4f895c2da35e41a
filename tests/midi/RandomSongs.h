#pragma once

#include "SMFBuilder.h"

#include <random>

namespace tambrel::testing {

/// Makes small songs that look alike neither in shape nor in timing: notes, other channel messages, running
/// status, meta and system-exclusive events, now and then a defect. The same seed gives the same songs.
class RandomSongs {
public:
    explicit RandomSongs(std::uint32_t seed) : engine_(seed) {}

    [[nodiscard]] int upTo(int largest) { return std::uniform_int_distribution(0, largest)(engine_); }

    [[nodiscard]] Bytes next() {
        const int shape = upTo(3);
        std::vector<TrackBuilder> tracks(static_cast<std::size_t>(1 + upTo(6)));
        for (TrackBuilder& track : tracks)
            fill(track, shape);
        const int division = upTo(9) == 0 ? timeCodeDivision(25, 1 + upTo(80)) : upTo(60);
        return smfBytes(upTo(1), division, tracks);
    }

private:
    void fill(TrackBuilder& track, int shape) {
        for (int remaining = upTo(40); remaining > 0; --remaining)
            append(track, delta(shape));
        if (upTo(9) == 0)
            track.raw({upTo(255), upTo(255), upTo(255)});
    }

    std::uint32_t delta(int shape) {
        constexpr int largest[] = {0, 3, 200, 0x0FFFFFFF};
        return static_cast<std::uint32_t>(upTo(3) == 0 ? 0 : upTo(largest[shape]));
    }

    void append(TrackBuilder& track, std::uint32_t delta) {
        const int channel = upTo(15);
        const int kind = upTo(9);
        if (kind == 0)
            track.noteOff(delta, channel, upTo(127));
        else if (kind == 1)
            track.control(delta, channel, upTo(127), upTo(127));
        else if (kind == 2)
            track.program(delta, channel, upTo(127));
        else if (kind == 3)
            track.tempo(delta, static_cast<std::uint32_t>(upTo(2) * 250'000));
        else if (kind == 4)
            track.key(delta, upTo(18) - 9, upTo(1) == 1);
        else if (kind == 5)
            track.sysex(delta, {1, 2, 0xF7});
        else
            track.noteOn(delta, channel, upTo(127), upTo(127)).raw({upTo(9), upTo(127), upTo(2)});
    }

    std::mt19937 engine_;
};

} // namespace tambrel::testing
