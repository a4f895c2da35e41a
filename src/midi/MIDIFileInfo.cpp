#include "MIDIFileInfo.h"

#include "SMFHeader.h"
#include "SMFTrackEventWalker.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tambrel {
namespace {

constexpr std::size_t channelCount = 16;

/// Note-ons no further apart than the phrase gap, from the first tick to the last.
struct TickSpan {
    std::uint32_t first = 0;
    std::uint32_t last = 0;
};

/// Gathers the note-ons of one lane. The ticks of one walk never decrease, so only phrases are kept, not
/// notes.
class PhraseGatherer {
public:
    explicit PhraseGatherer(std::uint64_t gap) : gap_(gap) {}

    void add(std::uint32_t tick) {
        if (spans_.empty() || startsAnew_ || tick - spans_.back().last > gap_) {
            spans_.push_back({tick, tick});
            startsAnew_ = false;
        } else {
            spans_.back().last = tick;
        }
    }

    /// The next tick comes from another track and may lie before the last one.
    void beginTrack() { startsAnew_ = true; }

    [[nodiscard]] std::vector<TickSpan> take() { return std::move(spans_); }

private:
    std::vector<TickSpan> spans_;
    std::uint64_t gap_;
    bool startsAnew_ = false;
};

struct LaneEntry {
    std::string label;
    std::vector<TickSpan> spans;
};

std::string keyName(std::int8_t sharpsFlats, bool minor) {
    constexpr std::array<std::string_view, 15> majorTonics{"Cb", "Gb", "Db", "Ab", "Eb", "Bb", "F", "C",
                                                           "G",  "D",  "A",  "E",  "B",  "F#", "C#"};
    constexpr std::array<std::string_view, 15> minorTonics{"Ab", "Eb", "Bb", "F",  "C",  "G",  "D", "A",
                                                           "E",  "B",  "F#", "C#", "G#", "D#", "A#"};
    const bool known = sharpsFlats >= -7 && sharpsFlats <= 7;
    const auto& tonics = minor ? minorTonics : majorTonics;
    std::string name(known ? tonics[static_cast<std::size_t>(sharpsFlats + 7)] : "Unknown");
    return name + (minor ? " minor" : " major");
}

// Joins spans that lie within the gap of each other, as if all their ticks had been gathered in one list.
std::vector<TickSpan> joined(std::vector<TickSpan> spans, std::uint64_t gap) {
    if (!std::ranges::is_sorted(spans, {}, &TickSpan::first)) // Most often they are.
        std::ranges::sort(spans, {}, &TickSpan::first);
    std::vector<TickSpan> result;
    result.reserve(spans.size());
    for (const TickSpan& span : spans) {
        if (!result.empty() && span.first <= result.back().last + gap)
            result.back().last = std::max(result.back().last, span.last);
        else
            result.push_back(span);
    }
    return result;
}

MIDIPhrase phrase(TickSpan span, std::uint32_t maxTick) {
    constexpr double tail = 0.01;            // A phrase reaches a little past its last note-on.
    constexpr double shortestPhrase = 0.005; // Narrower ones would vanish in the drawing.
    const double length = maxTick;
    const double start = span.first / length;
    return {start, std::max(std::min(span.last / length + tail, 1.0), start + shortestPhrase)};
}

std::vector<MIDITrackPhraseLane> phraseLanes(std::vector<LaneEntry> entries, std::uint32_t maxTick,
                                             std::uint64_t phraseGap) {
    std::vector<MIDITrackPhraseLane> lanes;
    if (maxTick == 0)
        return lanes;
    for (LaneEntry& entry : entries) {
        if (entry.spans.empty())
            continue;
        MIDITrackPhraseLane& lane = lanes.emplace_back();
        lane.label = std::move(entry.label);
        const std::vector<TickSpan> spans = joined(std::move(entry.spans), phraseGap);
        lane.phrases.reserve(spans.size());
        for (const TickSpan& span : spans)
            lane.phrases.push_back(phrase(span, maxTick));
    }
    return lanes;
}

// Two quarter notes, or two frames of time code.
std::uint64_t phraseGapTicks(Division division) {
    return 2 * std::uint64_t{division.ticks()};
}

/// One pass over all tracks of a file.
class FactsGatherer {
public:
    FactsGatherer(ByteView data, MIDIFileInfo& info, std::uint64_t phraseGap)
        : data_(data),
          info_(info),
          phraseGap_(phraseGap),
          channels_(channelCount, PhraseGatherer(phraseGap)) {}

