#include "SongLoader.h"

#include "FreedInBackground.h"
#include "MIDILoudnessProcessor.h"
#include "TambrelFileLoader.h"
#include "TambrelLoadError.h"

#include <algorithm>
#include <future>
#include <utility>
#include <vector>

#include <malloc.h>

namespace tambrel {
namespace {

// Unites phrases that no screen can show apart: a dense song has millions, and the main thread would take
// long to draw them.
void uniteCrowdedPhrases(std::vector<MIDITrackPhraseLane>& lanes) {
    constexpr double closest = 1.0 / 8192; // Of the song.
    for (auto& [label, phrases] : lanes) {
        std::vector<MIDIPhrase> apart;
        for (const MIDIPhrase& phrase : phrases) {
            if (apart.empty() || phrase.start - apart.back().start >= closest)
                apart.push_back(phrase);
            else
                apart.back().end = std::max(apart.back().end, phrase.end);
        }
        phrases = std::move(apart);
    }
}

MIDIData freedInBackground(const MIDIData& data) {
    return {tambrel::freedInBackground(std::make_shared<const MIDIData>(data)), data.view()};
}

void freeInBackground(TambrelLoadedFile& file) {
    file.playbackData = freedInBackground(file.playbackData);
    for (auto* data : {&file.importedMIDI2ClipData, &file.midi2ClipCompanionData}) {
        if (*data)
            *data = freedInBackground(**data);
    }
}

// Builds the timeline on a second thread, beside the facts and the companion.
LoadedSong loadSong(const std::filesystem::path& file, const TimelineBuilder& buildTimeline,
                    const std::stop_token& stop) {
    std::future<std::shared_ptr<const Timeline>> timeline;
    const auto beginTimeline = [&](const MIDIData& playbackData) {
        timeline = std::async(std::launch::async, buildTimeline, playbackData, stop, nullptr);
    };
    TambrelLoadedFile loaded = TambrelFileLoader::load(file, stop, beginTimeline);
    uniteCrowdedPhrases(loaded.info.timelineLanes);
    freeInBackground(loaded);
    PlayableSong song(loaded.playbackData, tambrel::freedInBackground(timeline.get()));
    return {std::move(loaded), std::move(song)};
}

// Here too, the timeline is built on a second thread, beside the companion.
std::optional<PreparedVariant> prepared(const VariantRequest& request, const TimelineBuilder& buildTimeline,
                                        const std::stop_token& stop) {
    try {
        const PlayableSong& source = request.source;
        PreparedVariant variant{.isLoud = request.isLoud, .song = source, .companion = {}, .summary = {}};
        if (request.isToBeBoosted)
            variant.song = freedInBackground(MIDILoudnessProcessor::boostedDrumsAndBass(source.data));
        const auto timelineOf = [&](const PlayableSong& song) {
            return song.timeline
                       ? song.timeline
                       : tambrel::freedInBackground(buildTimeline(song.data, stop, source.timeline));
        };
        auto timeline = std::async(std::launch::async, timelineOf, variant.song);
        variant.companion = freedInBackground(MIDI2ClipBuilder::build(variant.song.data, stop));
        variant.summary = MIDI2ClipBuilder::summary(variant.companion);
        variant.song.timeline = timeline.get();
        return variant;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

LoadOutcome outcomeOf(const std::filesystem::path& file, const TimelineBuilder& buildTimeline,
                      const std::stop_token& stop) {
    try {
        return {.song = std::make_shared<LoadedSong>(loadSong(file, buildTimeline, stop)), .error = {}};
    } catch (...) {
        return {.song = {}, .error = std::current_exception()};
    }
}

} // namespace

// The threshold as it is at first: glibc would raise it with every large block that is freed, and keep the
// blocks below it, of which a song of 200 MB leaves 60 MB.
SongLoader::SongLoader(TimelineBuilder buildTimeline) : buildTimeline_(std::move(buildTimeline)) {
    constexpr int largeBlock = 128 << 10;
    static_cast<void>(mallopt(M_MMAP_THRESHOLD, largeBlock));
}

void SongLoader::load(const std::filesystem::path& file, std::stop_token stop,
                      std::function<void(LoadOutcome)> then) {
    executor_.run([this, file, stop = std::move(stop)] { return outcomeOf(file, buildTimeline_, stop); },
                  std::move(then));
}

void SongLoader::prepare(VariantRequest request, std::stop_token stop,
                         std::function<void(std::optional<PreparedVariant>)> then) {
    executor_.run([this, request = std::move(request),
                   stop = std::move(stop)] { return prepared(request, buildTimeline_, stop); },
                  std::move(then));
}

} // namespace tambrel
