#include "EventText.h"
#include "MIDI2ClipBuilder.h"
#include "MIDI2ClipImporter.h"
#include "PlainReadings.h"
#include "RandomSongs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <tuple>

namespace tambrel {
namespace {

using testing::RandomSongs;

// More than usual where TAMBREL_SONGS says how many.
int songCount() {
    const char* const count = std::getenv("TAMBREL_SONGS");
    return count == nullptr ? 3000 : std::atoi(count);
}

std::string dumped(const Bytes& file) {
    try {
        return EventText::dump(file);
    } catch (const EventText::Error& error) {
        EXPECT_STRNE(error.what(), "");
        return {};
    }
}

// A plain reading reads every track to its end, and finds no other chunk.
bool isWellFormed(const Bytes& song) {
    if (!plain::hasHeader(song))
        return false;
    std::size_t end = 14;
    for (const plain::Chunk track : plain::tracks(song)) {
        const auto events = plain::events(song, track, plain::Defects::endTheTrack);
        if ((events.empty() ? track.start : events.back().end) != track.end)
            return false;
        for (const plain::Event& event : events) {
            const auto isAbove = [](std::uint8_t byte) { return byte >= 0x80; };
            if (event.status < 0xF0 &&
                std::any_of(song.begin() + static_cast<std::ptrdiff_t>(event.start),
                            song.begin() + static_cast<std::ptrdiff_t>(event.end), isAbove))
                return false;
        }
        end = track.end;
    }
    return end == song.size();
}

TEST(EventText, givesBackEveryByteOfARandomFileThatIsWellFormed) {
    RandomSongs songs(7);
    int wellFormed = 0, odd = 0;
    for (int i = 0; i < songCount(); ++i) {
        SCOPED_TRACE(i);
        const Bytes song = songs.next();
        for (const Bytes& file : {song, songs.damaged(song), songs.clip()}) {
            const std::string text = dumped(file);
            if (isWellFormed(file)) {
                ++wellFormed;
                ASSERT_NE(text, "");
            }
            if (text.empty())
                continue;
            odd += text.find('~') != std::string::npos && text.find('/') != std::string::npos ? 1 : 0;
            const MIDIData built = EventText::build(text);
            ASSERT_TRUE(std::ranges::equal(built.view(), file)) << text;
        }
    }
    EXPECT_GT(wellFormed, songCount() / 2);
    EXPECT_GT(odd, 0) << "Running status and long quantities occur.";
}

TEST(EventText, saysInWhichLineATextIsWrong) {
    const std::string head = "smf 1 1 96\ntrack\n";
    const struct {
        std::string text;
        const char* error;
    } rows[] = {
        {"", "Line 0: The text begins with neither smf nor clip."},
        {"midi", "Line 1: The text begins with neither smf nor clip."},
        {"smf 1 1", "Line 1: A number from 0 to 32767 is missing."},
        {"smf 1 1 200/40", "Line 1: Frames a second are a number from 1 to 128."},
        {"smf 1 1 96\n0 on 1 60 1", "Line 2: An event belongs into a track."},
        {head + "# -\n\n5 on 1 60 1\n4 off 1 60 1", "Line 6: The event comes before the one above."},
        {head + "0 on 1 60 128", "Line 3: A number from 0 to 127 is missing."},
        {head + "0 on 17 60 12", "Line 3: A number from 1 to 16 is missing."},
        {head + "0 on 1 60 12 7", "Line 3: There is more on the line than belongs there."},
        {head + "0 on 1 60 1\n0~ on 2 60 1",
         "Line 4: The event above has another status, which this one cannot take over."},
        {head + "0~ end", "Line 3: Only a channel message can go without its status."},
        {head + "268435456 end", "Line 3: No more than 268435455 ticks can lie between two events."},
        {head + "200/1 end", "Line 3: A number from 2 to 4 is missing."},
        {head + "0 end/5", "Line 3: A number from 1 to 4 is missing."},
        {head + "0 bell", "Line 3: There is no event called bell."},
        {head + "0 name \"a", "Line 3: The text has no closing quotation mark."},
        {head + "0 name \"\\n\"", "Line 3: After a backslash comes \", \\ or x and two digits."},
        {head + "0 sysex f", "Line 3: Two hexadecimal digits are missing."},
        {head + "0 time 3/5 24 8", "Line 3: The lower number of a time signature is a power of two."},
        {head + "0 key 1 dorian", "Line 3: A key is major or minor."},
        {head + "chunk \"abc\"", "Line 3: The type of a chunk has four characters."},
        {"clip\n+1048576", "Line 2: A number from 0 to 1048575 is missing."},
        {"clip\non 1 60 1", "Line 2: A channel is written like 1:10, with the group before it."},
        {"clip\nump 40000000", "Line 2: A packet of this kind has another number of words."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        try {
            static_cast<void>(EventText::build(row.text));
            ADD_FAILURE() << "It was built.";
        } catch (const EventText::Error& error) {
            EXPECT_STREQ(error.what(), row.error);
        }
    }
}

using Message = std::tuple<std::uint64_t, int, int, int>;

// What a clip has to keep of a song, by channel, and the conductor's events: by tick, then track.
std::map<int, std::vector<Message>> kept(const Bytes& song) {
    std::map<int, std::vector<Message>> found;
    for (const plain::Chunk track : plain::tracks(song)) {
        for (const plain::Event& event : plain::events(song, track, plain::Defects::endTheTrack)) {
            const auto at = [&](std::size_t index) -> int { return song[event.start + index]; };
            const std::size_t size = event.end - event.start;
            if (event.status < 0xF0)
                found[event.status & 15].emplace_back(event.tick, event.status, at(0) & 127,
                                                      size == 2 ? at(1) & 127 : 0);
            else if (event.metaType == 0x51 && size >= 3 && (at(0) | at(1) | at(2)) != 0 && song[12] < 0x80)
                found[0x51].emplace_back(event.tick, at(0), at(1), at(2));
            else if (event.metaType == 0x58 && size >= 4 && at(0) != 0 && at(1) <= 7)
                found[0x58].emplace_back(event.tick, at(0), at(1), at(3));
        }
    }
    for (auto& [key, messages] : found)
        std::ranges::stable_sort(messages, {}, [](const Message& message) { return std::get<0>(message); });
    return found;
}

TEST(MIDI2ClipFile, comesBackWithEveryChannelMessageTempoAndTimeSignatureAtItsTick) {
    RandomSongs songs(8);
    int compared = 0;
    for (int i = 0; i < songCount(); ++i) {
        SCOPED_TRACE(i);
        const Bytes song = songs.next();
        auto expected = kept(song);
        const bool isTimeCode = song[12] >= 0x80;
        const bool hasMessages =
            std::ranges::any_of(expected, [](const auto& entry) { return entry.first < 16; });
        // The importer writes longer pauses between two events of a channel than a track can hold.
        constexpr std::uint64_t longestPause = 0x0FFF'FFFF;
        if (std::ranges::any_of(
                expected, [&](const auto& entry) { return std::get<0>(entry.second.back()) > longestPause; }))
            continue;
        ++compared;
        const MIDIData clip = MIDI2ClipBuilder::buildFile(song);
        const plain::Import back = plain::imported({clip.view().begin(), clip.view().end()});
        ASSERT_EQ(back.error.empty(), hasMessages) << back.error;
        if (!hasMessages)
            continue;
        auto received = kept(back.song);
        if (isTimeCode)
            received.erase(0x51); // The tempo is fixed.
        else if (expected[0x51].empty())
            expected[0x51] = {{0, 7, 0xA1, 0x20}}; // The default.
        if (expected[0x58].empty())
            expected[0x58] = {{0, 4, 2, 8}};
        expected.erase(isTimeCode ? 0x51 : -1);
        ASSERT_EQ(received, expected);
    }
    EXPECT_GT(compared, songCount() / 2);
}

TEST(MIDI2ClipFile, lastsAsLongAsASongOfTimeCode) {
    const struct {
        int division;
        const char* head; // Of the text of the clip.
    } rows[] = {
        {testing::timeCodeDivision(25, 40), "clip\n+0 ticks 1000\n+0 start\n+0 tempo 1 100000000\n"},
        {testing::timeCodeDivision(29, 2), "clip\n+0 ticks 60\n+0 start\n+0 tempo 1 100100000\n"},
    };
    for (const auto& row : rows) {
        const auto song = testing::smfBytes(
            0, row.division, {testing::TrackBuilder().tempo(0, 1).noteOn(7, 0, 60).endOfTrack(9)});
        EXPECT_EQ(EventText::dump(MIDI2ClipBuilder::buildFile(song)),
                  std::string(row.head) + "+7 on 1:1 60 64\n+9 finish\n");
    }
}

} // namespace
} // namespace tambrel
