#pragma once

#include "MIDIData.h"

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace tambrel::testing {

/// The event bytes of one track, written as a song would have them. Every call appends one event, `delta`
/// ticks after the one before.
class TrackBuilder {
public:
    TrackBuilder& noteOn(std::uint32_t delta, int channel, int note, int velocity = 64);
    TrackBuilder& noteOff(std::uint32_t delta, int channel, int note);
    TrackBuilder& control(std::uint32_t delta, int channel, int controller, int value);
    TrackBuilder& program(std::uint32_t delta, int channel, int program);
    TrackBuilder& pitchBend(std::uint32_t delta, int channel, int value14);
    TrackBuilder& channelPressure(std::uint32_t delta, int channel, int value);
    TrackBuilder& polyphonicPressure(std::uint32_t delta, int channel, int note, int value);
    TrackBuilder& meta(std::uint32_t delta, int type, const Bytes& payload);
    TrackBuilder& tempo(std::uint32_t delta, std::uint32_t microsecondsPerQuarter);
    TrackBuilder& key(std::uint32_t delta, int sharpsFlats, bool minor);
    TrackBuilder& name(std::uint32_t delta, std::string_view text);
    /// `payload` is what follows F0, the final F7 included.
    TrackBuilder& sysex(std::uint32_t delta, const Bytes& payload);
    TrackBuilder& endOfTrack(std::uint32_t delta = 0);
    /// Bytes as they stand: running status, defects.
    TrackBuilder& raw(std::initializer_list<int> bytes);

    [[nodiscard]] const Bytes& bytes() const { return bytes_; }

private:
    TrackBuilder& event(std::uint32_t delta, std::initializer_list<int> bytes);
    Bytes bytes_;
};

/// The bytes of a whole file: header, then one chunk per track. `declaredTracks` below 0 means as many as
/// given.
[[nodiscard]] Bytes smfBytes(int format, int division, const std::vector<TrackBuilder>& tracks,
                             int declaredTracks = -1);

/// One "MTrk" chunk around the given event bytes.
[[nodiscard]] Bytes trackChunk(const Bytes& events);

/// The bytes of a whole MIDI 2.0 clip: the signature, then the words.
[[nodiscard]] Bytes clipBytes(const std::vector<std::uint32_t>& words);

/// Division word of a time-code file: `framesPerSecond` is 24, 25, 29 or 30.
[[nodiscard]] int timeCodeDivision(int framesPerSecond, int ticksPerFrame);

} // namespace tambrel::testing
