#pragma once

#include "MIDI2ClipImportSummary.h"
#include "UMPConversion.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tambrel {

/// The track of a channel message: group and channel, 0 to 15 each. Tracks are written in this order.
struct TrackKey {
    std::uint8_t group = 0;
    std::uint8_t channel = 0;

    static constexpr std::size_t count = 256;
    [[nodiscard]] std::size_t index() const { return group * std::size_t{16} + channel; }
    [[nodiscard]] static TrackKey at(std::size_t index) {
        return {static_cast<std::uint8_t>(index / 16), static_cast<std::uint8_t>(index % 16)};
    }
    [[nodiscard]] std::string trackName() const {
        const std::string name = "Ch " + std::to_string(channel + 1);
        return group == 0 ? name : "Group " + std::to_string(group + 1) + " " + name;
    }
};

/// The content of a MIDI 2.0 clip (MIDI Clip File, M2-116-U; UMP, M2-104-UM), by track. Any thread.
class MIDI2ClipContent {
public:
    /// Throws `MIDI2ClipImportError`.
    explicit MIDI2ClipContent(ByteView clip);

    MIDI2ClipImportSummary summary;
    std::array<std::vector<TimedEvent>, TrackKey::count> tracks; ///< By `TrackKey::index`.
    std::vector<TimedMetaEvent> conductor;                       ///< Tempo and time signatures.

private:
    std::size_t read(const UMPPacket& packet);
    void readUtility(const UMPPacket& packet);
    void readMIDI1ChannelVoice(const UMPPacket& packet);
    void readMIDI2ChannelVoice(const UMPPacket& packet);
    void readFlexData(const UMPPacket& packet);
    void readStream(const UMPPacket& packet);
    void advance(std::uint32_t ticks);
    [[nodiscard]] std::uint32_t tick() const;
    void append(const UMPPacket& packet, MIDIMessage message);
    void finish();

    std::uint32_t accumulatedTicks_ = 0;
    std::uint32_t startTick_ = 0;
    bool isStarted_ = false;
};

} // namespace tambrel
