#include "RenderArguments.h"

#include "ArgumentRange.h"
#include "Values.h"

#include <optional>
#include <string>
#include <vector>

namespace tambrel::cli {
namespace {

void addFormat(CLI::App& render, RenderCommandOptions& options) {
    render.add_option("--soundfont", options.soundFont, "Sound bank instead of the system's default")
        ->envname("TAMBREL_SOUNDFONT")
        ->type_name("BANK");
    render
        .add_option_function<std::string>(
            "--format", [&options](const std::string& name) { options.container = containerValue(name); },
            "wav, flac, ogg, opus or raw; by the name of OUT, else wav")
        ->type_name("NAME");
    render
        .add_option_function<std::string>(
            "--bits",
            [&options](const std::string& name) { options.sound.format.samples = sampleValue(name); },
            "16, 24 or float (32); 16 by default")
        ->type_name("BITS");
    render
        .add_option("--rate", options.sound.format.rate, "Sample rate from 8000 to 96000; 48000 by default")
        ->check(within(8000, 96000))
        ->type_name("HZ");
}

void addLevel(CLI::App& render, RenderCommandOptions& options) {
    render
        .add_option_function<double>(
            "--gain", [&options](double decibels) { options.sound.gain = factorOf(decibels); },
            "Make it louder, or softer when negative")
        ->check(within(-100.0, 100.0))
        ->type_name("DB");
    render
        .add_option("--normalize", options.sound.loudness,
                    "Bring it to a loudness (EBU R 128), -23 LUFS when nothing is named")
        ->check(within(-70.0, 0.0))
        ->type_name("[LUFS]");
}

template<class Time>
void addTimeArgument(CLI::App& render, const char* name, Time& value, const char* description) {
    render
        .add_option_function<std::string>(
            name, [&value](const std::string& text) { value = timeValue(text); }, description)
        ->type_name("TIME");
}

void addTimes(CLI::App& render, RenderCommandOptions& options) {
    addTimeArgument(render, "--start", options.sound.start, "Begin there; seconds, or minutes:seconds");
    addTimeArgument(render, "--end", options.sound.end, "Let go of all notes there");
    addTimeArgument(render, "--tail", options.sound.tail,
                    "Render so long after the end; until the notes have rung out by default");
}

void addPartsArgument(CLI::App& render, const char* name, NoteParts& value, const char* description) {
    const auto addAll = [&value](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            addParts(text, value);
    };
    render.add_option_function<std::vector<std::string>>(name, addAll, description)
        ->type_name("PART")
        ->delimiter(',')
        ->allow_extra_args(false);
}

void addNotes(CLI::App& render, RenderCommandOptions& options) {
    addPartsArgument(render, "--mute", options.notes.muted,
                     "Leave notes out: track:2, channel:10, or several with commas");
    addPartsArgument(render, "--solo", options.notes.soloed, "Leave all other notes out");
    render
        .add_option_function<std::string>(
            "--stems", [&options](const std::string& kind) { options.stems = stemsValue(kind); },
            "One file for each track or channel: tracks or channels")
        ->type_name("KIND");
}

void addQuality(CLI::App& render, RenderCommandOptions& options) {
    render.add_flag_callback(
        "--no-effects", [&options] { options.sound.synthesizer.effects = Effects::off; },
        "Without reverb and chorus");
    render.add_flag_callback(
        "--best", [&options] { options.sound.synthesizer.interpolation = Interpolation::best; },
        "Interpolate samples by the seventh order instead of the fourth");
    render.add_flag("--loudness", options.loudness, "With drums and bass at full velocity");
}

} // namespace

void addRenderArguments(CLI::App& render, RenderCommandOptions& options) {
    addFormat(render, options);
    addLevel(render, options);
    addTimes(render, options);
    addNotes(render, options);
    addQuality(render, options);
}

} // namespace tambrel::cli
