#include "NoteFilter.h"

#include "MIDIDataWriter.h"
#include "SMFHeader.h"
#include "SMFTrackEventWalker.h"

namespace tambrel {
namespace {

constexpr auto stopAtDefect = SMFMalformedEventPolicy::stop;

bool isNote(std::uint8_t status) {
    return MIDIStatus::kind(status) == MIDIStatus::noteOn || MIDIStatus::kind(status) == MIDIStatus::noteOff;
}

std::size_t channelNumber(std::uint8_t status) {
    return MIDIStatus::channel(status) + std::size_t{1};
}

/// Writes the events of a track anew, each with its status.
class TrackWriter {
public:
    TrackWriter(ByteView smf, MIDIDataWriter& out) : smf_(smf), out_(out), headerAt_(out.size()) {
        out_.append(std::array<std::uint8_t, 8>{'M', 'T', 'r', 'k'});
    }

    void append(const SMFTimedTrackEvent& event) {
        const ByteView data = event.payload(smf_);
        appendTime(event.tick);
        out_.append(std::array{event.status});
        if (event.status == MIDIStatus::meta)
            out_.append(std::array{event.metaType});
        if (!MIDIStatus::isChannelMessage(event.status))
            out_.appendVarLen(static_cast<std::uint32_t>(data.size()));
        out_.append(data);
    }

    // The song lasts as long as before, whatever its last event was.
    void end(std::uint32_t tick) {
        appendTime(tick);
        out_.append(std::array<std::uint8_t, 3>{MIDIStatus::meta, MetaType::endOfTrack, 0});
        out_.overwriteU32(headerAt_ + 4, static_cast<std::uint32_t>(out_.size() - headerAt_ - 8));
    }

private:
    // A delta holds 28 bits; an empty text bridges what is longer.
    void appendTime(std::uint32_t tick) {
        constexpr std::uint32_t longest = 0x0FFF'FFFF;
        for (; tick - lastTick_ > longest; lastTick_ += longest) {
            out_.appendVarLen(longest);
            out_.append(std::array<std::uint8_t, 3>{MIDIStatus::meta, MetaType::text, 0});
        }
        out_.appendVarLen(tick - lastTick_);
        lastTick_ = tick;
    }

    ByteView smf_;
    MIDIDataWriter& out_;
    std::size_t headerAt_;
    std::uint32_t lastTick_ = 0;
};

} // namespace

bool NoteFilter::isEmpty() const {
    return muted.tracks.empty() && muted.channels.empty() && soloed.tracks.empty() && soloed.channels.empty();
}

bool NoteFilter::lets(std::size_t track, std::size_t channel) const {
    if (muted.tracks.contains(track) || muted.channels.contains(channel))
        return false;
    const bool anySolo = !soloed.tracks.empty() || !soloed.channels.empty();
    return !anySolo || soloed.tracks.contains(track) || soloed.channels.contains(channel);
}

MIDIData NoteFilter::applied(ByteView smf) const {
    const auto header = SMFHeader::read(smf);
    if (!header)
        return {};
    MIDIDataWriter out(smf.size() + smf.size() / 3);
    out.append(smf.first(SMFHeader::size));
    for (const SMFTrackChunk& track : SMFTrackEventWalker::trackChunks(smf, header->trackCount)) {
        TrackWriter writer(smf, out);
        std::uint32_t lastTick = 0;
        SMFTrackEventWalker::walk(smf, track, stopAtDefect, [&](const SMFTimedTrackEvent& event) {
            lastTick = event.tick;
            if (!isNote(event.status) || lets(track.index + 1, channelNumber(event.status)))
                writer.append(event);
            return SMFTrackWalkDecision::continue_;
        });
        writer.end(lastTick);
    }
    return out.finish();
}

NoteParts partsWithNotes(ByteView smf) {
    NoteParts parts;
    const auto header = SMFHeader::read(smf);
    if (!header)
        return parts;
    for (const SMFTrackChunk& track : SMFTrackEventWalker::trackChunks(smf, header->trackCount)) {
        SMFTrackEventWalker::walk(smf, track, stopAtDefect, [&](const SMFTimedTrackEvent& event) {
            if (MIDIStatus::kind(event.status) == MIDIStatus::noteOn && event.payload(smf)[1] != 0) {
                parts.tracks.insert(track.index + 1);
                parts.channels.insert(channelNumber(event.status));
            }
            return SMFTrackWalkDecision::continue_;
        });
    }
    return parts;
}

} // namespace tambrel
