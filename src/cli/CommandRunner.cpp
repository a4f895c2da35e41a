#include "CommandRunner.h"

#include "ArgumentRange.h"
#include "Console.h"
#include "RenderArguments.h"
#include "Values.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>
#include <iterator>
#include <sstream>
#include <thread>

namespace tambrel::cli {
namespace {

/// The commands, and what each word of them means.
class CommandLine {
public:
    CommandLine() {
        program_.set_version_flag("--version", "tambrel-midi " TAMBREL_VERSION);
        program_.require_subcommand(1);
        program_.option_defaults()->always_capture_default(false);
        addInfo();
        addPlay();
        addRender();
        addConvert();
        addLoudness();
        addDump();
        addBuild();
    }

    int run(int count, char** words) {
        std::vector<std::string> rest;
        for (int i = count - 1; i > 0; --i)
            rest.emplace_back(words[i]);
        requireKnownCommand(rest);
        supplyDefaults(rest);
        try {
            program_.parse(rest);
        } catch (const CLI::Success& success) { // Help or version was asked for.
            std::ostringstream text;
            program_.exit(success, text);
            print(text.str());
            return allWell;
        } catch (const CLI::ParseError& error) {
            throw UsageError(messageOf(error) + "\n" + advice());
        }
        return commands_.at(program_.get_subcommands().front())();
    }

private:
    CLI::App* add(const char* name, const char* description, const char* examples,
                  std::function<ExitStatus()> command) {
        CLI::App* const added = program_.add_subcommand(name, description);
        added->footer(std::string("Examples:\n") + examples);
        commands_.emplace(added, std::move(command));
        return added;
    }

    static void addCommon(CLI::App* command, CommonOptions& options, const char* operand) {
        addInputs(command, options, operand);
        command->add_option("-j,--jobs", options.batch.jobs, "Files at a time; all processors for 0")
            ->check(within(0, 1024))
            ->type_name("N");
        command
            ->add_flag_callback(
                "--keep-going", [] {}, "Go on with the other files when one fails, which is the default")
            ->excludes("--fail-fast");
    }

    static void addInputs(CLI::App* command, CommonOptions& options, const char* operand) {
        command
            ->add_option("--files0-from", options.input.namesFrom,
                         "Read further names from FILE, each ended by a zero byte; - is standard input")
            ->type_name("FILE");
        command->add_flag("--fail-fast", options.batch.failFast,
                          "Begin with no further file once one has failed");
        command->add_option("IN", options.input.operands, operand)->type_name("");
    }

    static void addOutput(
        CLI::App* command, OutputOptions& options,
        const char* description = "File or folder to write to, - for standard output; beside IN by default") {
        command->add_option("-o,--output", options.output, description)->type_name("OUT");
        command->add_flag("--force", options.replace, "Overwrite files that exist");
    }

    void addInfo();
    void addPlay();
    void addDump();
    void addBuild();
    void addRender();
    void addConvert();
    void addLoudness();
    void requireKnownCommand(const std::vector<std::string>& reversedWords) const;
    [[nodiscard]] std::string messageOf(const CLI::ParseError& error) const;
    [[nodiscard]] std::string advice() const;

    // Supplies the default of an optional value where the next word is none.
    static void supplyDefaults(std::vector<std::string>& reversedWords);

