#include "EventText.h"
#include "EventTextParts.h"
#include "MIDI2Clip.h"
#include "MIDIDataWriter.h"
#include "TextReader.h"
#include "UMPPacket.h"

#include <algorithm>
#include <bit>

namespace tambrel::EventText {
namespace {

using namespace MIDI2Clip;

constexpr std::uint32_t groupBits = 0x0F00'0000;

bool isClockstamp(std::uint32_t word) {
    return (word & ~longestClockstamp) == deltaClockstamp;
}

bool restIsZero(const UMPPacket& packet, std::size_t from) {
    for (std::size_t word = from; word < packet.wordCount(); ++word) {
        if (packet.word(word) != 0)
            return false;
    }
    return true;
}

/// Writes each packet by name where the name tells all of it, else as words.
class ClipDumper {
public:
    explicit ClipDumper(ByteView clip) : clip_(clip), out_(clip.size() * 4 + 64) {}

    std::string run() {
        out_.word(clipWord);
        out_.endLine();
        ByteView rest = clip_.subspan(signature.size());
        while (!rest.empty()) {
            const std::size_t position = clip_.size() - rest.size();
            const std::size_t size = rest.size() < 4 ? 4 : 4 * UMPPacket(rest).wordCount();
            if (rest.size() < size)
                fail(position, "A packet is cut off.");
            dump(UMPPacket(rest));
            rest = rest.subspan(size);
        }
        if (isLineOpen_)
            out_.endLine();
        return out_.take();
    }

private:
    void dump(const UMPPacket& packet) {
        if (packet.type() == UMPMessageType::utility && isClockstamp(packet.word(0))) {
            if (isLineOpen_)
                out_.endLine();
            out_.word("+");
            out_.joinedNumber(packet.word(0) & longestClockstamp);
            isLineOpen_ = true;
            return;
        }
        if (!dumpNamed(packet))
            dumpWords(packet);
        out_.endLine();
        isLineOpen_ = false;
    }

