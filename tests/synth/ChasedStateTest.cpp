#include "SynthTesting.h"

#include <gmock/gmock.h>

#include <map>
#include <tuple>

namespace tambrel {
namespace {

using namespace testing;

// Messages of channel 4.
constexpr MIDIMessage cc(std::uint8_t number, std::uint8_t value) {
    return {MIDIStatus::controlChange | 3, number, value, 0};
}
constexpr MIDIMessage program(std::uint8_t number) {
    return {MIDIStatus::programChange | 3, number, 0, 0};
}
constexpr MIDIMessage on(std::uint8_t key) {
    return {MIDIStatus::noteOn | 3, key, 100, 0};
}
constexpr MIDIMessage off(std::uint8_t key) {
    return {MIDIStatus::noteOff | 3, key, 0, 0};
}
constexpr MIDIMessage rhythm(std::uint8_t map) {
    return MIDIMessage::system(SystemMessage::rhythmPart, 3, map);
}

/// The notes in the order in which they are started; a prime marks those whose key is up again.
std::string heldNotes(const ChasedState& state) {
    std::string text, program;
    for (const auto& [message, tick] : state.messages()) {
        const auto kind = MIDIStatus::kind(message.status);
        const std::string key(1, static_cast<char>(message.data1));
        if (kind == MIDIStatus::programChange)
            program = std::to_string(message.data1);
        else if (kind == MIDIStatus::noteOn)
            text += std::exchange(program, "") + key;
        else if (kind == MIDIStatus::noteOff)
            text.insert(text.find(key) + 1, "'");
    }
    return text;
}

/// What a synthesizer is told and cannot be asked for.
struct Unreadable {
    std::map<int, int> pressures;                // By channel, and by channel and key.
    std::map<std::pair<int, int>, int> settings; // By kind, and by key or channel.
    int masterVolume = 16383;

