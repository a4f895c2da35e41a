#include "SongDetails.h"

#include "SMFHeader.h"
#include "SMFTrackEventWalker.h"
#include "UTF8.h"

#include <algorithm>
#include <bitset>
#include <string_view>

namespace tambrel {
namespace {

std::string readable(ByteView bytes) {
    std::string text(bytes.begin(), bytes.end());
    if (UTF8::isValid(text))
        return text;
    std::string result;
    for (const std::uint8_t byte : bytes) {
        if (byte < 0x80) {
            result += static_cast<char>(byte);
        } else {
            result += static_cast<char>(0xC0 | byte >> 6);
            result += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return result;
}

/// Gathers one track.
class TrackGatherer {
public:
    TrackGatherer(ByteView data, std::int64_t number, SongDetails& details)
        : data_(data), number_(number), details_(details) {}

    void gather(const SMFTrackChunk& track) {
        SMFTrackEventWalker::walk(data_, track, SMFMalformedEventPolicy::stop,
                                  [this](const SMFTimedTrackEvent& event) {
                                      take(event);
                                      return SMFTrackWalkDecision::continue_;
                                  });
        finish();
    }

private:
    void take(const SMFTimedTrackEvent& event) {
        const std::uint8_t kind = MIDIStatus::kind(event.status);
        if (event.status == MIDIStatus::meta) {
            takeMeta(event);
            return;
        }
        if (!MIDIStatus::isChannelMessage(event.status))
            return;
        const std::uint8_t channel = MIDIStatus::channel(event.status);
        channels_.set(channel);
        const auto at = event.dataStart;
        if (kind == MIDIStatus::noteOn && data_[at + 1] != 0)
            takeNote(data_[at] & 0x7F);
        else if (kind == MIDIStatus::programChange)
            track_.programs.emplace(channel + 1, data_[at] & 0x7F);
    }

    void takeNote(int key) {
        ++track_.notes;
        track_.lowestNote = std::min(track_.lowestNote, key);
        track_.highestNote = std::max(track_.highestNote, key);
    }

    void takeMeta(const SMFTimedTrackEvent& event) {
        const ByteView payload = event.payload(data_);
        const auto keep = [&](std::vector<SongDetails::Text>& texts) {
            texts.push_back({event.tick, number_, readable(payload)});
        };
        switch (event.metaType) {
        case MetaType::text:
            return keep(details_.texts);
        case MetaType::copyright:
            return keep(details_.copyrights);
        case MetaType::trackName:
            return takeFirst(payload, track_.name);
        case MetaType::instrumentName:
            return takeFirst(payload, track_.instrument);
        case MetaType::lyric:
            return keep(details_.lyrics);
        case MetaType::marker:
        case MetaType::cuePoint:
            return keep(details_.markers);
        case MetaType::setTempo:
            return takeTempo(event.tick, payload);
        case MetaType::timeSignature:
            if (payload.size() >= 2 && payload[1] < 16)
                details_.timeSignatures.push_back({event.tick, payload[0], 1 << payload[1]});
            return;
        default:
            return;
        }
    }

    static void takeFirst(ByteView payload, std::string& name) {
        if (name.empty())
            name = readable(payload);
    }

    void takeTempo(std::uint32_t tick, ByteView payload) {
        constexpr double microsecondsPerMinute = 60'000'000;
        if (payload.size() < 3)
            return;
        const int microseconds = payload[0] << 16 | payload[1] << 8 | payload[2];
        if (microseconds != 0)
            details_.tempos.push_back({tick, microsecondsPerMinute / microseconds});
    }

    void finish() {
        for (int channel = 0; channel < 16; ++channel) {
            if (channels_.test(static_cast<std::size_t>(channel)))
                track_.channels.insert(channel + 1);
        }
        details_.notes += track_.notes;
        details_.tracks.push_back(std::move(track_));
    }

    ByteView data_;
    std::int64_t number_;
    SongDetails& details_;
    SongDetails::Track track_;
    std::bitset<16> channels_;
};

} // namespace

SongDetails SongDetails::gather(ByteView data, const std::stop_token& stop) {
    SongDetails details;
    const auto header = SMFHeader::read(data);
    if (!header)
        return details;
    const std::uint16_t division = SMFByteCodec::readU16(data, 12);
    if ((division & 0x8000) == 0) {
        details.ticksPerQuarterNote = division;
    } else {
        details.framesPerSecond = 256 - (division >> 8);
        details.ticksPerFrame = division & 0xFF;
    }
    for (const SMFTrackChunk& track : SMFTrackEventWalker::trackChunks(data, header->trackCount)) {
        if (stop.stop_requested())
            break;
        TrackGatherer(data, static_cast<std::int64_t>(track.index) + 1, details).gather(track);
    }
    return details;
}

} // namespace tambrel
