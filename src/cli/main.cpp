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
    render->add_option("IN", options.input, "MIDI file")->required();
    render->add_option("OUT", options.output, "WAV file")->required();
}

} // namespace

int main(int argc, char** argv) {
    CLI::App program("Facts and sound of MIDI files, without a window.", "tambrel-midi");
    program.set_version_flag("--version", "tambrel-midi " TAMBREL_VERSION);
    program.require_subcommand(1);
    program.option_defaults()->always_capture_default(false);
    InfoOptions info;
    RenderCommandOptions render;
    addInfo(program, info);
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
        return program.got_subcommand("info") ? runInfo(info) : runRender(render);
    } catch (const std::exception& error) {
        std::cerr << "tambrel-midi: " << error.what() << "\n";
        return aFileFailed;
    }
}
