#include "SMFBuilder.h"

#include "MIDI2Clip.h"
#include "MIDIStatus.h"
#include "SMFByteCodec.h"

namespace tambrel::testing {
namespace {

void append(Bytes& to, const Bytes& from) {
    to.insert(to.end(), from.begin(), from.end());
}

void appendText(Bytes& to, std::string_view text) {
    to.insert(to.end(), text.begin(), text.end());
}

} // namespace

TrackBuilder& TrackBuilder::raw(std::initializer_list<int> bytes) {
    for (const int byte : bytes)
        bytes_.push_back(static_cast<std::uint8_t>(byte));
    return *this;
}

TrackBuilder& TrackBuilder::event(std::uint32_t delta, std::initializer_list<int> bytes) {
    SMFByteCodec::appendVarLen(delta, bytes_);
    return raw(bytes);
}

TrackBuilder& TrackBuilder::noteOn(std::uint32_t delta, int channel, int note, int velocity) {
    return event(delta, {MIDIStatus::noteOn | channel, note, velocity});
}

TrackBuilder& TrackBuilder::noteOff(std::uint32_t delta, int channel, int note) {
    return event(delta, {MIDIStatus::noteOff | channel, note, 64});
}

TrackBuilder& TrackBuilder::control(std::uint32_t delta, int channel, int controller, int value) {
    return event(delta, {MIDIStatus::controlChange | channel, controller, value});
}

TrackBuilder& TrackBuilder::program(std::uint32_t delta, int channel, int program) {
    return event(delta, {MIDIStatus::programChange | channel, program});
}

TrackBuilder& TrackBuilder::pitchBend(std::uint32_t delta, int channel, int value14) {
    return event(delta, {MIDIStatus::pitchBend | channel, value14 & 0x7F, value14 >> 7});
}

TrackBuilder& TrackBuilder::channelPressure(std::uint32_t delta, int channel, int value) {
    return event(delta, {MIDIStatus::channelPressure | channel, value});
}

TrackBuilder& TrackBuilder::polyphonicPressure(std::uint32_t delta, int channel, int note, int value) {
    return event(delta, {MIDIStatus::polyphonicPressure | channel, note, value});
}

TrackBuilder& TrackBuilder::meta(std::uint32_t delta, int type, const Bytes& payload) {
    event(delta, {MIDIStatus::meta, type});
    SMFByteCodec::appendVarLen(static_cast<std::uint32_t>(payload.size()), bytes_);
    append(bytes_, payload);
    return *this;
}

TrackBuilder& TrackBuilder::tempo(std::uint32_t delta, std::uint32_t microsecondsPerQuarter) {
    return meta(delta, MetaType::setTempo,
                {static_cast<std::uint8_t>(microsecondsPerQuarter >> 16),
                 static_cast<std::uint8_t>(microsecondsPerQuarter >> 8),
                 static_cast<std::uint8_t>(microsecondsPerQuarter)});
}

TrackBuilder& TrackBuilder::key(std::uint32_t delta, int sharpsFlats, bool minor) {
    return meta(delta, MetaType::keySignature,
                {static_cast<std::uint8_t>(sharpsFlats), static_cast<std::uint8_t>(minor ? 1 : 0)});
}

TrackBuilder& TrackBuilder::name(std::uint32_t delta, std::string_view text) {
    return meta(delta, MetaType::trackName, Bytes(text.begin(), text.end()));
}

TrackBuilder& TrackBuilder::sysex(std::uint32_t delta, const Bytes& payload) {
    event(delta, {MIDIStatus::systemExclusive});
    SMFByteCodec::appendVarLen(static_cast<std::uint32_t>(payload.size()), bytes_);
    append(bytes_, payload);
    return *this;
}

TrackBuilder& TrackBuilder::endOfTrack(std::uint32_t delta) {
    return meta(delta, MetaType::endOfTrack, {});
}

Bytes trackChunk(const Bytes& events) {
    Bytes chunk;
    appendText(chunk, "MTrk");
    SMFByteCodec::appendU32(static_cast<std::uint32_t>(events.size()), chunk);
    append(chunk, events);
    return chunk;
}

Bytes smfBytes(int format, int division, const std::vector<TrackBuilder>& tracks, int declaredTracks) {
    Bytes file;
    appendText(file, "MThd");
    SMFByteCodec::appendU32(6, file);
    SMFByteCodec::appendU16(static_cast<std::uint16_t>(format), file);
    SMFByteCodec::appendU16(
        static_cast<std::uint16_t>(declaredTracks < 0 ? static_cast<int>(tracks.size()) : declaredTracks),
        file);
    SMFByteCodec::appendU16(static_cast<std::uint16_t>(division), file);
    for (const TrackBuilder& track : tracks)
        append(file, trackChunk(track.bytes()));
    return file;
}

Bytes clipBytes(const std::vector<std::uint32_t>& words) {
    Bytes clip(MIDI2Clip::signature.begin(), MIDI2Clip::signature.end());
    for (const std::uint32_t word : words)
        SMFByteCodec::appendU32(word, clip);
    return clip;
}

int timeCodeDivision(int framesPerSecond, int ticksPerFrame) {
    return ((256 - framesPerSecond) << 8) | ticksPerFrame;
}

} // namespace tambrel::testing
