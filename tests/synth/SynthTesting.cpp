#include "SynthTesting.h"

#include <random>

namespace tambrel::testing {
namespace {

/// GS use for rhythm of a part (0 is channel 10, 1 to 9 the channels of these numbers).
Bytes rhythmPart(std::uint8_t part, std::uint8_t map) {
    return {0x41, 0x10, 0x42, 0x12, 0x40, static_cast<std::uint8_t>(0x10 | part), 0x15, map, 0x00, 0xF7};
}

// Payloads of system-exclusive messages.
const Bytes systemMessages[] = {
    {0x7E, 0x7F, 0x09, 0x01, 0xF7},                               // General MIDI on.
    {0x41, 0x10, 0x42, 0x12, 0x40, 0x00, 0x7F, 0x00, 0x41, 0xF7}, // GS reset.
    {0x43, 0x10, 0x4C, 0x00, 0x00, 0x7E, 0x00, 0xF7},             // XG on.
    {0x7F, 0x7F, 0x04, 0x01, 0x00, 0x40, 0xF7},                   // Half the master volume.
    rhythmPart(0, 0),
    rhythmPart(0, 1),
    rhythmPart(1, 0),
    rhythmPart(1, 1),
};

} // namespace

TrackBuilder randomTrack(std::uint32_t seed, int eventCount) {
    std::mt19937 engine(seed);
    const auto upTo = [&engine](int largest) {
        return static_cast<int>(engine() % (static_cast<std::uint32_t>(largest) + 1));
    };
    const auto oneOf = [&upTo](std::initializer_list<int> values) {
        return std::data(values)[upTo(static_cast<int>(values.size()) - 1)];
    };
    TrackBuilder track;
    for (int event = 0; event < eventCount; ++event) {
        const int channel = oneOf({0, 1, 9});
        const int kind = upTo(20);
        if (kind == 0)
            track.sysex(1, systemMessages[static_cast<std::size_t>(upTo(7))]);
        else if (kind <= 2)
            track.program(1, channel, upTo(127));
        else if (kind == 3)
            track.pitchBend(1, channel, upTo(16383));
        else if (kind == 4)
            track.channelPressure(1, channel, upTo(2));
        else if (kind == 5)
            track.polyphonicPressure(1, channel, upTo(2), upTo(127));
        else if (kind == 6)
            track.control(1, channel, upTo(127), upTo(127));
        else if (kind == 7)
            track.control(1, channel, 121, 0);
        else if (kind <= 9)
            track.control(1, channel, oneOf({0, 32}), oneOf({0, 1, 8, 120, 127}));
        else
            track.control(1, channel, oneOf({6, 6, 38, 98, 99, 100, 101}),
                          oneOf({0, 0, 1, 2, 3, 60, 101, 120, 127}));
    }
    return track;
}

} // namespace tambrel::testing