    bool dumpNamed(const UMPPacket& packet) {
        const std::uint32_t first = packet.word(0);
        switch (packet.type()) {
        case UMPMessageType::utility:
            if ((first & 0xFFFF'0000) != ticksPerQuarterNote)
                return false;
            out_.word("ticks");
            out_.number(first & 0xFFFF);
            return true;
        case UMPMessageType::midi1ChannelVoice:
            return dumpChannelMessage(packet, first);
        case UMPMessageType::flexData:
            return dumpFlexData(packet, first);
        case UMPMessageType::stream:
            if ((first != startOfClip && first != endOfClip) || !restIsZero(packet, 1))
                return false;
            out_.word(first == startOfClip ? "start" : "finish");
            return true;
        default:
            return false;
        }
    }

    bool dumpChannelMessage(const UMPPacket& packet, std::uint32_t word) {
        const std::uint8_t status = packet.status();
        const std::uint32_t unused =
            MIDIStatus::isChannelMessage(status) && MIDIStatus::dataLength(status) == 1 ? 0x80FF : 0x8080;
        if (!MIDIStatus::isChannelMessage(status) || (word & unused) != 0)
            return false;
        writeChannelMessage(status, packet.data1(), packet.data2(), out_, [&] {
            out_.number(packet.group() + 1);
            out_.joined(':');
            out_.joinedNumber(MIDIStatus::channel(status) + 1);
        });
        return true;
    }

    bool dumpFlexData(const UMPPacket& packet, std::uint32_t word) {
        const std::uint32_t kind = word & ~groupBits;
        const std::uint32_t data = packet.word(1);
        if (!restIsZero(packet, 2))
            return false;
        if (kind == setTempo) {
            out_.word("tempo");
            out_.number(packet.group() + 1);
            out_.number(data);
            return true;
        }
        if (kind != setTimeSignature || (data & 0xFF) != 0 || (data >> 16 & 0xFF) > 7)
            return false;
        out_.word("time");
        out_.number(packet.group() + 1);
        out_.number(data >> 24);
        out_.joined('/');
        out_.joinedNumber(1 << (data >> 16 & 0xFF));
        out_.number(data >> 8 & 0xFF);
        return true;
    }

    void dumpWords(const UMPPacket& packet) {
        out_.word("ump");
        for (std::size_t word = 0; word < packet.wordCount(); ++word) {
            const std::uint32_t value = packet.word(word);
            const std::array<std::uint8_t, 4> bytes{
                static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
                static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
            out_.hex(bytes);
        }
    }

    ByteView clip_;
    TextWriter out_;
    bool isLineOpen_ = false; // It has a clockstamp; the packet that it delays is still to come.
};

/// Turns lines into packets.
class ClipBuilder {
public:
    explicit ClipBuilder(std::string_view text) : in_(text), out_(text.size() + 64) {}

    MIDIData run() {
        in_.nextLine();
        static_cast<void>(in_.word()); // The caller has seen it.
        out_.append(signature);
        while (in_.nextLine()) {
            if (in_.takes('+'))
                out_.appendU32(deltaClockstamp |
                               static_cast<std::uint32_t>(in_.number(0, longestClockstamp)));
            if (!in_.isAtEnd())
                buildPacket(in_.word());
        }
        return out_.finish();
    }

private:
    void buildPacket(std::string_view name) {
        if (const auto* const found = std::ranges::find(channelNames, name); found != channelNames.end())
            out_.appendU32(midi1ChannelVoice |
                           channelMessage(static_cast<std::uint32_t>(found - channelNames.begin())));
        else if (name == "ticks")
            out_.appendU32(ticksPerQuarterNote | read(0, 0xFFFF));
        else if (name == "start" || name == "finish")
            append(name == "start" ? startOfClip : endOfClip, 0);
        else if (name == "tempo")
            appendTempo();
        else if (name == "time")
            appendTimeSignature();
        else if (name == "ump")
            appendWords();
        else
            in_.fail("There is no packet called " + std::string(name) + ".");
    }

    std::uint32_t read(std::int64_t least, std::int64_t most) {
        return static_cast<std::uint32_t>(in_.number(least, most));
    }
    std::uint32_t readGroup() { return (read(1, 16) - 1) << 24; }

    void append(std::uint32_t first, std::uint32_t second) {
        for (const std::uint32_t word : {first, second, 0U, 0U})
            out_.appendU32(word);
    }

    std::uint32_t channelMessage(std::uint32_t index) {
        const std::uint32_t group = readGroup();
        if (!in_.takes(':'))
            in_.fail("A channel is written like 1:10, with the group before it.");
        const std::uint32_t status = 0x80 | index << 4 | (read(1, 16) - 1);
        const std::uint32_t head = group | status << 16;
        if (MIDIStatus::kind(static_cast<std::uint8_t>(status)) == MIDIStatus::pitchBend) {
            const std::uint32_t bend = read(0, 0x3FFF);
            return head | (bend & 0x7F) << 8 | bend >> 7;
        }
        const std::uint32_t data1 = read(0, 0x7F);
        const bool hasData2 = MIDIStatus::dataLength(static_cast<std::uint8_t>(status)) == 2;
        return head | data1 << 8 | (hasData2 ? read(0, 0x7F) : 0);
    }

    void appendTempo() {
        const std::uint32_t group = readGroup();
        append(setTempo | group, read(0, 0xFFFF'FFFF));
    }

    void appendTimeSignature() {
        const std::uint32_t group = readGroup();
        const std::uint32_t numerator = read(0, 0xFF);
        if (!in_.takes('/'))
            in_.fail("A time signature is written like 3/4.");
        const std::uint32_t denominator = read(1, 128);
        if (!std::has_single_bit(denominator))
            in_.fail("The lower number of a time signature is a power of two.");
        const auto exponent = static_cast<std::uint32_t>(std::countr_zero(denominator));
        append(setTimeSignature | group, numerator << 24 | exponent << 16 | read(0, 0xFF) << 8);
    }

    void appendWords() {
        words_.clear();
        in_.hex(words_);
        const bool isWhole = words_.size() >= 4 &&
                             words_.size() == 4 * static_cast<std::size_t>(UMPPacket(words_).wordCount());
        if (!isWhole)
            in_.fail("A packet of this kind has another number of words.");
        out_.append(words_);
    }

    TextReader in_;
    MIDIDataWriter out_;
    Bytes words_;
};

} // namespace

std::string dumpClip(ByteView data) {
    return ClipDumper(data).run();
}

MIDIData buildClip(std::string_view text) {
    return ClipBuilder(text).run();
}

} // namespace tambrel::EventText
