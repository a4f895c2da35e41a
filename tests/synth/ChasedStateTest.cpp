#include "SynthTesting.h"

#include <gmock/gmock.h>

#include <map>
#include <span>
#include <sstream>

namespace tambrel {
namespace {

using namespace testing;

constexpr MIDIMessage channelMessage(int kind, int channel, int data1, int data2 = 0) {
    return {static_cast<std::uint8_t>(kind | channel), static_cast<std::uint8_t>(data1),
            static_cast<std::uint8_t>(data2), 0};
}
constexpr MIDIMessage cc(int channel, int number, int value) {
    return channelMessage(MIDIStatus::controlChange, channel, number, value);
}
constexpr MIDIMessage program(int channel, int number) {
    return channelMessage(MIDIStatus::programChange, channel, number);
}
constexpr MIDIMessage bend(int channel, int high) {
    return channelMessage(MIDIStatus::pitchBend, channel, 0, high);
}
constexpr MIDIMessage pressure(int channel, int value) {
    return channelMessage(MIDIStatus::channelPressure, channel, value);
}
constexpr MIDIMessage keyPressure(int channel, int key, int value) {
    return channelMessage(MIDIStatus::polyphonicPressure, channel, key, value);
}
constexpr MIDIMessage rhythm(std::uint8_t channel, std::uint8_t map) {
    return MIDIMessage::system(SystemMessage::rhythmPart, channel, map);
}

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
                for (const MIDIMessage message :
                     {cc(channel, 6, 50), program(channel, 25), cc(channel, 0, 8), cc(channel, 32, 1)})
                    synthesizer->send(message);
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

TEST(ChasedStateTest, SeekingLeavesWhatPlayingLeaves) {
    struct Row {
        const char* name;
        std::vector<MIDIMessage> song;
    };
    const auto gm = MIDIMessage::system(SystemMessage::gmReset);
    const auto gs = MIDIMessage::system(SystemMessage::gsReset);
    const auto xg = MIDIMessage::system(SystemMessage::xgReset);
    const auto halfVolume = MIDIMessage::system(SystemMessage::masterVolume, 0, 64);
    const Row rows[] = {
        {"the last value counts", {cc(0, 7, 90), cc(15, 10, 1), cc(0, 7, 80), cc(0, 64, 127)}},
        {"increment and decrement", {cc(0, 96, 5), cc(0, 97, 6)}},
        {"a bank counts with the next program",
         {cc(0, 0, 8), program(0, 5), cc(0, 0, 16), cc(0, 32, 3), program(1, 9)}},
        {"bend before its range", {bend(2, 127), cc(2, 101, 0), cc(2, 100, 0), cc(2, 6, 12)}},
        {"tuning, low half before and after the high half",
         {cc(0, 38, 64), cc(0, 101, 0), cc(0, 100, 1), cc(0, 6, 70), cc(0, 38, 1), cc(0, 100, 2),
          cc(0, 6, 60), cc(0, 101, 127), cc(0, 100, 127), cc(0, 6, 33)}},
        {"half a registered number", {cc(0, 100, 0), cc(0, 6, 12), cc(0, 101, 0)}},
        {"generators, with the selection going back and forth",
         {cc(0, 101, 0), cc(0, 100, 0), cc(0, 99, 120), cc(0, 98, 8), cc(0, 38, 5), cc(0, 6, 40),
          cc(0, 100, 0), cc(0, 6, 7), cc(0, 99, 120), cc(0, 6, 41), cc(0, 98, 9), cc(0, 6, 42),
          cc(0, 99, 1)}},
        {"reset all controllers spares volume, bank and bend range",
         {cc(0, 0, 8), cc(0, 7, 50), cc(0, 1, 50), cc(0, 91, 50), cc(0, 101, 0), cc(0, 100, 0), cc(0, 6, 12),
          cc(0, 100, 1), cc(0, 6, 12), bend(0, 0), pressure(0, 9), keyPressure(0, 60, 9), cc(0, 121, 0),
          program(0, 5), cc(0, 6, 1)}},
        {"pressures", {pressure(1, 5), keyPressure(1, 60, 6), pressure(1, 0)}},
        {"channel 10 melodic and back",
         {cc(9, 0, 8), rhythm(9, 0), program(9, 4), cc(9, 0, 8), program(9, 5), rhythm(9, 1),
          program(9, 16)}},
        {"channel 4 a drum part, which ignores banks, and back",
         {cc(3, 0, 8), program(3, 5), rhythm(3, 2), program(3, 8), cc(3, 0, 1), rhythm(3, 0), program(3, 6)}},
        {"XG banks make drums", {xg, cc(4, 0, 127), program(4, 1), cc(4, 0, 0), cc(4, 32, 5), program(4, 2)}},
        {"each reset, from each other's way to read banks",
         {halfVolume, xg, cc(0, 32, 5), gs, cc(0, 0, 8), cc(0, 32, 5), halfVolume, gm, cc(0, 0, 8),
          cc(0, 7, 1), rhythm(0, 1), gs}},
        {"mono and poly", {cc(0, 126, 1), cc(1, 126, 4), cc(0, 124, 0), cc(0, 127, 0), cc(2, 125, 0)}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Comparison comparison;
        ChasedState state;
        for (const MIDIMessage message : row.song) {
            comparison.play(message);
            state.apply(message);
            EXPECT_EQ(comparison.seek(state), "");
        }
        EXPECT_EQ(comparison.goOn(), "");
    }
}

TEST(ChasedStateTest, SeekingLeavesWhatPlayingLeavesInRandomSongs) {
    for (std::uint32_t seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        const auto song = timeline({randomTrack(seed, 300)});
        Comparison comparison;
        for (std::size_t index = 0; index < song->events().size(); ++index) {
            if (index % 11 == 0) {
                ASSERT_EQ(comparison.seek(song->stateBefore(index)), "") << "before event " << index;
            }
            comparison.play(song->events()[index].message);
        }
        ASSERT_EQ(comparison.seek(song->stateBefore(song->events().size())), "");
        ASSERT_EQ(comparison.goOn(), "");
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
