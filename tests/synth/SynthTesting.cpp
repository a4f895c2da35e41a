#include "SynthTesting.h"

#include <random>

namespace tambrel::testing {
Bytes rhythmPart(std::uint8_t part, std::uint8_t map) {
    return {0x41, 0x10, 0x42, 0x12, 0x40, static_cast<std::uint8_t>(0x10 | part), 0x15, map, 0x00, 0xF7};
}

Bytes gs(std::initializer_list<std::uint8_t> addressAndData) {
    Bytes payload{0x41, 0x10, 0x42, 0x12};
    payload.insert(payload.end(), addressAndData);
    payload.insert(payload.end(), {0x00, 0xF7});
    return payload;
}

Bytes xg(std::initializer_list<std::uint8_t> addressAndData) {
    Bytes payload{0x43, 0x10, 0x4C};
    payload.insert(payload.end(), addressAndData);
    payload.push_back(0xF7);
    return payload;
}

const std::vector<std::pair<Bytes, std::vector<MIDIMessage>>>& systemExclusives() {
    using Kind = SystemMessage;
    const auto system = [](Kind kind, int data2 = 0, int data3 = 0) {
        return MIDIMessage::system(kind, static_cast<std::uint8_t>(data2), static_cast<std::uint8_t>(data3));
    };
    const auto control = [](int channel, int number, int value) {
        return MIDIMessage{static_cast<std::uint8_t>(0xB0 | channel), static_cast<std::uint8_t>(number),
                           static_cast<std::uint8_t>(value), 0};
    };
    const auto scale = [](int note) { return static_cast<Kind>(static_cast<int>(Kind::scaleTuning) + note); };
    const auto secondSetup = [](Kind kind) { return static_cast<Kind>(static_cast<int>(kind) + 5); };
    std::vector<MIDIMessage> octave;
    octave.reserve(12);
    for (int note = 0; note < 12; ++note)
        octave.push_back(system(scale(note), 1, 64 + note));
    static const std::vector<std::pair<Bytes, std::vector<MIDIMessage>>> all{
        {gmOn, {system(Kind::gmReset)}},
        {{0x7E, 0x05, 0x09, 0x03, 0xF7}, {system(Kind::gmReset)}}, // General MIDI 2.
        {gsReset, {system(Kind::gsReset)}},
        {{0x41, 0x00, 0x42, 0x12, 0x00, 0x00, 0x7F, 0x00, 0x01, 0xF7}, {system(Kind::gsReset)}},
        {xgOn, {system(Kind::xgReset)}},
        {halfVolume, {system(Kind::masterVolume, 0, 64)}},
        {{0x7F, 0x00, 0x04, 0x01, 0xFF, 0x81}, {system(Kind::masterVolume, 127, 1)}},
        {rhythmPart(0, 0), {system(Kind::rhythmPart, 9, 0)}},
        {rhythmPart(0, 1), {system(Kind::rhythmPart, 9, 1)}},
        {rhythmPart(1, 0), {system(Kind::rhythmPart, 0, 0)}},
        {rhythmPart(1, 2), {system(Kind::rhythmPart, 0, 2)}},
        {rhythmPart(9, 1), {system(Kind::rhythmPart, 8, 1)}},
        {rhythmPart(10, 1), {system(Kind::rhythmPart, 10, 1)}},
        {rhythmPart(15, 0x80), {system(Kind::rhythmPart, 15, 0)}},
        {xg({8, 1, 7, 1}), {system(Kind::rhythmPart, 1, 1)}},
        {gs({0x40, 0x10, 0x19, 50}), {control(9, 7, 50)}},
        {gs({0x40, 0x12, 0x00, 8, 25}), {control(1, 0, 8), {0xC1, 25, 0, 0}}},
        {gs({0x40, 0x12, 0x16, 60}), {system(Kind::keyShift, 1, 60)}},
        {xg({8, 0, 0x0B, 50, 70}), {control(0, 7, 50)}},
        {xg({8, 0, 0x18, 50, 70, 80}), {control(0, 74, 50), control(0, 71, 70), control(0, 73, 80)}},
        {gs({0x40, 0x12, 0x4A, 60, 61}), {system(scale(10), 1, 60), system(scale(11), 1, 61)}},
        {gs({0x40, 0, 0, 0, 4, 0, 0, 100}),
         {system(Kind::masterTuning, 0, 64), system(Kind::masterVolume, 100, 100)}},
        {xg({0, 0, 6, 70}), {system(Kind::masterKeyShift, 0, 70)}},
        {gs({0x40, 0x22, 0x10, 0x40 + 12}), {system(Kind::bendRange, 1, 12)}},
        {xg({8, 0, 0x23, 0x30}), {system(Kind::bendRange, 0, 0)}},
        {gs({0x41, 0x02, 60, 40, 50}), {system(Kind::drumLevel, 60, 40), system(Kind::drumLevel, 61, 50)}},
        {gs({0x41, 0x14, 60, 1}), {system(secondSetup(Kind::drumPan), 60, 1)}},
        {xg({0x30, 60, 5, 1, 2}), {system(Kind::drumReverb, 60, 1), system(Kind::drumChorus, 60, 2)}},
        {xg({0x31, 60, 0, 70}), {system(secondSetup(Kind::drumPitch), 60, 70)}},
        {gs({0x40, 1, 0x30, 5}), {system(Kind::reverbType, 0, 5)}},
        {xg({2, 1, 0x20, 0x43, 0}), {system(Kind::chorusType, 0, 5)}},
        {{0x7F, 0x7F, 0x04, 0x02, 0x00, 0x20, 0xF7}, {system(Kind::masterBalance, 0, 32)}},
        {{0x7F, 0x7F, 0x04, 0x03, 0x01, 0x50, 0xF7}, {system(Kind::masterTuning, 1, 0x50)}},
        {{0x7F, 0x7F, 0x04, 0x05, 1, 1, 1, 1, 1, 0, 8, 0xF7}, {system(Kind::reverbType, 0, 5)}},
        {{0x7F, 0x7F, 0x08, 0x02, 0, 1, 60, 61, 32, 0, 0xF7},
         {system(Kind::keyTuning, 60, 61), system(Kind::keyTuningFraction, 60, 32)}},
        {{0x7E, 0x7F, 0x08, 0x08, 0, 0, 2, 64, 65, 66, 67, 68, 69, 70, 71, 72, 73, 74, 75, 0xF7}, octave},
        // Near misses.
        {{}, {}},
        {{0x7E, 0x7F, 0x06, 0x01, 0xF7}, {}},
        {{0x7F, 0x7F, 0x04, 0x01, 0x00}, {}},
        {{0x7F, 0x7F, 0x04, 0x09, 0x00, 0x00, 0xF7}, {}},
        {{0x7E, 0x7F, 0x08, 0x08, 0, 0, 2, 64, 65, 0xF7}, {}},
        {{0x41, 0x10, 0x42, 0x12, 0x40, 0x00, 0x7F, 0x01, 0x40, 0xF7}, {}},
        {{0x41, 0x10, 0x42, 0x12, 0x40, 0x21, 0x15, 0x01, 0x00, 0xF7}, {}},
        {{0x43, 0x10, 0x4C, 0x00, 0x00, 0x7F, 0x00, 0xF7}, {}},
        {xg({8, 16, 0x0B, 50}), {}},
        {gs({0x40, 0x32, 0x10, 0x4C}), {}},
        {xg({0x32, 60, 0, 70}), {}},
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
                          oneOf({0, 0, 1, 2, 3, 5, 8, 60, 101, 120, 127}));
    }
    return track;
}

} // namespace tambrel::testing
