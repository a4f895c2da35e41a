#include "Commands.h"
#include "FactsPrinter.h"
#include "SongFile.h"

#include "MIDIFileInfo.h"
#include "Timeline.h"

#include <iostream>

namespace tambrel::cli {

void complain(const std::filesystem::path& file, std::string_view message) {
    std::cerr << "tambrel-midi: " << file.string() << ": " << message << "\n";
}

ExitStatus runInfo(const InfoOptions& options) {
    ExitStatus status = allWell;
    for (const auto& file : options.files) {
        try {
            const MIDIData song = readSong(file);
            const MIDIFileInfo info = MIDIFileInfo::parse(song);
            const double duration = Timeline::build(song)->duration();
            if (options.json)
                std::cout << factsJSON(file, info, duration) << "\n";
            else
                std::cout << factsText(file, info, duration);
        } catch (const std::exception& error) {
            std::cout.flush();
            complain(file, error.what());
            status = aFileFailed;
        }
    }
    return status;
}

} // namespace tambrel::cli
