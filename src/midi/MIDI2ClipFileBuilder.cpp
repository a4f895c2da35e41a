#include "MIDI2Clip.h"
#include "MIDI2ClipMerge.h"
#include "MIDIDataWriter.h"
#include "SMFHeader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

namespace tambrel::MIDI2ClipBuilder {
namespace {

using namespace MIDI2Clip;

/// One event of a clip. `first` is the first word of its packet; `second` is the second word of flex data, or
/// the place of a system exclusive message in the file, which has `size` bytes.
struct ClipEvent {
    std::uint32_t tick;
    std::uint32_t first;
    std::uint32_t second;
    std::uint32_t size;
};

// With a time-code division a quarter note lasts a second, and the tempo is fixed.
struct ClipTime {
    std::uint32_t ticksPerQuarter;
    std::optional<std::uint32_t> fixedTempo; // In units of 10 ns per quarter note.
};

ClipTime clipTime(Division division) {
    const std::uint32_t ticks = division.ticks();
    if (!division.isTimeCode())
        return {ticks, std::nullopt};
    // Drop frame counts 30 frames in a little more than a second.
    const double frames = std::ceil(division.framesPerSecond());
    constexpr double second = 100'000'000;
    return {static_cast<std::uint32_t>(frames) * ticks,
            static_cast<std::uint32_t>(std::lround(second * frames / division.framesPerSecond()))};
}

/// Selects the events of a song that a clip can hold.
class Selection {
public:
    Selection(ByteView smf, bool hasFixedTempo) : smf_(smf), hasFixedTempo_(hasFixedTempo) {}

    bool operator()(const SMFTimedTrackEvent& event, ClipEvent& packet) const {
        const ByteView data = event.payload(smf_);
        if (MIDIStatus::isChannelMessage(event.status))
            return selectChannelMessage(event.status, data, packet);
        if (event.status == MIDIStatus::meta)
            return selectMeta(event.metaType, data, packet);
        return event.status == MIDIStatus::systemExclusive && selectSystemExclusive(event, data, packet);
    }

private:
    // Data bytes are cut to seven bits: an eighth would turn it into another packet.
    static bool selectChannelMessage(std::uint8_t status, ByteView data, ClipEvent& packet) {
        const std::uint32_t data2 = data.size() == 2 ? data[1] & 0x7FU : 0;
        packet.first = midi1ChannelVoice | std::uint32_t{status} << 16 | (data[0] & 0x7FU) << 8 | data2;
        return true;
    }

    [[nodiscard]] bool selectMeta(std::uint8_t type, ByteView data, ClipEvent& packet) const {
        constexpr std::uint32_t unitsPerMicrosecond = 100;
        constexpr std::uint8_t largestDenominatorExponent = 7;
        if (type == MetaType::setTempo && data.size() >= 3 && !hasFixedTempo_) {
            packet.first = setTempo;
            packet.second =
                (std::uint32_t{data[0]} << 16 | std::uint32_t{data[1]} << 8 | data[2]) * unitsPerMicrosecond;
            return packet.second != 0; // 0 is no tempo.
        }
        if (type == MetaType::timeSignature && data.size() >= 4 && data[0] != 0 &&
            data[1] <= largestDenominatorExponent) {
            packet.first = setTimeSignature;
            packet.second =
                std::uint32_t{data[0]} << 24 | std::uint32_t{data[1]} << 16 | std::uint32_t{data[3]} << 8;
            return true;
        }
        if (type == MetaType::keySignature && data.size() >= 2)
            return selectKeySignature(static_cast<std::int8_t>(data[0]), data[1] == 1, packet);
        return false;
    }

    // Flex data names the tonic: 1 for A to 7 for G, 0 when it has no name.
    static bool selectKeySignature(std::int8_t sharps, bool minor, ClipEvent& packet) {
        if (sharps < -7 || sharps > 7)
            return false;
        constexpr std::string_view tonicsByFifth = "CGDAEBF"; // From C major on.
        const int fifth = (sharps + (minor ? 3 : 0) + 7) % 7;
        const auto tonic =
            static_cast<std::uint32_t>(tonicsByFifth[static_cast<std::size_t>(fifth)] - 'A' + 1);
        packet.first = setKeySignature;
        packet.second = (static_cast<std::uint32_t>(sharps) & 0xF) << 28 | tonic << 24;
        return true;
    }

