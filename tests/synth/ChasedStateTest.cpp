#include "SynthTesting.h"

#include <gmock/gmock.h>

#include <map>
#include <span>
#include <sstream>

namespace tambrel {
namespace {

using namespace testing;

/// What a synthesizer is told and cannot be asked for.
struct Unreadable {
    std::map<int, int> pressures; // By channel, and by channel and key.
    int masterVolume = 16383;

    void take(MIDIMessage message) {
        const int channel = message.status & 0x0F;
        if (message.isSystem() && message.systemKind() == SystemMessage::masterVolume)
            masterVolume = message.data2 | message.data3 << 7;
        else if (message.isSystem() && message.systemKind() != SystemMessage::rhythmPart)
            *this = {};
        else if ((message.status & 0xF0) == MIDIStatus::channelPressure)
            set(channel, message.data1);
        else if ((message.status & 0xF0) == MIDIStatus::polyphonicPressure)
            set(keyed(channel, message.data1), message.data2);
        else if ((message.status & 0xF0) == MIDIStatus::controlChange && message.data1 == 121)
            std::erase_if(pressures, [channel](const auto& entry) { return entry.first % 16 == channel; });
    }

    bool operator==(const Unreadable&) const = default;

private:
    static int keyed(int channel, int key) { return channel + 16 * (key + 1); }
    void set(int place, int value) {
        pressures[place] = value;
        if (value == 0)
            pressures.erase(place);
    }
};

/// Two synthesizers that should stand at the same: one has played, the other has been sought.
class Comparison {
public:
    void play(MIDIMessage message) {
        played_->send(message);
        unreadable_.take(message);
    }

    /// Leaves something behind that the next `seek` has to clear away.
    void use(std::span<const TimelineEvent> events) {
        for (const TimelineEvent& event : events)
            sought_->send(event.message);
    }

    /// What differs, as text; empty when all is well.
    [[nodiscard]] std::string seek(const ChasedState& state) {
        sought_->reset();
        Unreadable unreadable;
        for (const MIDIMessage message : state.messages()) {
            sought_->send(message);
            unreadable.take(message);
        }
        return (unreadable == unreadable_ ? "" : "pressures or master volume; ") + differences();
    }

    /// The same after messages whose effect depends on what was chosen before: a parameter, a drum part, how
    /// banks are read.
    [[nodiscard]] std::string goOn() {
        for (int channel = 0; channel < 16; ++channel) {
            for (const auto& synthesizer : {played_.get(), sought_.get()}) {
                const auto controller = static_cast<std::uint8_t>(MIDIStatus::controlChange | channel);
                const auto program = static_cast<std::uint8_t>(MIDIStatus::programChange | channel);
                synthesizer->send({controller, 6, 50, 0});
                synthesizer->send({program, 25, 0, 0});
                synthesizer->send({controller, 0, 8, 0});
                synthesizer->send({controller, 32, 1, 0});
            }
        }
        return differences();
    }

private:
    [[nodiscard]] std::string differences() const {
        std::ostringstream text;
        for (int channel = 0; channel < 16; ++channel)
            describe(channel, played_->channel(channel), sought_->channel(channel), text);
        return text.str();
    }

    static void describe(int channel, const ChannelReading& played, const ChannelReading& sought,
                         std::ostringstream& text) {
        if (played == sought)
            return;
        text << "channel " << channel << ":";
        const auto compare = [&text](const char* name, auto one, auto other) {
            if (one != other)
                text << " " << name << " " << one << " became " << other << ",";
        };
        for (std::size_t number = 0; number < played.controllers.size(); ++number)
            compare(("controller " + std::to_string(number)).c_str(), played.controllers[number],
                    sought.controllers[number]);
        for (std::size_t number = 0; number < played.generators.size(); ++number)
            compare(("generator " + std::to_string(number)).c_str(), played.generators[number],
                    sought.generators[number]);
        compare("bank", played.bank, sought.bank);
        compare("program", played.program, sought.program);
        compare("bank that sounds", played.presetBank, sought.presetBank);
        compare("program that sounds", played.presetProgram, sought.presetProgram);
        compare("bend", played.pitchBend, sought.pitchBend);
        compare("bend range", played.bendRange, sought.bendRange);
        compare("mode", played.mode, sought.mode);
        text << "; ";
    }

