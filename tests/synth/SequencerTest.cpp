#include "Sequencer.h"
#include "ExpectedText.h"
#include "RecordingInstrument.h"
#include "SynthTesting.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <map>
#include <random>
#include <thread>

namespace tambrel {
namespace {

using namespace testing;

constexpr double sampleRate = 48000;

template<class... Values>
std::string formatted(const char* format, Values... values) {
    char line[120];
    std::snprintf(line, sizeof line, format, values...);
    return line;
}

/// A sequencer on a recording instrument, and what a listener has seen and heard of the two, as text:
/// frames since the last command.
class Listener {
public:
    explicit Listener(int period = synthesizerBlock) : period_(period) {
        sequencer.setSynthesizer(instrument_);
    }

    void play(const std::string& what, const std::shared_ptr<const Timeline>& song, double seconds) {
        sequencer.play(song, seconds);
        begin(what);
    }
    void halt() {
        sequencer.halt();
        begin("Stop");
    }
    void listen(double seconds) {
        for (const std::int64_t end = frame_ + std::llround(seconds * sampleRate); frame_ < end;)
            renderPeriod();
        write();
    }
    /// The same, with what was sent, and when.
    std::vector<std::pair<std::int64_t, std::string>> record(double seconds) {
        instrument_.written.clear();
        for (const std::int64_t end = frame_ + std::llround(seconds * sampleRate); frame_ < end;)
            renderPeriod();
        std::erase_if(instrument_.written, [](const auto& line) { return line.second.front() == '('; });
        return std::exchange(instrument_.written, {});
    }
    void listenToTheEnd() {
        for (const std::int64_t limit = frame_ + 1'000'000; !sequencer.isSilent() && frame_ < limit;)
            renderPeriod();
        write();
    }

    Sequencer sequencer{sampleRate};
    std::string transcript;

private:
    void begin(const std::string& what) {
        transcript += "\n" + what + "\n";
        start_ = frame_;
        write();
    }

    void renderPeriod() {
        std::vector<float> left(static_cast<std::size_t>(period_), 9), right(left); // All to be written.
        instrument_.frame = frame_;
        sequencer.renderAudio(left.data(), right.data(), period_);
        for (std::size_t at = 0; at < left.size(); ++at, ++frame_) {
            // Levels at the ends of the blocks, when they change.
            if (frame_ % synthesizerBlock == synthesizerBlock - 1 &&
                std::exchange(heard_, {left[at], right[at]}) != std::pair(left[at], right[at]))
                instrument_.written.emplace_back(
                    frame_, formatted("(sounds %.4f left, %.4f right)", left[at], right[at]));
        }
    }

    void write() {
        std::ranges::stable_sort(instrument_.written, {}, [](const auto& line) { return line.first; });
        for (const auto& [frame, what] : std::exchange(instrument_.written, {}))
            transcript += formatted("%7d  %s\n", static_cast<int>(frame - start_), what.c_str());
        transcript +=
            formatted("   = %.4f s%s%s\n", sequencer.position(), sequencer.hasFinished() ? ", finished" : "",
                      sequencer.isSilent() ? ", silent" : "");
    }