    // Whole messages of data bytes; one that goes on in later events is left out.
    static bool selectSystemExclusive(const SMFTimedTrackEvent& event, ByteView data, ClipEvent& packet) {
        constexpr std::uint8_t endOfExclusive = 0xF7;
        if (data.empty() || data.back() != endOfExclusive)
            return false;
        const ByteView message = data.first(data.size() - 1);
        if (std::ranges::any_of(message, [](std::uint8_t byte) { return byte >= 0x80; }))
            return false;
        packet.first = systemExclusive7;
        packet.second = static_cast<std::uint32_t>(event.dataStart);
        packet.size = static_cast<std::uint32_t>(message.size());
        return true;
    }

    ByteView smf_;
    bool hasFixedTempo_;
};

/// Writes the packets, each after the clockstamp of its time.
class ClipFileWriter {
public:
    ClipFileWriter(ByteView smf, std::size_t expectedSize) : smf_(smf), out_(expectedSize) {
        out_.append(signature);
    }

    void begin(const ClipTime& time) {
        write({deltaClockstamp, ticksPerQuarterNote | time.ticksPerQuarter});
        write({deltaClockstamp, startOfClip, 0, 0, 0});
        if (time.fixedTempo)
            write({deltaClockstamp, setTempo, *time.fixedTempo, 0, 0});
    }

    void append(const ClipEvent& event) {
        wait(event.tick);
        if (event.first == systemExclusive7)
            appendSystemExclusive(smf_.subspan(event.second, event.size));
        else if (event.first >= setTempo)
            write({event.first, event.second, 0, 0});
        else
            out_.appendU32(event.first);
    }

    [[nodiscard]] MIDIData end(std::uint32_t tick) {
        wait(tick);
        write({endOfClip, 0, 0, 0});
        return out_.finish();
    }

private:
    void write(std::initializer_list<std::uint32_t> words) {
        for (const std::uint32_t word : words)
            out_.appendU32(word);
    }

    void wait(std::uint32_t tick) {
        constexpr std::uint32_t longest = longestClockstamp;
        for (; tick - lastTick_ > longest; lastTick_ += longest)
            write({deltaClockstamp | longest, noOperation});
        out_.appendU32(deltaClockstamp | (tick - lastTick_));
        lastTick_ = tick;
    }

    // Six bytes a packet; every packet but the first has a clockstamp of its own.
    void appendSystemExclusive(ByteView message) {
        constexpr std::size_t most = 6;
        for (std::size_t at = 0; at == 0 || at < message.size(); at += most) {
            const std::size_t count = std::min(most, message.size() - at);
            const bool isFirst = at == 0;
            const bool isLast = at + count == message.size();
            const std::uint32_t status = isFirst ? (isLast ? 0 : 1) : (isLast ? 3 : 2);
            if (!isFirst)
                out_.appendU32(deltaClockstamp);
            std::array<std::uint8_t, most> bytes{};
            std::ranges::copy(message.subspan(at, count), bytes.begin());
            out_.appendU32(systemExclusive7 | status << 20 | static_cast<std::uint32_t>(count) << 16 |
                           std::uint32_t{bytes[0]} << 8 | bytes[1]);
            out_.append(ByteView(bytes).subspan(2));
        }
    }

    ByteView smf_;
    MIDIDataWriter out_;
    std::uint32_t lastTick_ = 0;
};

} // namespace

MIDIData buildFile(ByteView smf, const std::stop_token& stop) {
    const auto header = SMFHeader::read(smf);
    if (!header)
        return {};
    const ClipTime time = clipTime(header->division);
    ClipFileWriter clip(smf, 128 + smf.size() / 3 * 8);
    clip.begin(time);
    const std::uint32_t lastTick = mergeTracks<ClipEvent>(
        smf, header->trackCount, SMFMalformedEventPolicy::stop, stop,
        Selection(smf, time.fixedTempo.has_value()), [&clip](std::span<const ClipEvent> events) {
            for (const ClipEvent& event : events)
                clip.append(event);
        });
    return clip.end(lastTick);
}

} // namespace tambrel::MIDI2ClipBuilder
