#include "SongLoader.h"

#include "TambrelFileLoader.h"
#include "TambrelLoadError.h"

#include <algorithm>
#include <future>
#include <utility>
#include <vector>

namespace tambrel {
namespace {

// A dense song has millions of phrases, of which no screen shows more than a few thousand a lane: those that
// begin so close together become one, here and not on the main thread.
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

// The timeline is built beside the facts and the companion: two cores are busy.
LoadedSong loadSong(const std::filesystem::path& file, const std::stop_token& stop) {
    std::future<std::shared_ptr<const Timeline>> timeline;
    const auto beginTimeline = [&](const MIDIData& playbackData) {
        timeline = std::async(std::launch::async, [=] { return Timeline::build(playbackData, stop); });
    };
    TambrelLoadedFile loaded = TambrelFileLoader::load(file, stop, beginTimeline);
    uniteCrowdedPhrases(loaded.info.timelineLanes);
    return {std::move(loaded), timeline.get()};
}

LoadOutcome outcomeOf(const std::filesystem::path& file, const std::stop_token& stop) {
    try {
        return {.song = std::make_shared<const LoadedSong>(loadSong(file, stop)), .error = {}};
    } catch (const TimelineCancelled&) {
        return {.song = {}, .error = std::make_exception_ptr(TambrelLoadCancelled())};
    } catch (...) {
        return {.song = {}, .error = std::current_exception()};
    }
}

} // namespace

void SongLoader::load(const std::filesystem::path& file, std::stop_token stop,
                      std::function<void(LoadOutcome)> then) {
    executor_.run([file, stop = std::move(stop)] { return outcomeOf(file, stop); }, std::move(then));
}

void SongLoader::dispose(std::shared_ptr<const LoadedSong> song) {
    executor_.run([song = std::move(song)]() mutable { song.reset(); });
}

} // namespace tambrel
