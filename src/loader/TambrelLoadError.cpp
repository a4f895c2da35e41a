#include "TambrelLoadError.h"

#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

namespace tambrel {
namespace {

std::string joined(std::string_view beginning, std::string_view reason) {
    return std::string(beginning).append(reason);
}

} // namespace

TambrelLoadError::TambrelLoadError(Case errorCase, std::string userMessage, std::string diagnosticDescription)
    : case_(errorCase),
      userMessage_(std::move(userMessage)),
      diagnosticDescription_(std::move(diagnosticDescription)) {}

TambrelLoadError TambrelLoadError::unreadableFile(std::string_view fileName, std::string_view reason) {
    return {Case::unreadableFile, "Could not read the selected file.",
            joined("Could not read ", fileName).append(": ").append(reason)};
}

TambrelLoadError TambrelLoadError::invalidMIDI2Clip(std::string_view reason) {
    return {Case::invalidMIDI2Clip, "The MIDI 2.0 clip is not playable.",
            joined("Invalid MIDI 2.0 clip: ", reason)};
}

TambrelLoadError TambrelLoadError::malformedMIDIData(std::string_view reason) {
    return {Case::malformedMIDIData, "The file is not valid MIDI data.",
            joined("Malformed MIDI data: ", reason)};
}

TambrelLoadError TambrelLoadError::unsupportedMIDIFormat(std::uint16_t format) {
    const std::string number = std::to_string(format);
    return {Case::unsupportedMIDIFormat, "MIDI format " + number + " is not supported.",
            "Unsupported Standard MIDI File format " + number + "; expected format 0 or 1."};
}

TambrelLoadError TambrelLoadError::playbackPreparationFailed(std::string_view reason) {
    return {Case::playbackPreparationFailed, "Could not prepare MIDI playback.",
            joined("Could not prepare MIDI playback: ", reason)};
}

std::string_view TambrelLoadError::caseName() const {
    switch (case_) {
    case Case::unreadableFile:
        return "unreadableFile";
    case Case::invalidMIDI2Clip:
        return "invalidMIDI2Clip";
    case Case::malformedMIDIData:
        return "malformedMIDIData";
    case Case::unsupportedMIDIFormat:
        return "unsupportedMIDIFormat";
    case Case::playbackPreparationFailed:
        break;
    }
    return "playbackPreparationFailed";
}

std::string_view TambrelLoadError::statusTitle() const {
    switch (case_) {
    case Case::unreadableFile:
        return "Unreadable File";
    case Case::invalidMIDI2Clip:
        return "Invalid MIDI 2.0";
    case Case::malformedMIDIData:
        return "Invalid MIDI File";
    case Case::unsupportedMIDIFormat:
        return "Unsupported Format";
    case Case::playbackPreparationFailed:
        break;
    }
    return "Playback Error";
}

std::string TambrelLoadError::diagnosticReason(const std::exception& error) {
    if (const auto* systemError = dynamic_cast<const std::system_error*>(&error))
        return systemError->code().message();
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr)
        return std::generic_category().message(ENOMEM);
    return error.what();
}

} // namespace tambrel