    const int period_;
    RecordingInstrument instrument_;
    std::int64_t frame_ = 0, start_ = 0;
    std::pair<float, float> heard_;
};

// Six songs of about a second that together use everything that the player knows.

TrackBuilder notes() {
    TrackBuilder track;
    track.name(0, "A name").control(0, 0, 0, 8).control(0, 0, 32, 1).program(0, 0, 5).program(0, 15, 80);
    track.noteOn(0, 0, 60, 100).raw({0, 64, 101, 0, 67, 102}); // A chord by running status.
    track.noteOn(120, 9, 38, 127).noteOn(30, 9, 38, 0).pitchBend(10, 0, 16'383);
    track.polyphonicPressure(0, 0, 64, 90).channelPressure(0, 15, 91).noteOff(80, 0, 60);
    track.raw({0, 64, 0, 0, 67, 0}).noteOn(240, 15, 127, 1).pitchBend(1, 0, 8192).program(99, 0, 6);
    return track.control(0, 0, 0, 0).noteOff(100, 15, 127).endOfTrack(280);
}

std::vector<TrackBuilder> tempos() {
    std::vector<TrackBuilder> tracks(4);
    tracks[0].tempo(0, 400'000).tempo(48, 1'000'000).tempo(48, 200'000).endOfTrack(192);
    tracks[1].noteOn(0, 0, 40).noteOff(48, 0, 40).noteOn(0, 0, 41).noteOff(48, 0, 41).noteOn(0, 0, 42);
    tracks[2].tempo(48, 600'000).control(0, 1, 7, 50).noteOn(0, 1, 50).noteOff(0, 1, 50).tempo(48, 0);
    tracks[3].noteOn(47, 2, 60).noteOff(1, 2, 60).noteOn(1, 2, 61).noteOff(47, 2, 61);
    return tracks;
}

TrackBuilder pedals() {
    TrackBuilder track;
    track.control(0, 0, 7, 90).control(0, 0, 10, 20).control(0, 0, 64, 127).noteOn(0, 0, 60);
    track.noteOff(100, 0, 60).control(50, 0, 66, 127).control(0, 0, 67, 127).control(0, 0, 5, 10);
    track.control(0, 0, 65, 127).control(0, 0, 84, 48).noteOn(0, 0, 72).control(150, 0, 64, 0);
    track.control(0, 1, 126, 1).control(0, 2, 124, 0).control(100, 0, 121, 0).noteOn(100, 1, 50);
    track.control(100, 1, 123, 0).control(0, 0, 11, 64).control(50, 1, 64, 127).control(50, 0, 120, 0);
    track.control(0, 1, 127, 0).control(0, 2, 125, 0).noteOn(50, 1, 51).noteOff(50, 1, 51);
    return track.endOfTrack(200);
}

TrackBuilder parameters() {
    TrackBuilder
        track; // Bend range, fine and coarse tuning, none; a generator; the range of another channel.
    track.control(0, 0, 101, 0).control(0, 0, 100, 0).control(0, 0, 6, 12).control(0, 0, 38, 50);
    track.pitchBend(0, 0, 12'288).control(100, 0, 100, 1).control(0, 0, 6, 70).control(100, 0, 100, 2);
    track.control(0, 0, 6, 60).control(0, 0, 101, 127).control(0, 0, 100, 127).control(100, 0, 99, 120);
    track.control(0, 0, 98, 8).control(0, 0, 38, 64).control(0, 0, 6, 40).control(100, 0, 98, 101);
    track.control(0, 0, 98, 5).control(100, 0, 96, 0).control(0, 1, 101, 0).control(0, 1, 100, 0);
    track.control(100, 0, 101, 0).control(0, 0, 100, 0).control(100, 1, 6, 7).control(0, 1, 121, 0);
    return track.endOfTrack(300);
}

TrackBuilder systemExclusive() {
    TrackBuilder track;
    track.control(0, 3, 7, 1).sysex(100, gmOn).sysex(50, halfVolume).control(0, 3, 0, 1).program(0, 3, 9);
    track.sysex(0, rhythmPart(4, 2)).program(0, 3, 16).sysex(150, rhythmPart(0, 0));
    track.sysex(50, {0x7E, 0x7F, 0x06, 0x01, 0xF7}).sysex(0, {0xF7}); // An inquiry, nothing at all.
    track.noteOn(50, 3, 36).noteOff(50, 3, 36).sysex(150, gsReset).channelPressure(50, 3, 30);
    return track.sysex(100, halfVolume).sysex(100, xgOn).control(50, 4, 10, 64).endOfTrack(100);
}

std::vector<TrackBuilder> timeCodeAndDefects() {
    std::vector<TrackBuilder> tracks(3);
    tracks[0].tempo(0, 1).raw({0, 0x90, 0xBC, 0xE4, 30, 0x80, 0xBC, 0x40, 0, 0xC1, 0xFF});
    tracks[1].control(10, 2, 64, 127).noteOn(20, 2, 60).raw({1, 0xF1, 0}).noteOn(1, 2, 61);
    tracks[2].noteOn(60, 3, 70).endOfTrack(61);
    return tracks;
}

struct Song {
    std::string name;
    int division;
    std::vector<TrackBuilder> tracks;
};

std::vector<Song> songs() {
    return {{"notes", 480, {notes()}},
            {"tempos", 96, tempos()},
            {"pedals", milliseconds(), {pedals()}},
            {"parameters", milliseconds(), {parameters()}},
            {"system-exclusive", milliseconds(), {systemExclusive()}},
            {"time-code-and-defects", timeCodeDivision(29, 4), timeCodeAndDefects()}};
}

TEST(SequencerTest, SendsTheSynthesizerWhatSixSongsAskFor) {
    for (const Song& song : songs()) {
        const auto whole = timeline(song.tracks, song.division);
        auto boosted = song.tracks;
        boosted.push_back(TrackBuilder().control(0, 14, 7, 127)); // As if Loudness had made it.
        const double length = whole->duration();
        Listener listener;
        listener.transcript = song.name + ": " + std::to_string(length) + " s\n";
        listener.play("Play", whole, 0);
        listener.listenToTheEnd();
        listener.play("Play, to seek", whole, 0.3 * length);
        listener.listen(0.2 * length);
        listener.play("Seek forward while playing, between two ticks", whole, 0.7 * length + 0.0004);
        listener.listen(0.1 * length);
        listener.play("Loudness at the same place", timeline(boosted, song.division),
                      listener.sequencer.position());
        listener.listen(0.05 * length);
        listener.play("Return to zero while playing", whole, 0);
        listener.listen(0.15 * length);
        listener.halt();
        listener.listen(0.003);
        listener.play("Play before the sound has faded", whole, 0.4 * length);
        listener.listen(0.02);
        listener.halt();
        listener.listen(0.02);
        listener.play("Seek to the very end", whole, length);
        listener.listen(0.005);
        listener.play("Once more, while the last notes ring", whole, -1);
        listener.listen(0.02);
        listener.play("Past the end", whole, 1e9);
        listener.listenToTheEnd();
        EXPECT_TRUE(isExpected(listener.transcript, "synth/" + song.name + ".txt"));
    }
}

/// What messages leave on one channel: keys that sound, controllers, the latest of the others.
using Standing = std::map<std::string, std::string>;
Standing standing(const std::vector<std::string>& messages) {
    Standing result;
    for (const std::string& message : messages) {
        const auto bend = message.find("bend ");
        const auto space = bend == std::string::npos ? message.rfind(' ') : bend + 4;
        std::string what = message.substr(0, space), value = message.substr(space + 1);
        if (message.find("reset") != std::string::npos) {
            result.clear();
            continue;
        }
        if (const auto off = what.find("note off"); off != std::string::npos) {
            what.replace(off, 8, "note on");
            value = "0";
        }
        result[what] = value;
    }
    std::erase_if(result, [](const auto& entry) {
        return entry.first.find("note on") != std::string::npos && entry.second == "0";
    });
    return result;
}

TEST(SequencerTest, ACrowdAtOneMomentComesInOrderAndLeavesWhatAllOfItWould) {
    std::mt19937 engine(3);
    const auto below = [&engine](int limit) {
        return static_cast<int>(engine() % static_cast<std::uint32_t>(limit));
    };
    for (const int resets : {0, 1000}) {
        TrackBuilder track;
        for (int key = 0; key < 128; ++key)
            track.noteOn(0, 0, key, 1); // Held when the crowd comes.
        track.noteOn(100, 0, 0, 2);
        for (int event = 0; event < 30'000; ++event) {
            const int kind = event % 100 == 0 ? 19 : below(19);
            if (resets > 0 && event % 30 == 0 && event < 29'000)
                track.sysex(0, gmOn);
            else if (kind < 8)
                track.noteOn(0, below(2), 20 + below(90), below(128));
            else if (kind < 14)
                track.noteOff(0, below(2), 20 + below(90));
            else if (kind < 18)
                track.control(0, below(2), below(40) == 0 ? 0 : 7, below(128));
            else if (kind == 18)
                track.pitchBend(0, below(2), below(16'384));
            else
                track.program(0, below(2), below(128));
        }
        track.noteOn(100, 2, 60).endOfTrack(100);
        const auto song = timeline({track});
        Listener listener;
        listener.play("Play", song, 0);
        const auto written = listener.record(0.25);
        std::map<std::int64_t, int> messages;
        std::vector<std::string> sent, all;
        for (const auto& [frame, message] : written) {
            EXPECT_LE(++messages[frame], EventFeed::mostMessagesPerBlock + 1);
            if (frame < 9000)
                sent.push_back(message);
        }
        EXPECT_LT(sent.size(), 3000U);
        EXPECT_EQ(written.back(), std::pair(std::int64_t{9600}, std::string("ch 3 note on 60 64")));
        for (const TimelineEvent& event : song->events()) {
            if (event.tick < 200)
                all.push_back(text(event.message));
        }
        const Standing played = standing(sent);
        for (const auto& [what, value] : standing(all))
            EXPECT_EQ(played.contains(what) ? played.at(what) : "nothing", value) << what;
        EXPECT_EQ(played.size(), standing(all).size());
    }
}

TEST(SequencerTest, BeginsAgainAtTheEndAndNeverLater) {
    constexpr std::int64_t length = 4848, start = 4325; // Frames: 75.75 blocks, and a bit less.
    const auto blockAt = [](std::int64_t frame) { return (frame + 63) / 64 * 64; };
    const auto song = timeline({TrackBuilder().control(0, 0, 7, 9).noteOn(50, 0, 60).endOfTrack(51)});
    Listener listener;
    listener.sequencer.setLooping(true);
    listener.play("Play", song, start / sampleRate);
    const auto written = listener.record(2);
    for (std::int64_t lap = 1; lap < 20; ++lap) {
        const std::int64_t begins = lap * length - start;
        const std::pair<std::int64_t, std::string> expected[] = {
            {blockAt(begins), "release"}, {blockAt(begins + 2400 - 32), "ch 1 note on 60 64"}};
        for (const auto& line : expected)
            EXPECT_THAT(written, ::testing::Contains(line));
    }
    listener.sequencer.setLooping(false);
    EXPECT_THAT(listener.record(0.2),
                ::testing::Contains(std::pair(blockAt(21 * length - start), std::string("release"))));
    EXPECT_TRUE(listener.sequencer.hasFinished());
}

TEST(SequencerTest, SendsTheSameWhateverTheDeviceAsksFor) {
    for (const Song& song : songs()) {
        std::string expected;
        for (const int period : {synthesizerBlock, 1, 37, 1000, 1024}) {
            Listener listener(period);
            const auto whole = timeline(song.tracks, song.division);
            listener.play("Play", whole, 0);
            listener.listen(whole->duration() + 0.02);
            if (expected.empty())
                expected = listener.transcript;
            EXPECT_EQ(listener.transcript, expected) << song.name << " in periods of " << period;
        }
    }
}

TEST(SequencerTest, TakesOrdersFromAnotherThreadAndGivesAllOfThemBack) {
    const std::shared_ptr<const Timeline> songs[] = {timeline({notes()}, 480),
                                                     timeline({TrackBuilder().endOfTrack(5)})};
    Sequencer sequencer(sampleRate);
    const auto synthesizer = loadedSynthesizer();
    sequencer.setSynthesizer(*synthesizer);
    std::jthread rendering([&sequencer](const std::stop_token& stop) {
        std::vector<float> left(1024), right(1024);
        for (int frames = 1; !stop.stop_requested(); frames = frames % 1024 + 1)
            sequencer.renderAudio(left.data(), right.data(), frames);
    });
    std::mt19937 engine(2);
    for (int action = 0; action < 20'000; ++action) {
        const auto what = engine() % 8;
        if (what == 0)
            sequencer.play(songs[engine() % 2], static_cast<double>(engine() % 5));
        else if (what == 1)
            sequencer.halt();
        else if (what == 2)
            sequencer.collect();
        else
            ASSERT_TRUE(sequencer.position() >= 0 && sequencer.position() <= 1);
    }
    sequencer.halt();
    while (!sequencer.isSilent())
        std::this_thread::yield();
    EXPECT_TRUE(sequencer.collect());
    rendering.request_stop();
    rendering.join();
    EXPECT_EQ(songs[0].use_count() + songs[1].use_count(), 2);
}

} // namespace
} // namespace tambrel