    void gather(const SMFTrackChunk& track) {
        if (info_.format == 0) {
            std::ranges::for_each(channels_, &PhraseGatherer::beginTrack);
            walk(track, [this](const SMFTimedTrackEvent& event) {
                channels_[MIDIStatus::channel(event.status)].add(event.tick);
            });
            tracks_.push_back({std::to_string(track.index + 1), {}});
        } else {
            PhraseGatherer lane(phraseGap_);
            walk(track, [&lane](const SMFTimedTrackEvent& event) { lane.add(event.tick); });
            tracks_.push_back({std::to_string(track.index + 1), lane.take()});
        }
    }

    void finish() {
        if (info_.format == 0)
            explodeByChannel();
        info_.timelineLanes = phraseLanes(std::move(tracks_), maxTick_, phraseGap_);
    }

private:
    template<class OnNoteOn>
    void walk(const SMFTrackChunk& track, OnNoteOn onNoteOn) {
        std::uint32_t lastTick = 0;
        SMFTrackEventWalker::walk(data_, track, SMFMalformedEventPolicy::stop, [&](const auto& event) {
            lastTick = event.tick;
            if (MIDIStatus::kind(event.status) == MIDIStatus::noteOn) {
                if (data_[event.dataStart + 1] != 0)
                    onNoteOn(event);
            } else if (event.status == MIDIStatus::meta) {
                readMeta(event);
            }
            return SMFTrackWalkDecision::continue_;
        });
        maxTick_ = std::max(maxTick_, lastTick);
    }

    void readMeta(const SMFTimedTrackEvent& event) {
        const ByteView payload = event.payload(data_);
        if (event.metaType == MetaType::setTempo && payload.size() >= 3 && !info_.tempoBPM) {
            constexpr double microsecondsPerMinute = 60'000'000;
            const int microsecondsPerQuarter = payload[0] << 16 | payload[1] << 8 | payload[2];
            if (microsecondsPerQuarter != 0)
                info_.tempoBPM = microsecondsPerMinute / microsecondsPerQuarter;
        } else if (event.metaType == MetaType::keySignature && payload.size() >= 2 && !info_.keySignature) {
            info_.keySignature = keyName(static_cast<std::int8_t>(payload[0]), payload[1] == 1);
        }
    }

    void explodeByChannel() {
        std::vector<LaneEntry> lanes;
        for (PhraseGatherer& channel : channels_) {
            if (auto spans = channel.take(); !spans.empty())
                lanes.push_back({std::to_string(lanes.size() + 1), std::move(spans)});
        }
        if (lanes.empty())
            return;
        info_.displayTrackCount = static_cast<std::int64_t>(lanes.size());
        info_.wasExplodedFromFormat0 = lanes.size() > 1;
        tracks_ = std::move(lanes);
    }

    ByteView data_;
    MIDIFileInfo& info_;
    std::uint64_t phraseGap_;
    std::vector<PhraseGatherer> channels_;
    std::vector<LaneEntry> tracks_;
    std::uint32_t maxTick_ = 0;
};

} // namespace

MIDIFileInfo MIDIFileInfo::parse(ByteView data, const std::stop_token& stop) {
    MIDIFileInfo info;
    const auto header = SMFHeader::read(data);
    if (!header)
        return info;
    info.format = header->format;
    info.isSupportedFormat = info.format <= 1;
    info.trackCount = info.displayTrackCount = header->trackCount;
    if (!info.isSupportedFormat || info.trackCount == 0)
        return info;

    FactsGatherer gatherer(data, info, phraseGapTicks(header->division));
    for (const SMFTrackChunk& track : SMFTrackEventWalker::trackChunks(data, header->trackCount)) {
        if (stop.stop_requested())
            break;
        gatherer.gather(track);
    }
    gatherer.finish();
    return info;
}

} // namespace tambrel
