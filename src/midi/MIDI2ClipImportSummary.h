#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tambrel {

/// What an import found in a MIDI 2.0 clip. Groups and channels count from 0. Any thread.
struct MIDI2ClipImportSummary {
    std::int64_t totalPackets = 0;
    std::int64_t importedPackets = 0;
    std::int64_t unsupportedPackets = 0;
    std::int64_t deltaClockstampPackets = 0;
    std::int64_t midi1ChannelVoicePackets = 0;
    std::int64_t midi2ChannelVoicePackets = 0;
    std::int64_t midi2ChannelVoiceDownConverted = 0;
    std::int64_t flexTempoPackets = 0;
    std::int64_t flexTimeSignaturePackets = 0;
    std::uint16_t ticksPerQuarterNote = 0;
    std::int64_t trackCount = 0; ///< Without the track of tempo and time signatures.
    std::vector<std::uint8_t> groups;
    std::map<std::uint8_t, std::vector<std::uint8_t>> channelsByGroup;

    bool operator==(const MIDI2ClipImportSummary&) const = default;

    /// One line for the diagnostic log, where groups and channels count from 1.
    [[nodiscard]] std::string debugDescription() const;
};

} // namespace tambrel
