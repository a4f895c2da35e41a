#include "Commands.h"
#include "FactsPrinter.h"

#include "TambrelFileLoader.h"
#include "Timeline.h"

#include <iostream>

namespace tambrel::cli {
namespace {

void show(const std::filesystem::path& file, bool json) {
    const TambrelLoadedFile loaded = TambrelFileLoader::load(file);
    const double duration = Timeline::build(loaded.playbackData)->duration();
    if (json)
        std::cout << factsJSON(loaded, duration) << "\n";
    else
        std::cout << factsText(loaded, duration);
}

void showError(const std::filesystem::path& file, const TambrelLoadError& error, bool json) {
    if (json)
        std::cout << errorJSON(file, error) << "\n";
    else
        complain(file, error.diagnosticDescription());
}

} // namespace

void complain(const std::filesystem::path& file, std::string_view message) {
    std::cout.flush(); // What comes before on the screen has been said before.
    std::cerr << "tambrel-midi: " << file.string() << ": " << message << "\n";
}

// A defect in one file never keeps the others from being shown.
ExitStatus runInfo(const InfoOptions& options) {
    ExitStatus status = allWell;
    for (const auto& file : options.files) {
        try {
            show(file, options.json);
            continue;
        } catch (const TambrelLoadError& error) {
            showError(file, error, options.json);
        } catch (const std::exception& error) {
            showError(file,
                      TambrelLoadError::playbackPreparationFailed(TambrelLoadError::diagnosticReason(error)),
                      options.json);
        }
        status = aFileFailed;
    }
    return status;
}

} // namespace tambrel::cli
