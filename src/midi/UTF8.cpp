#include "UTF8.h"

#include <algorithm>

namespace tambrel::UTF8 {
namespace {

struct LeadingByte {
    std::size_t length; // Of the character; 0: no character begins so.
    unsigned lowest; // Range of the second byte: excludes long forms, surrogates and what is past U+10FFFF.
    unsigned highest;
};

LeadingByte leadingByte(unsigned byte) {
    if (byte < 0x80)
        return {1, 0, 0};
    if (byte >= 0xC2 && byte <= 0xDF)
        return {2, 0x80, 0xBF};
    if (byte >= 0xE0 && byte <= 0xEF)
        return {3, byte == 0xE0 ? 0xA0u : 0x80u, byte == 0xED ? 0x9Fu : 0xBFu};
    if (byte >= 0xF0 && byte <= 0xF4)
        return {4, byte == 0xF0 ? 0x90u : 0x80u, byte == 0xF4 ? 0x8Fu : 0xBFu};
    return {0, 0, 0};
}

} // namespace

std::size_t characterLength(std::string_view text) {
    if (text.empty())
        return 0;
    const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const LeadingByte lead = leadingByte(byteAt(0));
    if (lead.length <= 1)
        return lead.length;
    if (text.size() < lead.length || byteAt(1) < lead.lowest || byteAt(1) > lead.highest)
        return 0;
    for (std::size_t i = 2; i < lead.length; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80)
            return 0;
    }
    return lead.length;
}

bool isValid(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string repaired(std::string_view text) {
    constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";
    std::string result;
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        result += length > 0 ? text.substr(0, length) : replacementCharacter;
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

} // namespace tambrel::UTF8
