#include "Commands.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

namespace {

using namespace tambrel::cli;

void addInfo(CLI::App& program, InfoOptions& options) {
    CLI::App* info =
        program.add_subcommand("info", "Show format, tracks, tempo, key and length of MIDI files");
    info->add_flag("--json", options.json, "One JSON object per file and line");
    info->add_option("FILE", options.files, "MIDI files")->required();
}

void addRender(CLI::App& program, RenderCommandOptions& options) {
    CLI::App* render = program.add_subcommand("render", "Render a MIDI file to a 16-bit stereo WAV file");
    render->add_option("--soundfont", options.soundFont, "Sound bank instead of the system's default")
        ->envname("TAMBREL_SOUNDFONT");
    render->add_option("--rate", options.sampleRate, "Sample rate in Hz")
        ->check(CLI::Range(8000, 96000))
        ->capture_default_str();
    render->add_flag("--loudness", options.loudness, "Render drums and bass at full velocity");
    render->add_option("IN", options.input, "MIDI file or clip")->required();
    render->add_option("OUT", options.output, "WAV file")->required();
}

void addConversion(CLI::App* command, ConvertOptions& options) {
    command->add_flag("--force", options.force, "Overwrite the file OUT");
    command->add_option("IN", options.input, "MIDI file or clip")->required();
    command->add_option("OUT", options.output, "File to write")->required();
}

void addConvert(CLI::App& program, ConvertOptions& options) {
    CLI::App* convert = program.add_subcommand(
        "convert", "Turn a MIDI 2.0 clip into a MIDI file, or a MIDI file into its MIDI 2.0 companion clip");
    convert->add_flag("--loudness", options.loudness, "Convert with drums and bass at full velocity");
    addConversion(convert, options);
}

void addLoudness(CLI::App& program, ConvertOptions& options) {
    addConversion(
        program.add_subcommand("loudness", "Write a MIDI file with drums and bass at full velocity"),
        options);
}

ExitStatus run(const CLI::App& program, const InfoOptions& info, const ConvertOptions& convert,
               const ConvertOptions& loudness, const RenderCommandOptions& render) {
    if (program.got_subcommand("info"))
        return runInfo(info);
    if (program.got_subcommand("convert"))
        return runConvert(convert);
    if (program.got_subcommand("loudness"))
        return runLoudness(loudness);
    return runRender(render);
}

} // namespace

int main(int argc, char** argv) {
    CLI::App program("Facts and sound of MIDI files, without a window.", "tambrel-midi");
    program.set_version_flag("--version", "tambrel-midi " TAMBREL_VERSION);
    program.require_subcommand(1);
    program.option_defaults()->always_capture_default(false);
    InfoOptions info;
    ConvertOptions convert;
    ConvertOptions loudness;
    RenderCommandOptions render;
    addInfo(program, info);
    addConvert(program, convert);
    addLoudness(program, loudness);
    addRender(program, render);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& success) { // Help or version was asked for.
        return program.exit(success);
    } catch (const CLI::ParseError& error) {
        std::cerr << "tambrel-midi: " << error.what() << "\nTry 'tambrel-midi --help'.\n";
        return wrongUsage;
    }
    try {
        const ExitStatus status = run(program, info, convert, loudness, render);
        std::cout.flush();
        if (!std::cout) {
            std::cerr << "tambrel-midi: Standard output could not be written.\n";
            return aFileFailed;
        }
        return status;
    } catch (const std::exception& error) {
        std::cerr << "tambrel-midi: " << error.what() << "\n";
        return aFileFailed;
    }
}
