#include "Batch.h"
#include "Commands.h"
#include "Console.h"
#include "Interruption.h"
#include "ProgressBar.h"
#include "RenderNames.h"
#include "TerminalText.h"

#include "MIDILoudnessProcessor.h"
#include "SoundBank.h"
#include "TambrelLoadError.h"
#include "TambrelMIDIFileSupport.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <system_error>

namespace tambrel::cli {
namespace {

using std::filesystem::path;

// Relative to full scale.
double decibels(double amplitude) {
    return 20 * std::log10(amplitude);
}

std::string resultLine(const path& output, const RenderResult& result) {
    std::array<char, 120> text{};
    std::snprintf(text.data(), text.size(), ": %.2f s, peak %.2f dBFS, RMS %.2f dBFS\n", result.seconds,
                  decibels(result.peak), decibels(result.rms));
    return printable(output.native()) + text.data();
}

// One wrong byte can make a song last for days.
void requireSensibleLength(const Timeline& song, const RenderOptions& options) {
    constexpr double longest = 24 * 3600;
    if (!options.end && song.duration() - options.start > longest)
        throw RenderError("The song lasts " + clockText(song.duration()) + "; --end renders a part of it.");
    if (options.start > song.duration())
        throw RenderError("The song is over before it would begin.");
}

/// Renders the files of one plan.
class Renderer {
public:
    Renderer(const RenderCommandOptions& options, const OutputPlan& plan, ProgressBar& progress)
        : options_(options), plan_(plan), progress_(progress) {}

    Report render(std::size_t job) const {
        Report report{.output = {}, .errors = {}, .failed = true};
        path named = plan_.input(job); // The file that an error is about.
        try {
            if (options_.stems == Stems::none)
                requireLeave(named = plan_.output(job));
            named = plan_.input(job);
            const MIDIData loaded = loadInput(named).playbackData;
            const MIDIData song =
                options_.loudness ? MIDILoudnessProcessor::boostedDrumsAndBass(loaded) : loaded;
            for (const Part& part : parts(song, plan_.output(job), options_)) {
                named = part.output;
                renderPart(job, song, part, report);
            }
            report.failed = false;
        } catch (const SoundBankError& error) {
            report.errors = complaint(plan_.input(job), error.what());
        } catch (const TambrelLoadCancelled&) {
        } catch (const TimelineCancelled&) {
        } catch (const std::exception& error) {
            report.errors = complaint(named, TambrelLoadError::diagnosticReason(error));
        }
        return report;
    }

private:
    void requireLeave(const path& output) const {
        if (const std::string refusal = plan_.refusal(output); !refusal.empty())
            throw RenderError(refusal);
        if (TambrelMIDIFileSupport::hasExtension(output.native(),
                                                 TambrelMIDIFileSupport::loadableExtensions()))
            throw RenderError("A file of this name is for MIDI, not for sound.");
    }

    void renderPart(std::size_t job, const MIDIData& song, const Part& part, Report& report) const {
        requireLeave(part.output);
        const auto timeline =
            Timeline::build(part.notes.isEmpty() ? song : part.notes.applied(song), Interruption::token());
        requireSensibleLength(*timeline, options_.sound);
        RenderOptions sound = options_.sound;
        sound.onProgress = [&](double done) { progress_.show(job, done); };
        sound.stop = Interruption::token();
        const RenderResult result = renderPartTo(part.output, timeline, sound);
        if (result.wasStopped)
            throw RenderError("Interrupted; nothing was written.");
        if (!result.complaints.empty() && report.errors.find(result.complaints) == std::string::npos)
            report.errors += complaint(plan_.input(job), result.complaints);
        (part.output == standardStream ? report.errors : report.output) += resultLine(part.output, result);
    }

    [[nodiscard]] RenderResult renderPartTo(const path& output, const std::shared_ptr<const Timeline>& song,
                                            const RenderOptions& sound) const {
        if (!isStreamOutput(output))
            return renderToFile(output, song, sound, plan_.replaces());
        const StreamOutput stream(output);
        return renderTo(stream.descriptor(), song, sound);
    }

    const RenderCommandOptions& options_;
    const OutputPlan& plan_;
    ProgressBar& progress_;
};

} // namespace

ExitStatus runRender(RenderCommandOptions options) {
    takeOutputOperand(options.input.operands, options.output,
                      [](const path& last) { return containerNamed(last).has_value(); });
    decideFormat(options);
    const OutputPlan plan(inputs(options.input), options.output, [&](const path&, path output) {
        return output += "." + std::string(extensionOf(options.sound.format.container));
    });
    options.sound.soundBanks = banksToTry({.named = options.soundFont, .preferred = {}});
    ProgressBar progress(plan.size() == 1 ? printable(plan.output(0).filename().native()) : "Rendering",
                         plan.size());
    const Renderer renderer(options, plan, progress);
    return runBatch(
        plan.size(), options.batch, [&](std::size_t job) { return renderer.render(job); }, &progress);
}

} // namespace tambrel::cli
