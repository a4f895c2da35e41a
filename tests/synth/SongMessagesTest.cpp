#include "SoundMeasures.h"

#include <gmock/gmock.h>

namespace tambrel {
namespace {

using namespace testing;

/// What a message does to a note of the sawtooth, against the same note without it.
struct Change {
    double level = 0, right = 0;   // Decibels; of the right beyond the left.
    double cents = 0;              // In the middle.
    double brightness = 0;         // Decibels of the slope beyond those of the sound.
    double wobble = 0;             // Cents between the lowest and the highest.
    double beginning = 0, end = 0; // Decibels of the first 50 ms, and of 50 ms after the key is up.
    double endSlack = 1;
};

struct Row {
    const char* name;
    TrackBuilder before;
    Change change;
};

double brightness(Samples samples) {
    std::vector<float> slope;
    for (std::size_t at = 1; at < samples.size(); ++at)
        slope.push_back(samples[at] - samples[at - 1]);
    return decibels(slope) - decibels(samples);
}

double wobble(Samples samples) {
    std::vector<double> pitches;
    for (std::size_t at = 0; at + 720 <= samples.size(); at += 240)
        pitches.push_back(cents(samples.subspan(at, 720), 48000));
    const auto [low, high] = std::ranges::minmax(pitches);
    return high - low;
}

constexpr double silent = -38; // Decibels at most.

/// The note is struck at 0.5 s and let go at 1.5 s.
Change measure(RealTime& player, const std::shared_ptr<const Timeline>& song, double start) {
    player.sequencer.halt();
    player.listen(0.1);
    player.sequencer.play(song, start);
    player.heard = {48000, {}, {}};
    const Sound& sound = player.listen(1.9 - start);
    const auto left = [&](double from, double to) { return sound.cut(sound.left, from - start, to - start); };
    const auto right = sound.cut(sound.right, 0.9 - start, 1.45 - start);
    const Samples middle = left(0.9, 1.45);
    return {.level = decibels(middle),
            .right = std::max(decibels(right) - decibels(middle), silent),
            .cents = cents(middle, 48000),
            .brightness = brightness(middle),
            .wobble = wobble(middle),
            .beginning = decibels(left(0.5, 0.55)),
            .end = decibels(left(1.65, 1.7))};
}

TrackBuilder saw() {
    return dry().program(0, 0, 3);
}
TrackBuilder control(int number, int value) {
    return saw().control(0, 0, number, value);
}
TrackBuilder exclusive(const Bytes& payload) {
    return saw().sysex(0, payload);
}
TrackBuilder nonRegistered(int low, int value) {
    return saw().control(0, 0, 99, 1).control(0, 0, 98, low).control(0, 0, 6, value);
}
TrackBuilder drumNote(int number, int value) {
    return saw()
        .sysex(0, rhythmPart(1, 1))
        .control(0, 0, 99, number)
        .control(0, 0, 98, 60)
        .control(0, 0, 6, value);
}
TrackBuilder bent(TrackBuilder track) {
    return track.pitchBend(0, 0, 16383);
}
TrackBuilder wheelOfDepth(int semitones, int parts) {
    return saw()
        .control(0, 0, 101, 0)
        .control(0, 0, 100, 5)
        .control(0, 0, 6, semitones)
        .control(0, 0, 38, parts)
        .control(0, 0, 1, 127);
}

Change loud(double decibels) {
    return {.level = decibels, .beginning = decibels, .end = decibels};
}
Change high(double cents, double brightness = 0) {
    return {.cents = cents, .brightness = brightness};
}
// The pitch is that of 15 ms, which takes the tips off.
Change vibrato(double depth) {
    return {.wobble = 1.78 * depth};
}

std::vector<Row> rows() {
    const Change dark{.level = -0.8, .brightness = -9.5, .beginning = -0.8, .end = -0.8};
    const Change sharp{.level = -2.5, .brightness = -7.6, .beginning = -2.5, .end = -2.4};
    const Change soft{.level = -5.3, .brightness = -5.5, .beginning = -5.3, .end = -5.3};
    const Change left{.level = 3, .right = silent, .beginning = 3, .end = 3};
    const Change drums{.level = 1.8, .cents = 700, .brightness = -10.4, .beginning = 1.8, .end = -85};
    const Change softDrums{.level = -10.1, .cents = 700, .brightness = -10.4, .beginning = -10.1, .end = -85};
    const Change leftDrums{
        .level = 4.8, .right = silent, .cents = 700, .brightness = -10.4, .beginning = 4.8, .end = -85};
    const Change lowDrums{.level = 1.8, .brightness = -13.9, .beginning = 1.8, .end = -85};
    const Change reverberantDrums{.level = 2.3,
                                  .right = 0.3,
                                  .cents = 700,
                                  .brightness = -10.4,
                                  .beginning = 1.8,
                                  .end = 12,
                                  .endSlack = 6};
    const Bytes octave{0x7F, 0x7F, 0x08, 0x08, 3,  0x7F, 0x7F, 44, 64, 64,
                       64,   64,   64,   64,   64, 64,   64,   64, 64, 0xF7};
    return {
        {"plain", saw(), {}},
        {"cutoff", control(74, 20), dark},
        {"cutoff, GS parameter", nonRegistered(0x20, 20), dark},
        {"cutoff, GS part", exclusive(gs({0x40, 0x11, 0x32, 20})), dark},
        {"cutoff, XG part", exclusive(xg({8, 0, 0x18, 20})), dark},
        {"resonance", control(71, 84).control(0, 0, 74, 20), sharp},
        {"resonance, GS parameter", nonRegistered(0x21, 84).control(0, 0, 74, 20), sharp},
        {"attack", control(73, 127), {.beginning = -17.9}},
        {"attack, XG part", exclusive(xg({8, 0, 0x1A, 127})), {.beginning = -17.9}},
        {"release", control(72, 96), {.end = 20.9}},
        {"release, GS parameter", nonRegistered(0x66, 96), {.end = 20.9}},
        {"release, shorter", control(72, 32), {.end = -56.6}},
        {"vibrato depth", control(77, 127), vibrato(99)},
        {"vibrato depth, GS part", exclusive(gs({0x40, 0x11, 0x31, 127})), vibrato(99)},
        {"vibrato depth, less than none", control(77, 0), {}},
        {"soft pedal", control(67, 127), soft},
        {"polyphonic pressure", saw().polyphonicPressure(0, 0, 60, 127), vibrato(50)},
        {"modulation wheel", control(1, 127), vibrato(50)},
        {"modulation wheel of two semitones", wheelOfDepth(2, 0), vibrato(200)},
        {"modulation wheel of a quarter", wheelOfDepth(0, 32), vibrato(30)},
        {"part volume, GS", exclusive(gs({0x40, 0x11, 0x19, 50})), loud(-12.1)},
        {"part volume, XG", exclusive(xg({8, 0, 0x0B, 50})), loud(-12.1)},
        {"part pan, GS", exclusive(gs({0x40, 0x11, 0x1C, 0})), left},
        {"part pan, XG", exclusive(xg({8, 0, 0x0E, 0})), left},
        {"part key shift, GS", exclusive(gs({0x40, 0x11, 0x16, 0x40 + 5})), high(500, 0.9)},
        {"part key shift, XG, all controllers reset",
         exclusive(xg({8, 0, 8, 0x40 - 7})).control(0, 0, 121, 0), high(-700, -2.9)},
        {"master key shift, GM2", exclusive({0x7F, 0x7F, 0x04, 0x04, 0, 0x43, 0xF7}), high(300)},
        {"master tuning, GM2", exclusive({0x7F, 0x7F, 0x04, 0x03, 0, 0x60, 0xF7}), high(50)},
        {"master tuning, GS", exclusive(gs({0x40, 0, 0, 0, 2, 0xE, 0xC})), high(-28)},
        {"master volume, GS", exclusive(gs({0x40, 0, 4, 64})), loud(-11.9)},
        {"master pan, GS",
         exclusive(gs({0x40, 0, 6, 96})),
         {.level = -6.2, .right = 6.2, .beginning = -6.2, .end = -6.2}},
        {"master balance, GM2", exclusive({0x7F, 0x7F, 0x04, 0x02, 0, 32, 0xF7}), {.right = -6.2}},
        {"scale tuning, GS", exclusive(gs({0x40, 0x11, 0x40, 44})), high(-20)},
        {"scale tuning, XG", exclusive(xg({8, 0, 0x41, 44})), high(-20)},
        {"scale tuning, universal", exclusive(octave), high(-20)},
        {"scale tuning of another note", exclusive(gs({0x40, 0x11, 0x41, 44})), {}},
        {"single note tuning", exclusive({0x7F, 0x7F, 0x08, 0x02, 0, 1, 60, 61, 32, 0, 0xF7}), high(125)},
        {"drums by GM2's bank", saw().control(0, 0, 0, 120).program(0, 0, 0), drums},
        {"and back", saw().control(0, 0, 0, 120).program(0, 0, 0).control(0, 0, 0, 0).program(0, 0, 3), {}},
        {"a part that becomes drums is not shifted",
         exclusive({0x7F, 0x7F, 0x04, 0x04, 0, 0x43, 0xF7}).sysex(0, rhythmPart(1, 1)), drums},
        {"bend range", bent(saw()), high(200)},
        {"bend range, GS part", bent(exclusive(gs({0x40, 0x21, 0x10, 0x43}))), high(300)},
        {"bend range, XG part, then a registered one",
         bent(exclusive(xg({8, 0, 0x23, 0x4C}))
                  .control(0, 0, 101, 0)
                  .control(0, 0, 100, 0)
                  .control(0, 0, 6, 1)),
         high(100)},
        {"drum level", drumNote(0x1A, 64), softDrums},
        {"drum level, GS setup", saw().sysex(0, rhythmPart(1, 1)).sysex(0, gs({0x41, 2, 60, 64})), softDrums},
        {"drum level of the other setup", saw().sysex(0, rhythmPart(1, 2)).sysex(0, gs({0x41, 2, 60, 64})),
         drums},
        {"drum level of another drum", drumNote(0x1A, 127).sysex(0, gs({0x41, 2, 61, 0})), drums},
        {"drum level where there are no drums",
         drumNote(0x1A, 64).sysex(0, rhythmPart(1, 0)).program(0, 0, 3),
         {}},
        {"drum pan", drumNote(0x1C, 1), leftDrums},
        {"drum pan, XG setup, all controllers reset",
         saw().sysex(0, rhythmPart(1, 1)).sysex(0, xg({0x30, 60, 4, 1})).control(0, 0, 121, 0), leftDrums},
        {"drum pitch", drumNote(0x18, 64 - 7), lowDrums},
        {"drum reverb", drumNote(0x1D, 0).control(0, 0, 91, 127), drums},
        {"drum chorus", drumNote(0x1E, 0).control(0, 0, 93, 127), drums},
        {"reverb", control(91, 127).sysex(0, rhythmPart(1, 1)), reverberantDrums},
        {"gone with a reset",
         control(74, 20)
             .control(0, 0, 67, 127)
             .sysex(0, gs({0x40, 0x11, 0x16, 70}))
             .sysex(0, gs({0x40, 0x11, 0x40, 44}))
             .sysex(0, gs({0x40, 0, 6, 96}))
             .sysex(0, gs({0x40, 0x21, 0x10, 0x47}))
             .sysex(0, gmOn)
             .pitchBend(0, 0, 8192)
             .control(0, 0, 91, 0)
             .control(0, 0, 93, 0)
             .program(0, 0, 3),
         {}},
    };
}

TEST(SongMessagesTest, SoundAsTheySay) {
    RealTime player;
    std::optional<Change> plain;
    for (const Row& row : rows()) {
        auto track = row.before;
        track.noteOn(500, 0, 60).noteOff(1000, 0, 60).endOfTrack(400);
        for (const double start : {0.0, 0.5}) {
            SCOPED_TRACE(std::string(row.name) + (start == 0 ? ", played" : ", sought"));
            const Change now = measure(player, timeline({track}), start);
            if (!plain)
                plain = now;
            const auto expectNear = [](double value, double before, double change, double tolerance,
                                       const char* what) {
                EXPECT_NEAR(value - before, change, tolerance) << what;
            };
            expectNear(now.level, plain->level, row.change.level, 0.3, "level");
            expectNear(now.right, plain->right, row.change.right, 0.3, "right");
            expectNear(now.cents, plain->cents, row.change.cents, 3, "pitch");
            expectNear(now.brightness, plain->brightness, row.change.brightness, 0.7, "brightness");
            expectNear(now.wobble, plain->wobble, row.change.wobble, 6, "vibrato");
            expectNear(now.beginning, plain->beginning, row.change.beginning, 1, "beginning");
            expectNear(now.end, plain->end, row.change.end, row.change.endSlack, "end");
        }
    }
}

} // namespace
} // namespace tambrel
