#include "MIDI2ClipImportError.h"

#include <cassert>
#include <ios>
#include <sstream>
#include <utility>

namespace tambrel {
namespace {

std::string fixedDescription(MIDI2ClipImportError::Case errorCase) {
    using enum MIDI2ClipImportError::Case;
    switch (errorCase) {
    case invalidSignature:
        return "MIDI 2.0 clip data is missing the SMF2CLIP signature.";
    case unalignedPayload:
        return "MIDI 2.0 clip payload is not aligned to 32-bit UMP words.";
    case tickOverflow:
        return "MIDI 2.0 clip delta clockstamp timing overflowed.";
    case noPlayableEvents:
        return "MIDI 2.0 clip did not contain playable channel voice events.";
    case truncatedPacket:
    case unsupportedMIDI2ChannelVoiceStatus:
        break;
    }
    assert(false && "this case needs its numbers");
    return {};
}

std::string hexadecimal(std::uint8_t value, int digits) {
    std::ostringstream text;
    text.width(digits);
    text.fill('0');
    text << std::uppercase << std::hex << int{value};
    return text.str();
}

} // namespace

MIDI2ClipImportError::MIDI2ClipImportError(Case errorCase)
    : MIDI2ClipImportError(errorCase, fixedDescription(errorCase)) {}

MIDI2ClipImportError::MIDI2ClipImportError(Case errorCase, std::string description)
    : case_(errorCase), description_(std::move(description)) {}

MIDI2ClipImportError MIDI2ClipImportError::truncatedPacket(std::uint8_t type, std::size_t expected,
                                                           std::size_t remaining) {
    return {Case::truncatedPacket, "UMP type 0x" + hexadecimal(type, 1) + " expected " +
                                       std::to_string(expected) + " word(s), only " +
                                       std::to_string(remaining) + " remain."};
}

MIDI2ClipImportError MIDI2ClipImportError::unsupportedMIDI2ChannelVoiceStatus(std::uint8_t status) {
    return {Case::unsupportedMIDI2ChannelVoiceStatus,
            "MIDI 2.0 Channel Voice status 0x" + hexadecimal(status, 2) + " is not down-converted yet."};
}

} // namespace tambrel