    CLI::App program_{"Facts and sound of MIDI files, without a window.", "tambrel-midi"};
    std::map<const CLI::App*, std::function<ExitStatus()>> commands_;
    InfoOptions info_;
    PlayOptions play_;
    EventsOptions dump_;
    EventsOptions build_;
    RenderCommandOptions render_;
    ConvertOptions convert_;
    ConvertOptions loudness_;
};

void CommandLine::addInfo() {
    CLI::App* const info = add("info", "Show format, tracks, tempo, key and length of MIDI files",
                               "  tambrel-midi info *.mid\n"
                               "  find . -name '*.mid' -print0 | tambrel-midi info --json --files0-from=-",
                               [this] { return runInfo(info_); });
    info->add_flag("--json", info_.json, "One JSON object per file and line, with all that --all shows");
    info->add_flag("--all", info_.all, "Show tracks, programs, tempos, texts and more");
    info->add_flag("--check", info_.check, "Show what is wrong with the files instead, and at which byte");
    addCommon(info, info_, "MIDI files or clips; - is standard input");
}

void CommandLine::addRender() {
    CLI::App* const render = add("render", "Render MIDI files to sound files",
                                 "  tambrel-midi render *.mid\n"
                                 "  tambrel-midi render song.mid -o song.flac --normalize\n"
                                 "  tambrel-midi render song.mid - | sox -t wav - song.mp3",
                                 [this] { return runRender(render_); });
    addRenderArguments(*render, render_);
    addOutput(render, render_.output);
    addCommon(render, render_, "MIDI files or clips; - is standard input");
}

void CommandLine::addConvert() {
    CLI::App* const convert = add("convert", "Turn MIDI 2.0 clips into MIDI files, and MIDI files into clips",
                                  "  tambrel-midi convert song.mid -o song.midi2\n"
                                  "  tambrel-midi convert *.midi2",
                                  [this] { return runConvert(convert_); });
    convert->add_flag("--loudness", convert_.loudness, "With drums and bass at full velocity");
    addOutput(convert, convert_.output);
    addCommon(convert, convert_, "MIDI files or clips; - is standard input");
}

void CommandLine::addLoudness() {
    CLI::App* const loudness =
        add("loudness", "Write MIDI files with drums and bass at full velocity",
            "  tambrel-midi loudness song.mid -o loud.mid", [this] { return runLoudness(loudness_); });
    addOutput(loudness, loudness_.output);
    addCommon(loudness, loudness_, "MIDI files or clips; - is standard input");
}

void CommandLine::addPlay() {
    CLI::App* const play =
        add("play", "Play MIDI files; blank pauses, arrows seek, n and p change the song, q ends",
            "  tambrel-midi play song.mid\n"
            "  tambrel-midi play --loop *.mid",
            [this] { return runPlay(play_); });
    play->add_option("--soundfont", play_.soundFont, "Sound bank instead of the system's default")
        ->envname("TAMBREL_SOUNDFONT")
        ->type_name("BANK");
    play->add_option("--audio-driver", play_.audioDrivers, "pulseaudio, alsa, jack or silent")
        ->envname("TAMBREL_AUDIO_DRIVER")
        ->allow_extra_args(false)
        ->type_name("NAME");
    play->add_flag("--loudness", play_.loudness, "With drums and bass at full velocity");
    play->add_flag("--loop", play_.loop, "Begin again after the last song");
    addInputs(play, play_, "MIDI files or clips; - is standard input");
}

void CommandLine::addDump() {
    CLI::App* const dump = add("dump", "Write the events of MIDI files as text, one a line",
                               "  tambrel-midi dump song.mid\n"
                               "  tambrel-midi dump song.mid | sed 's/^0 tempo .*/0 tempo 400000/' | "
                               "tambrel-midi build - -o fast.mid",
                               [this] { return runDump(dump_); });
    addOutput(dump, dump_.output, "File or folder to write to; standard output by default");
    addCommon(dump, dump_, "MIDI files or clips; - is standard input");
}

void CommandLine::addBuild() {
    CLI::App* const build = add("build", "Make MIDI files of such texts, byte by byte what they were",
                                "  tambrel-midi build song.mid.txt\n"
                                "  tambrel-midi dump song.mid | tambrel-midi build - | cmp - song.mid",
                                [this] { return runBuild(build_); });
    addOutput(build, build_.output);
    addCommon(build, build_, "Texts; - is standard input");
}

std::string CommandLine::advice() const {
    const auto chosen = program_.get_subcommands();
    return "Try 'tambrel-midi " + (chosen.empty() ? "" : chosen.front()->get_name() + " ") + "--help'.";
}

void CommandLine::requireKnownCommand(const std::vector<std::string>& reversedWords) const {
    std::string all;
    const auto commands = program_.get_subcommands([](const CLI::App*) { return true; });
    for (const CLI::App* command : commands)
        all += (all.empty() ? "" : command == commands.back() ? " and " : ", ") + command->get_name();
    if (reversedWords.empty())
        throw UsageError("A command is missing; there are " + all + ".\n" + advice());
    const std::string& first = reversedWords.back();
    if (first.starts_with('-') ||
        std::ranges::any_of(commands, [&](const CLI::App* command) { return command->get_name() == first; }))
        return;
    throw UsageError("There is no command " + printable(first) + "; there are " + all + ".\n" + advice());
}

void CommandLine::supplyDefaults(std::vector<std::string>& reversedWords) {
    const auto option = std::ranges::find(reversedWords, "--normalize");
    if (option == reversedWords.end())
        return;
    if (option == reversedWords.begin() || !isNumber(*std::prev(option)))
        *option = "--normalize=-23";
}

std::string CommandLine::messageOf(const CLI::ParseError& error) const {
    std::string text = error.what();
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr)
        text = text.substr(0, text.find(':')) + ": A value is missing.";
    return printable(text);
}

} // namespace

int runCommandLine(int count, char** words) {
    return CommandLine().run(count, words);
}

} // namespace tambrel::cli
