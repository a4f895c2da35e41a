#include "MIDI2ClipContent.h"

#include "MIDI2Clip.h"
#include "MIDI2ClipImportError.h"
#include "MIDIStatus.h"

#include <limits>

namespace tambrel {
namespace {

ByteView payload(ByteView clip) {
    if (!MIDI2Clip::hasSignature(clip))
        throw MIDI2ClipImportError(MIDI2ClipImportError::Case::invalidSignature);
    const ByteView packets = clip.subspan(MIDI2Clip::signature.size());
    if (packets.size() % 4 != 0)
        throw MIDI2ClipImportError(MIDI2ClipImportError::Case::unalignedPayload);
    return packets;
}

// The packet that `rest` begins with. Throws when it is cut off.
UMPPacket firstPacket(ByteView rest) {
    const UMPPacket packet(rest);
    const std::size_t words = rest.size() / 4;
    if (words < UMPPacket::longest && words < packet.wordCount())
        throw MIDI2ClipImportError::truncatedPacket(packet.type(), packet.wordCount(), words);
    return packet;
}

} // namespace

MIDI2ClipContent::MIDI2ClipContent(ByteView clip) {
    summary.ticksPerQuarterNote = MIDI2Clip::defaultTicksPerQuarterNote;
    ByteView rest = payload(clip);
    try {
        for (; !rest.empty(); ++summary.totalPackets)
            rest = rest.subspan(4 * read(firstPacket(rest)));
    } catch (const MIDI2ClipImportError&) {
        // A packet that is cut off further on is reported first.
        while (!rest.empty())
            rest = rest.subspan(4 * firstPacket(rest).wordCount());
        throw;
    }
    finish();
}

// Returns the packet's words, as a constant in each branch: the processor predicts the branch, and so knows
// where the next packet begins before it has read this one.
std::size_t MIDI2ClipContent::read(const UMPPacket& packet) {
    switch (packet.type()) {
    case UMPMessageType::utility:
        readUtility(packet);
        return UMPPacket::wordCount(UMPMessageType::utility);
    case UMPMessageType::midi1ChannelVoice:
        readMIDI1ChannelVoice(packet);
        return UMPPacket::wordCount(UMPMessageType::midi1ChannelVoice);
    case UMPMessageType::midi2ChannelVoice:
        readMIDI2ChannelVoice(packet);
        return UMPPacket::wordCount(UMPMessageType::midi2ChannelVoice);
    case UMPMessageType::flexData:
        readFlexData(packet);
        return UMPPacket::wordCount(UMPMessageType::flexData);
    case UMPMessageType::stream:
        readStream(packet);
        return UMPPacket::wordCount(UMPMessageType::stream);
    default:
        ++summary.unsupportedPackets;
        return packet.wordCount();
    }
}

void MIDI2ClipContent::readUtility(const UMPPacket& packet) {
    constexpr std::uint32_t statusMask = 0x00F00000;
    const std::uint32_t word = packet.word(0);
    if ((word & statusMask) == MIDI2Clip::deltaClockstamp) {
        ++summary.deltaClockstampPackets;
        advance(word & MIDI2Clip::longestClockstamp);
    } else if ((word & statusMask) != MIDI2Clip::ticksPerQuarterNote) {
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

// Packets before the start and after the end of the clip are at tick 0.
std::uint32_t MIDI2ClipContent::tick() const {
    return isStarted_ ? accumulatedTicks_ - startTick_ : 0;
}

void MIDI2ClipContent::readMIDI1ChannelVoice(const UMPPacket& packet) {
    ++summary.midi1ChannelVoicePackets;
    if (const auto message = UMPConversion::midi1ByteStream(packet))
        append(packet, *message);
    else
        ++summary.unsupportedPackets;
}

void MIDI2ClipContent::readMIDI2ChannelVoice(const UMPPacket& packet) {
    ++summary.midi2ChannelVoicePackets;
    append(packet, UMPConversion::downConvertedMIDI1Bytes(packet));
    ++summary.midi2ChannelVoiceDownConverted;
}

void MIDI2ClipContent::append(const UMPPacket& packet, MIDIMessage message) {
    const TrackKey key{packet.group(), MIDIStatus::channel(packet.status())};
    tracks[key.index()].push_back({tick(), message});
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
    const bool isBare = packet.word(1) == 0 && packet.word(2) == 0 && packet.word(3) == 0;
    if (isBare && packet.word(0) == MIDI2Clip::startOfClip) {
        isStarted_ = true;
        startTick_ = accumulatedTicks_;
    } else if (isBare && packet.word(0) == MIDI2Clip::endOfClip) {
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
