#include "Batch.h"
#include "Console.h"
#include "DetailsPrinter.h"
#include "FactsPrinter.h"
#include "Interruption.h"

#include "TambrelFileLoader.h"
#include "Timeline.h"

namespace tambrel::cli {
namespace {

Report facts(const std::filesystem::path& file, const InfoOptions& options) {
    const TambrelLoadedFile loaded = loadInput(file);
    const double duration = Timeline::build(loaded.playbackData, Interruption::token())->duration();
    if (options.json)
        return {.output = factsJSON(loaded, duration) + "\n", .errors = {}};
    std::string text = factsText(loaded, duration);
    if (options.all)
        text += detailsText(SongDetails::gather(loaded.playbackData, Interruption::token()));
    return {.output = std::move(text), .errors = {}};
}

Report findings(const std::filesystem::path& file, bool json) {
    const auto found = checkSong(readInput(file));
    return {.output = json ? findingsJSON(file, found) + "\n" : findingsText(file, found),
            .errors = {},
            .failed = !found.empty()};
}

Report failure(const std::filesystem::path& file, const TambrelLoadError& error, bool json) {
    if (json)
        return {.output = errorJSON(file, error) + "\n", .errors = {}, .failed = true};
    return {.output = {}, .errors = complaint(file, error.diagnosticDescription()), .failed = true};
}

Report report(const std::filesystem::path& file, const InfoOptions& options) {
    try {
        return options.check ? findings(file, options.json) : facts(file, options);
    } catch (const TambrelLoadError& error) {
        return failure(file, error, options.json);
    } catch (const TambrelLoadCancelled&) {
    } catch (const TimelineCancelled&) {
    } catch (const std::exception& error) {
        return failure(file,
                       TambrelLoadError::playbackPreparationFailed(TambrelLoadError::diagnosticReason(error)),
                       options.json);
    }
    return {.output = {}, .errors = {}, .failed = true};
}

} // namespace

ExitStatus runInfo(const InfoOptions& options) {
    const auto files = inputs(options.input);
    return runBatch(files.size(), options.batch,
                    [&](std::size_t job) { return report(files[job], options); });
}

} // namespace tambrel::cli
