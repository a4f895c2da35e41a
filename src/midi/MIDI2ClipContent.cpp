#include "MIDI2ClipContent.h"

#include "MIDI2Clip.h"
#include "MIDI2ClipImportError.h"
#include "MIDIStatus.h"

#include <limits>

namespace tambrel {
namespace {

/// The words of a clip behind its signature, known to be whole packets.
class PacketList {
public:
    explicit PacketList(ByteView clip) {
        if (!MIDI2Clip::hasSignature(clip))
            throw MIDI2ClipImportError(MIDI2ClipImportError::Case::invalidSignature);
        payload_ = clip.subspan(MIDI2Clip::signature.size());
        if (payload_.size() % 4 != 0)
            throw MIDI2ClipImportError(MIDI2ClipImportError::Case::unalignedPayload);
        countPackets();
    }

    [[nodiscard]] std::int64_t count() const { return count_; }

    template<class OnPacket>
    void forEach(OnPacket onPacket) const {
        for (ByteView rest = payload_; !rest.empty();) {
            const UMPPacket packet(rest);
            onPacket(packet);
            rest = rest.subspan(4 * static_cast<std::size_t>(packet.wordCount()));
        }
    }

private:
    void countPackets() {
        const auto words = static_cast<std::int64_t>(payload_.size() / 4);
        for (std::int64_t at = 0; at < words; ++count_) {
            const auto type = static_cast<std::uint8_t>(payload_[4 * static_cast<std::size_t>(at)] >> 4);
            const std::int64_t expected = UMPPacket::wordCount(type);
            if (expected > words - at)
                throw MIDI2ClipImportError::truncatedPacket(type, expected, words - at);
            at += expected;
        }
    }

    ByteView payload_;
    std::int64_t count_ = 0;
};

} // namespace

MIDI2ClipContent::MIDI2ClipContent(ByteView clip) {
    const PacketList packets(clip);
    summary.totalPackets = packets.count();
    summary.ticksPerQuarterNote = MIDI2Clip::defaultTicksPerQuarterNote;
    packets.forEach([this](const UMPPacket& packet) { read(packet); });
    finish();
}

void MIDI2ClipContent::read(const UMPPacket& packet) {
    switch (packet.type()) {
    case UMPMessageType::utility:
        return readUtility(packet);
    case UMPMessageType::midi1ChannelVoice:
        return readMIDI1ChannelVoice(packet);
    case UMPMessageType::midi2ChannelVoice:
        return readMIDI2ChannelVoice(packet);
    case UMPMessageType::flexData:
        return readFlexData(packet);
    case UMPMessageType::stream:
        return readStream(packet);
    default:
        ++summary.unsupportedPackets;
    }
}

void MIDI2ClipContent::readUtility(const UMPPacket& packet) {
    constexpr std::uint8_t ticksPerQuarterNote = 3;
    constexpr std::uint8_t deltaClockstamp = 4;
    const std::uint32_t word = packet.word(0);
    const std::uint8_t status = packet.status() >> 4;
    if (status == deltaClockstamp) {
        ++summary.deltaClockstampPackets;
        advance(word & MIDI2Clip::longestClockstamp);
    } else if (status != ticksPerQuarterNote) {
        ++summary.unsupportedPackets;
    } else if (const auto ticks = static_cast<std::uint16_t>(word); ticks != 0) {
        summary.ticksPerQuarterNote = ticks;
    }
}

void MIDI2ClipContent::advance(std::uint32_t ticks) {
    if (ticks > std::numeric_limits<std::uint32_t>::max() - accumulatedTicks_)
        throw MIDI2ClipImportError(MIDI2ClipImportError::Case::tickOverflow);
    accumulatedTicks_ += ticks;
}

// Before the start and after the end of the clip everything happens at once.
std::uint32_t MIDI2ClipContent::tick() const {
    return isStarted_ ? accumulatedTicks_ - startTick_ : 0;
}

void MIDI2ClipContent::readMIDI1ChannelVoice(const UMPPacket& packet) {
    ++summary.midi1ChannelVoicePackets;
    if (const auto event = UMPConversion::midi1ByteStream(packet, tick()))
        append(packet, *event);
    else
        ++summary.unsupportedPackets;
}

void MIDI2ClipContent::readMIDI2ChannelVoice(const UMPPacket& packet) {
    ++summary.midi2ChannelVoicePackets;
    append(packet, UMPConversion::downConvertedMIDI1Bytes(packet, tick()));
    ++summary.midi2ChannelVoiceDownConverted;
}

void MIDI2ClipContent::append(const UMPPacket& packet, const TimedEvent& event) {
    const TrackKey key{packet.group(), MIDIStatus::channel(packet.status())};
    tracks[key.index()].push_back(event);
    ++summary.importedPackets;
}

void MIDI2ClipContent::readFlexData(const UMPPacket& packet) {
    std::int64_t* count = &summary.flexTempoPackets;
    auto event = UMPConversion::tempoEvent(packet, tick());
    if (!event) {
        count = &summary.flexTimeSignaturePackets;
        event = UMPConversion::timeSignatureEvent(packet, tick());
    }
    if (!event) {
        ++summary.unsupportedPackets;
        return;
    }
    conductor.push_back(*event);
    ++*count;
    ++summary.importedPackets;
}

void MIDI2ClipContent::readStream(const UMPPacket& packet) {
    constexpr std::uint32_t startOfClip = 0xF0200000;
    constexpr std::uint32_t endOfClip = 0xF0210000;
    const bool isBare = packet.word(1) == 0 && packet.word(2) == 0 && packet.word(3) == 0;
    if (isBare && packet.word(0) == startOfClip) {
        isStarted_ = true;
        startTick_ = accumulatedTicks_;
    } else if (isBare && packet.word(0) == endOfClip) {
        isStarted_ = false;
    } else {
        ++summary.unsupportedPackets;
    }
}

void MIDI2ClipContent::finish() {
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        if (tracks[i].empty())
            continue;
        const TrackKey key = TrackKey::at(i);
        ++summary.trackCount;
        if (summary.groups.empty() || summary.groups.back() != key.group)
            summary.groups.push_back(key.group);
        summary.channelsByGroup[key.group].push_back(key.channel);
    }
    if (summary.trackCount == 0)
        throw MIDI2ClipImportError(MIDI2ClipImportError::Case::noPlayableEvents);
    constexpr std::uint32_t usualMicrosecondsPerQuarterNote = 500'000;
    if (summary.flexTimeSignaturePackets == 0)
        conductor.insert(conductor.begin(), UMPConversion::timeSignatureMetaEvent(4, 2, 8, 0));
    if (summary.flexTempoPackets == 0)
        conductor.insert(conductor.begin(),
                         UMPConversion::tempoMetaEvent(usualMicrosecondsPerQuarterNote, 0));
}

} // namespace tambrel
