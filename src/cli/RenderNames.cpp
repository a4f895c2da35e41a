#include "RenderNames.h"

#include "TambrelMIDIFileSupport.h"

#include <algorithm>
#include <array>

namespace tambrel::cli {
namespace {

using std::filesystem::path;

struct Name {
    std::string_view extension;
    SoundContainer container;
};
// The first name of a format is the default extension.
constexpr std::array names{Name{"wav", SoundContainer::wav},    Name{"flac", SoundContainer::flac},
                           Name{"ogg", SoundContainer::vorbis}, Name{"opus", SoundContainer::opus},
                           Name{"raw", SoundContainer::raw},    Name{"wave", SoundContainer::wav},
                           Name{"oga", SoundContainer::vorbis}, Name{"pcm", SoundContainer::raw}};

Part stem(const char* kind, std::size_t number, const path& output, const NoteFilter& notes) {
    std::array<char, 40> suffix{};
    std::snprintf(suffix.data(), suffix.size(), "-%s-%02lld", kind, static_cast<long long>(number));
    path named = output.parent_path() / output.stem();
    named += suffix.data();
    named += output.extension();
    return {named, notes};
}

} // namespace

std::optional<SoundContainer> containerCalled(std::string_view name) {
    const auto* const found = std::ranges::find(names, name, &Name::extension);
    return found == names.end() ? std::nullopt : std::optional(found->container);
}

std::string_view extensionOf(SoundContainer container) {
    return std::ranges::find(names, container, &Name::container)->extension;
}

std::optional<SoundContainer> containerNamed(const path& file) {
    for (const Name& name : names) {
        if (TambrelMIDIFileSupport::hasExtension(file.native(), std::span(&name.extension, 1)))
            return name.container;
    }
    return std::nullopt;
}

void decideFormat(RenderCommandOptions& options) {
    SoundFormat& format = options.sound.format;
    format.container =
        options.container.value_or(containerNamed(options.output.output).value_or(SoundContainer::wav));
    if (!format.isAvailable())
        throw UsageError("The sound file library cannot write " + std::string(extensionOf(format.container)) +
                         " with these samples at " + std::to_string(format.rate) + " Hz.");
    if (options.stems != Stems::none && options.output.output == standardStream)
        throw UsageError("--stems writes several files; -o names a folder.");
}

std::vector<Part> parts(ByteView song, const path& output, const RenderCommandOptions& options) {
    if (options.stems == Stems::none)
        return {{output, options.notes}};
    std::vector<Part> parts;
    const NoteParts struck = partsWithNotes(options.notes.applied(song));
    NoteFilter notes = options.notes;
    notes.soloed = {};
    // Only parts that are heard get a file, so what the options leave out stays out.
    if (options.stems == Stems::tracks) {
        for (const std::size_t track : struck.tracks) {
            notes.soloed.tracks = {track};
            parts.push_back(stem("track", track, output, notes));
        }
    } else {
        for (const std::size_t channel : struck.channels) {
            notes.soloed.channels = {channel};
            parts.push_back(stem("channel", channel, output, notes));
        }
    }
    return parts;
}

} // namespace tambrel::cli
