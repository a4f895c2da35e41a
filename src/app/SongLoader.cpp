#include "SongLoader.h"

#include "TambrelFileLoader.h"
#include "TambrelLoadError.h"

#include <future>
#include <utility>

namespace tambrel {
namespace {

// The timeline is built beside the facts and the companion: two cores are busy.
LoadedSong loadSong(const std::filesystem::path& file, const std::stop_token& stop) {
    std::future<std::shared_ptr<const Timeline>> timeline;
    const auto beginTimeline = [&](const MIDIData& playbackData) {
        timeline = std::async(std::launch::async, [=] { return Timeline::build(playbackData, stop); });
    };
    TambrelLoadedFile loaded = TambrelFileLoader::load(file, stop, beginTimeline);
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
                      std::function<void(const LoadOutcome&)> then) {
    executor_.run([file, stop = std::move(stop)] { return outcomeOf(file, stop); }, std::move(then));
}

void SongLoader::dispose(std::shared_ptr<const LoadedSong> song) {
    executor_.run([song = std::move(song)]() mutable { song.reset(); });
}

} // namespace tambrel
