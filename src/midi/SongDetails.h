#pragma once

#include "MIDIData.h"

#include <cstdint>
#include <set>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace tambrel {

/// All that a Standard MIDI File says about itself, beyond what the window shows at once. Ticks count from
/// the start of the song, channels from 1, tracks from 1. Texts are UTF-8; text that is not is read as
/// Latin-1.
struct SongDetails {
    struct Track {
        std::string name;       ///< The first in the track; may be empty.
        std::string instrument; ///< The same.
        std::set<int> channels; ///< Of its channel messages.
        /// Channel and program from 0 to 127, each once, in order.
        std::set<std::pair<int, int>> programs;
        std::int64_t notes = 0;
        int lowestNote = 127; ///< Key numbers; only where there are notes.
        int highestNote = 0;
    };
    struct Tempo {
        std::uint32_t tick = 0;
        double beatsPerMinute = 0;
    };
    struct TimeSignature {
        std::uint32_t tick = 0;
        int numerator = 0;
        int denominator = 0;
    };
    struct Text {
        std::uint32_t tick = 0;
        std::int64_t track = 0;
        std::string text;
    };

    int ticksPerQuarterNote = 0; ///< 0 for a time-code division.
    int framesPerSecond = 0;     ///< 0 for ticks per quarter note; 29 stands for 30000/1001.
    int ticksPerFrame = 0;
    std::int64_t notes = 0;
    std::vector<Track> tracks;
    std::vector<Tempo> tempos;                 ///< In order of tracks, then time.
    std::vector<TimeSignature> timeSignatures; ///< The same.
    std::vector<Text> texts;
    std::vector<Text> copyrights;
    std::vector<Text> lyrics;
    std::vector<Text> markers; ///< Cue points included.

    /// Reads a whole file once, each track up to its first defect. Never fails: data that is no Standard MIDI
    /// File gives empty details. Gives up, with what it has, once `stop` asks. Any thread.
    [[nodiscard]] static SongDetails gather(ByteView data, const std::stop_token& stop = {});
};

/// The name of a program of General MIDI, from 0 to 127.
[[nodiscard]] const char* generalMIDIName(int program);

} // namespace tambrel
