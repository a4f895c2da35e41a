#include "SynthTesting.h"

#include <random>

namespace tambrel::testing {
Bytes rhythmPart(std::uint8_t part, std::uint8_t map) {
    return {0x41, 0x10, 0x42, 0x12, 0x40, static_cast<std::uint8_t>(0x10 | part), 0x15, map, 0x00, 0xF7};
}

const std::vector<std::pair<Bytes, MIDIMessage>>& systemExclusives() {
    using Kind = SystemMessage;
    const auto system = [](Kind kind, int data2 = 0, int data3 = 0) {
        return MIDIMessage::system(kind, static_cast<std::uint8_t>(data2), static_cast<std::uint8_t>(data3));
    };
    static const std::vector<std::pair<Bytes, MIDIMessage>> all{
        {gmOn, system(Kind::gmReset)},
        {{0x7E, 0x05, 0x09, 0x03, 0xF7}, system(Kind::gmReset)}, // General MIDI 2.
        {gsReset, system(Kind::gsReset)},
        {{0x41, 0x00, 0x42, 0x12, 0x00, 0x00, 0x7F, 0x00, 0x01, 0xF7}, system(Kind::gsReset)},
        {xgOn, system(Kind::xgReset)},
        {halfVolume, system(Kind::masterVolume, 0, 64)},
        {{0x7F, 0x00, 0x04, 0x01, 0xFF, 0x81}, system(Kind::masterVolume, 127, 1)},
        {rhythmPart(0, 0), system(Kind::rhythmPart, 9, 0)},
        {rhythmPart(0, 1), system(Kind::rhythmPart, 9, 1)},
        {rhythmPart(1, 0), system(Kind::rhythmPart, 0, 0)},
        {rhythmPart(1, 2), system(Kind::rhythmPart, 0, 2)},
        {rhythmPart(9, 1), system(Kind::rhythmPart, 8, 1)},
        {rhythmPart(10, 1), system(Kind::rhythmPart, 10, 1)},
        {rhythmPart(15, 0x80), system(Kind::rhythmPart, 15, 0)},
        // Near misses.
        {{}, {}},
        {{0x7E, 0x7F, 0x06, 0x01, 0xF7}, {}},
        {{0x7F, 0x7F, 0x04, 0x02, 0x00, 0x40, 0xF7}, {}},
        {{0x7F, 0x7F, 0x04, 0x01, 0x00}, {}},
        {{0x41, 0x10, 0x42, 0x12, 0x40, 0x00, 0x7F, 0x01, 0x40, 0xF7}, {}},
        {{0x41, 0x10, 0x42, 0x12, 0x40, 0x21, 0x15, 0x01, 0x00, 0xF7}, {}},
        {{0x43, 0x10, 0x4C, 0x00, 0x00, 0x7F, 0x00, 0xF7}, {}},
    };
    return all;
}

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
        if (upTo(5) == 0)
            track.noteOn(1, channel, 60 + upTo(3), upTo(127))
                .control(1, channel, oneOf({64, 66, 84}), upTo(127));
        if (kind == 0)
            track.sysex(1, systemExclusives()[engine() % systemExclusives().size()].first);
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