    std::unique_ptr<Synthesizer> played_ = loadedSynthesizer();
    std::unique_ptr<Synthesizer> sought_ = loadedSynthesizer();
    Unreadable unreadable_;
};

/// Plays the song and seeks to every `step`th place of it; stops at the first difference.
void expectSeekingEqualsPlaying(const Timeline& song, std::size_t step = 1) {
    Comparison comparison;
    for (std::size_t index = 0; index < song.events().size(); ++index) {
        comparison.play(song.events()[index].message);
        if ((index + 1) % step == 0) {
            ASSERT_EQ(comparison.seek(song.stateBefore(index + 1)), "") << "after event " << index;
        }
    }
    ASSERT_EQ(comparison.seek(song.stateBefore(song.events().size())), "");
    EXPECT_EQ(comparison.goOn(), "");
}

TEST(ChasedStateTest, SeekingLeavesWhatPlayingLeaves) {
    struct Row {
        const char* name;
        TrackBuilder song;
    };
    const auto track = [] { return TrackBuilder(); };
    const Row rows[] = {
        {"controllers, the last value counts",
         track().control(0, 0, 7, 90).control(0, 15, 10, 1).control(0, 0, 7, 80).control(0, 0, 64, 127)},
        {"increment and decrement", track().control(0, 0, 96, 5).control(0, 0, 97, 6)},
        {"a bank counts with the next program", track()
                                                    .control(0, 0, 0, 8)
                                                    .program(0, 0, 5)
                                                    .control(0, 0, 0, 16)
                                                    .control(0, 0, 32, 3)
                                                    .program(0, 1, 9)},
        {"bend before and after its range",
         track().pitchBend(0, 2, 16383).control(0, 2, 101, 0).control(0, 2, 100, 0).control(0, 2, 6, 12)},
        {"tuning, low half before and after the high half", track()
                                                                .control(0, 0, 38, 64)
                                                                .control(0, 0, 101, 0)
                                                                .control(0, 0, 100, 1)
                                                                .control(0, 0, 6, 70)
                                                                .control(0, 0, 38, 1)
                                                                .control(0, 0, 100, 2)
                                                                .control(0, 0, 6, 60)
                                                                .control(0, 0, 101, 127)
                                                                .control(0, 0, 100, 127)
                                                                .control(0, 0, 6, 33)},
        {"half a registered number",
         track().control(0, 0, 100, 0).control(0, 0, 6, 12).control(0, 0, 101, 0)},
        {"a non-registered generator, and the selection going back and forth", track()
                                                                                   .control(0, 0, 101, 0)
                                                                                   .control(0, 0, 100, 0)
                                                                                   .control(0, 0, 99, 120)
                                                                                   .control(0, 0, 98, 8)
                                                                                   .control(0, 0, 38, 5)
                                                                                   .control(0, 0, 6, 40)
                                                                                   .control(0, 0, 100, 0)
                                                                                   .control(0, 0, 6, 7)
                                                                                   .control(0, 0, 99, 120)
                                                                                   .control(0, 0, 6, 41)
                                                                                   .control(0, 0, 98, 9)
                                                                                   .control(0, 0, 6, 42)
                                                                                   .control(0, 0, 99, 1)},
        {"reset all controllers spares volume, bank and bend range", track()
                                                                         .control(0, 0, 0, 8)
                                                                         .control(0, 0, 7, 50)
                                                                         .control(0, 0, 1, 50)
                                                                         .control(0, 0, 91, 50)
                                                                         .control(0, 0, 101, 0)
                                                                         .control(0, 0, 100, 0)
                                                                         .control(0, 0, 6, 12)
                                                                         .control(0, 0, 100, 1)
                                                                         .control(0, 0, 6, 12)
                                                                         .pitchBend(0, 0, 0)
                                                                         .channelPressure(0, 0, 9)
                                                                         .polyphonicPressure(0, 0, 60, 9)
                                                                         .control(0, 0, 121, 0)
                                                                         .program(0, 0, 5)
                                                                         .control(0, 0, 6, 1)},
        {"pressures",
         track().channelPressure(0, 1, 5).polyphonicPressure(0, 1, 60, 6).channelPressure(0, 1, 0)},
        {"channel 10 melodic and back", track()
                                            .control(0, 9, 0, 8)
                                            .sysex(0, rhythmPart(0, 0))
                                            .program(0, 9, 4)
                                            .control(0, 9, 0, 8)
                                            .program(0, 9, 5)
                                            .sysex(0, rhythmPart(0, 1))
                                            .program(0, 9, 16)},
        {"channel 4 a drum part, which ignores banks, and back", track()
                                                                     .control(0, 3, 0, 8)
                                                                     .program(0, 3, 5)
                                                                     .sysex(0, rhythmPart(4, 2))
                                                                     .program(0, 3, 8)
                                                                     .control(0, 3, 0, 1)
                                                                     .sysex(0, rhythmPart(4, 0))
                                                                     .program(0, 3, 6)},
        {"XG banks make drums", track()
                                    .sysex(0, xgOn)
                                    .control(0, 4, 0, 127)
                                    .program(0, 4, 1)
                                    .control(0, 4, 0, 0)
                                    .control(0, 4, 32, 5)
                                    .program(0, 4, 2)},
        {"each reset, from each other's way to read banks", track()
                                                                .sysex(0, halfVolume)
                                                                .sysex(0, xgOn)
                                                                .control(0, 0, 32, 5)
                                                                .sysex(0, gsReset)
                                                                .control(0, 0, 0, 8)
                                                                .control(0, 0, 32, 5)
                                                                .sysex(0, halfVolume)
                                                                .sysex(0, gmOn)
                                                                .control(0, 0, 0, 8)
                                                                .control(0, 0, 7, 1)
                                                                .sysex(0, rhythmPart(1, 1))
                                                                .sysex(0, gsReset)},
        {"mono and poly", track()
                              .control(0, 0, 126, 1)
                              .control(0, 1, 126, 4)
                              .control(0, 0, 124, 0)
                              .control(0, 0, 127, 0)
                              .control(0, 2, 125, 0)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        expectSeekingEqualsPlaying(*timeline({row.song}));
    }
}

TEST(ChasedStateTest, SeekingLeavesWhatPlayingLeavesInRandomSongs) {
    for (std::uint32_t seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        expectSeekingEqualsPlaying(*timeline({randomTrack(seed, 300)}), 11);
    }
}

TEST(ChasedStateTest, IsRightAnywhereInAMillionNotes) {
    TrackBuilder notes;
    notes.noteOn(1, 5, 60);
    for (int pair = 0; pair < 1'000'000; ++pair)
        notes.raw({1, 60, 0, 0, 60, 100});
    const auto song = timeline({notes, randomTrack(7, 200'000)});
    ASSERT_GT(song->events().size(), 2'000'000U);
    Comparison comparison;
    for (std::size_t index = 0; index < song->events().size(); ++index) {
        if (index % 300'007 == 0 || (index + 1) % 65'536 <= 2) {
            ASSERT_EQ(comparison.seek(song->stateBefore(index)), "") << "before event " << index;
        }
        if (const auto message = song->events()[index].message; message.status != 0x95)
            comparison.play(message);
    }
}

TEST(ChasedStateTest, ResetBringsTheSynthesizerToItsPowerUpState) {
    for (std::uint32_t seed = 1; seed <= 10; ++seed) {
        SCOPED_TRACE(seed);
        Comparison comparison; // One synthesizer is fresh, the other one used and reset.
        comparison.use(timeline({randomTrack(seed, 100)})->events());
        ASSERT_EQ(comparison.seek({}), "");
        ASSERT_EQ(comparison.goOn(), "");
    }
}

} // namespace
} // namespace tambrel
