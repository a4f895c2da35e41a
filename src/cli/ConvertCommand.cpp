#include "Batch.h"
#include "Console.h"
#include "Interruption.h"

#include "MIDI2Clip.h"
#include "MIDI2ClipBuilder.h"
#include "MIDI2ClipImporter.h"
#include "MIDILoudnessProcessor.h"
#include "TambrelLoadError.h"
#include "TambrelMIDIFileSupport.h"

#include <fstream>
#include <system_error>

namespace tambrel::cli {
namespace {

using std::filesystem::path;

// What is loaded, with Loudness on or off.
MIDIData playbackData(const TambrelLoadedFile& loaded, bool loudness) {
    return loudness ? MIDILoudnessProcessor::boostedDrumsAndBass(loaded.playbackData) : loaded.playbackData;
}

MIDIData converted(const TambrelLoadedFile& loaded, bool loudness) {
    MIDIData song = playbackData(loaded, loudness);
    if (loaded.importedMIDI2ClipData)
        return song;
    MIDIData clip = MIDI2ClipBuilder::buildFile(song, Interruption::token());
    try {
        static_cast<void>(MIDI2ClipImporter::importPlayableSMF(clip)); // What Tambrel writes, it reads.
    } catch (const MIDI2ClipImportError&) {
        throw TambrelLoadError::playbackPreparationFailed(
            "The file has no channel voice messages for a clip.");
    }
    return clip;
}

template<class Make>
Report report(const OutputPlan& plan, std::size_t job, Make make) {
    Report report{.output = {}, .errors = {}, .failed = true};
    try {
        if (const std::string refusal = plan.refusal(job); !refusal.empty()) {
            report.errors = complaint(plan.output(job), refusal);
            return report;
        }
        const MIDIData data = make(loadInput(plan.input(job)));
        try {
            writeOutput(plan.output(job), data, plan.replaces());
            report.failed = false;
        } catch (const std::system_error& error) {
            report.errors = complaint(plan.output(job), error.code().message());
        }
    } catch (const TambrelLoadCancelled&) {
    } catch (const MIDI2ClipBuildCancelled&) {
    } catch (const std::exception& error) {
        report.errors = complaint(plan.input(job), TambrelLoadError::diagnosticReason(error));
    }
    return report;
}

bool isNamedLikeAClip(const path& file) {
    return TambrelMIDIFileSupport::hasExtension(file.native(), TambrelMIDIFileSupport::midi2ClipExtensions());
}

template<class Make>
ExitStatus run(ConvertOptions& options, const OutputPlan::Naming& naming, Make make) {
    auto& operands = options.input.operands;
    takeOutputOperand(operands, options.output, [&](const path& last) {
        if (isNamedLikeAClip(last) == isNamedLikeAClip(operands.front()))
            return false;
        if (options.output.replace)
            throw UsageError(printable(last.native()) +
                             ": It may be meant as input or as output; -o names the output.");
        return true;
    });
    const OutputPlan plan(inputs(options.input), options.output, naming);
    return runBatch(plan.size(), options.batch, [&](std::size_t job) { return report(plan, job, make); });
}

// Only for the name of the output; what is done depends on the content.
bool isClip(const path& input) {
    Bytes beginning(MIDI2Clip::signature.size());
    if (std::error_code ignored; std::filesystem::is_regular_file(input, ignored))
        std::ifstream(input, std::ios::binary)
            .read(reinterpret_cast<char*>(beginning.data()), static_cast<std::streamsize>(beginning.size()));
    return isNamedLikeAClip(input) || MIDI2Clip::hasSignature(beginning);
}

} // namespace

ExitStatus runConvert(ConvertOptions options) {
    return run(
        options, [](const path& input, path output) { return output += isClip(input) ? ".mid" : ".midi2"; },
        [&](const TambrelLoadedFile& loaded) { return converted(loaded, options.loudness); });
}

ExitStatus runLoudness(ConvertOptions options) {
    return run(
        options, [](const path& /*input*/, path output) { return output += "-loud.mid"; },
        [](const TambrelLoadedFile& loaded) { return playbackData(loaded, true); });
}

} // namespace tambrel::cli
