#include "EventText.h"

#include "EventTextParts.h"
#include "MIDI2Clip.h"
#include "TextReader.h"

namespace tambrel::EventText {

void fail(std::size_t position, const std::string& reason) {
    throw Error("Byte " + std::to_string(position) + ": " + reason, reason, position);
}

std::string dump(ByteView data) {
    return MIDI2Clip::hasSignature(data) ? dumpClip(data) : dumpSong(data);
}

MIDIData build(std::string_view text) {
    TextReader first(text);
    const std::string_view word = first.nextLine() ? first.word() : std::string_view();
    if (word == songWord)
        return buildSong(text);
    if (word == clipWord)
        return buildClip(text);
    first.fail("The text begins with neither smf nor clip.");
}

} // namespace tambrel::EventText