    void take(MIDIMessage message) {
        const int channel = message.status & 0x0F;
        if (message.isSystem() && message.systemKind() == SystemMessage::bendRange)
            return; // The synthesizer can be asked for it.
        if (message.isSystem() && message.systemKind() == SystemMessage::masterVolume)
            masterVolume = message.data2 | message.data3 << 7;
        else if (message.isSystem() && message.isReset())
            *this = {};
        else if (message.isSystem() && message.systemKind() >= SystemMessage::keyTuning)
            settings[{message.data1, message.data2}] = message.data3;
        else if (message.isSystem() && message.systemKind() != SystemMessage::rhythmPart)
            settings[{message.data1, 0}] = message.data3 << 7 | message.data2;
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

    /// What differs, as text; empty when all is well.
    [[nodiscard]] std::string seek(const ChasedState& state) {
        sought_->reset();
        Unreadable unreadable;
        for (const auto& [message, tick] : state.messages()) {
            sought_->send(message);
            unreadable.take(message);
        }
        return (unreadable == unreadable_ ? "" : "pressures, settings or master volume; ") + differences();
    }

    /// The same after messages whose effect depends on what was chosen before: a parameter, a drum part, how
    /// banks are read.
    [[nodiscard]] std::string goOn() {
        for (std::uint8_t channel = 0; channel < 16; ++channel) {
            for (MIDIMessage message : {cc(6, 50), program(25), cc(0, 8), cc(32, 1)}) {
                message.status = static_cast<std::uint8_t>(MIDIStatus::kind(message.status) | channel);
                played_->send(message);
                sought_->send(message);
            }
        }
        return differences();
    }

private:
    [[nodiscard]] std::string differences() const {
        std::string text;
        for (int channel = 0; channel < 16; ++channel) {
            const ChannelReading played = played_->channel(channel), sought = sought_->channel(channel);
            if (played == sought)
                continue;
            text += "channel " + std::to_string(channel);
            for (std::size_t number = 0; number < played.controllers.size(); ++number)
                if (played.controllers[number] != sought.controllers[number])
                    text += " controller " + std::to_string(number);
            text += "; ";
        }
        return text;
    }

    std::unique_ptr<Synthesizer> played_ = loadedSynthesizer();
    std::unique_ptr<Synthesizer> sought_ = loadedSynthesizer();
    Unreadable unreadable_;
};

// What random songs have been seen to leave out.
TEST(ChasedStateTest, SeekingLeavesWhatPlayingLeaves) {
    const std::tuple<const char*, std::vector<MIDIMessage>> rows[] = {
        {"tuning, low half before and after the high half",
         {cc(38, 64), cc(101, 0), cc(100, 1), cc(6, 70), cc(38, 1), cc(100, 2), cc(6, 60), cc(101, 127),
          cc(100, 127), cc(6, 33)}},
        {"generators, with the selection going back and forth",
         {cc(101, 0), cc(100, 0), cc(99, 120), cc(98, 8), cc(38, 5), cc(6, 40), cc(100, 0), cc(6, 7),
          cc(99, 120), cc(6, 41), cc(98, 9), cc(6, 42), cc(99, 1)}},
        {"reset all controllers spares volume, bank and bend range",
         {cc(0, 8), cc(7, 50), cc(1, 50), cc(91, 50), cc(101, 0), cc(100, 0), cc(6, 12), cc(100, 1),
          cc(6, 12), cc(121, 0), program(5), cc(6, 1)}},
        {"a portamento control that a note has used up", {cc(84, 50), on(60), cc(84, 51), off(60)}},
        {"a drum part, which ignores banks, and back",
         {cc(0, 8), program(5), rhythm(2), program(8), cc(0, 1), rhythm(0), program(6)}},
    };
    for (const auto& [name, song] : rows) {
        SCOPED_TRACE(name);
        Comparison comparison;
        ChasedState state;
        for (const MIDIMessage message : song) {
            comparison.play(message);
            state.apply(message);
            EXPECT_EQ(comparison.seek(state), "");
        }
        EXPECT_EQ(comparison.goOn(), "");
    }
}

// Each step is a message and the notes held after it; "a" to "g" are keys, and a digit the program it began
// with.
TEST(ChasedStateTest, SeekingFindsTheNotesThatAreHeld) {
    const std::vector<std::tuple<const char*, std::vector<MIDIMessage>, std::vector<std::string>>> rows{
        {"keys", {on('a'), on('b'), on('a'), off('b'), off('a')}, {"a", "ab", "ba", "a", ""}},
        {"velocity 0", {on('a'), {MIDIStatus::noteOn | 3, 'a', 0, 0}}, {"a", ""}},
        {"sustain",
         {on('a'), cc(64, 64), off('a'), on('b'), off('b'), on('b'), cc(64, 63)},
         {"a", "a", "a'", "a'b", "a'b'", "a'b", "b"}},
        {"sostenuto holds what it found",
         {on('a'), cc(66, 127), on('b'), off('a'), off('b'), cc(66, 0)},
         {"a", "a", "ab", "a'b", "a'", ""}},
        {"both pedals",
         {on('a'), cc(66, 127), cc(64, 127), on('b'), off('a'), off('b'), cc(64, 0), cc(64, 127), cc(66, 0)},
         {"a", "a", "a", "ab", "a'b", "a'b'", "a'", "a'", "a'"}},
        {"programs", {program(1), on('a'), program(2), on('b'), cc(0, 1)}, {"", "1a", "1a", "1a2b", "1a2b"}},
        {"reset of controllers lifts the pedal",
         {on('a'), cc(64, 127), off('a'), on('b'), cc(121, 0)},
         {"a", "a", "a'", "a'b", "b"}},
        {"all notes off, under the pedal",
         {cc(64, 127), on('a'), cc(123, 0), cc(64, 0)},
         {"", "a", "a'", ""}},
        {"all sound off", {cc(64, 127), on('a'), off('a'), cc(120, 0)}, {"", "a", "a'", ""}},
        {"one voice", {cc(126, 1), on('a'), on('b'), off('b')}, {"", "a", "b", "a"}},
        {"a drum part", {on('a'), rhythm(1)}, {"a", ""}},
        {"a reset", {on('a'), MIDIMessage::system(SystemMessage::gmReset)}, {"a", ""}},
    };
    for (const auto& [name, song, expected] : rows) {
        SCOPED_TRACE(name);
        ChasedState state;
        for (std::size_t step = 0; step < song.size(); ++step) {
            state.apply(song[step], static_cast<std::uint32_t>(step));
            EXPECT_EQ(heldNotes(state), expected[step]) << "step " << step;
        }
    }
}

TEST(ChasedStateTest, SeekingLeavesWhatPlayingLeavesInRandomSongs) {
    TrackBuilder millionNotes;
    millionNotes.noteOn(1, 5, 60);
    for (int pair = 0; pair < 1'000'000; ++pair)
        millionNotes.raw({1, 60, 0, 0, 60, 100});
    for (std::uint32_t seed = 0; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        const bool isLong = seed == 0;
        const auto song =
            isLong ? timeline({millionNotes, randomTrack(7, 200'000)}) : timeline({randomTrack(seed, 300)});
        Comparison comparison;
        for (std::size_t index = 0; index < song->events().size(); ++index) {
            if (isLong ? index % 300'007 == 0 || (index + 1) % 65'536 <= 2 : index % 11 == 0) {
                ASSERT_EQ(comparison.seek(song->stateBefore(index)), "") << "before event " << index;
            }
            if (const auto message = song->events()[index].message; message.status != 0x95)
                comparison.play(message);
        }
        ASSERT_EQ(comparison.seek(song->stateBefore(song->events().size())), "");
        ASSERT_EQ(comparison.goOn(), "");
    }
}

} // namespace
} // namespace tambrel
