#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

namespace tambrel {

/// Why a MIDI 2.0 clip cannot be turned into a Standard MIDI File. `what()` is the text for the user. Any
/// thread.
class MIDI2ClipImportError : public std::exception {
public:
    enum class Case {
        truncatedPacket,
        unsupportedMIDI2ChannelVoiceStatus,
        invalidSignature,
        unalignedPayload,
        tickOverflow,
        noPlayableEvents,
    };

    /// For a case whose text needs no figures.
    explicit MIDI2ClipImportError(Case errorCase);
    [[nodiscard]] static MIDI2ClipImportError truncatedPacket(std::uint8_t type, std::size_t expected,
                                                              std::size_t remaining);
    [[nodiscard]] static MIDI2ClipImportError unsupportedMIDI2ChannelVoiceStatus(std::uint8_t status);

    [[nodiscard]] Case errorCase() const { return case_; }
    [[nodiscard]] const std::string& description() const { return description_; }
    [[nodiscard]] const char* what() const noexcept override { return description_.c_str(); }

private:
    MIDI2ClipImportError(Case errorCase, std::string description);

    Case case_;
    std::string description_;
};

} // namespace tambrel
