#include "Check.h"
#include "EventText.h"

#include <algorithm>
#include <string_view>

using namespace tambrel;
using fuzz::check;

namespace {

void comesBack(ByteView file) {
    const std::string text = EventText::dump(file);
    check(std::ranges::equal(EventText::build(text).view(), file));
}

} // namespace

// A file that can be dumped is built again byte by byte. A text that can be built makes a file whose own text
// builds the same file. Every error has a text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ByteView input(bytes, size);
    try {
        comesBack(input);
    } catch (const EventText::Error& error) {
        check(!std::string_view(error.what()).empty());
    }
    MIDIData built;
    try {
        built = EventText::build({reinterpret_cast<const char*>(bytes), size});
    } catch (const EventText::Error& error) {
        check(!std::string_view(error.what()).empty());
        return 0;
    }
    try {
        comesBack(built);
    } catch (const EventText::Error&) {
        // What follows the last chunk, or the length of a header, can make it unreadable again.
    }
    return 0;
}
