#include "EventText.h"
#include "EventTextParts.h"
#include "MIDIDataWriter.h"
#include "TextReader.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <optional>

namespace tambrel::EventText {
namespace {

constexpr std::uint32_t longestQuantity = 0x0FFF'FFFF;

std::uint8_t byte(std::int64_t value) {
    return static_cast<std::uint8_t>(value);
}

/// Turns the lines of a song into chunks.
class SongBuilder {
public:
    explicit SongBuilder(std::string_view text) : in_(text), out_(text.size() / 3 + 64) {}

    MIDIData run() {
        in_.nextLine();
        buildHeader();
        while (in_.nextLine())
            buildLine();
        endTrack();
        return out_.finish();
    }

private:
    void appendText(std::string_view text) {
        out_.append({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }

    void buildHeader() {
        static_cast<void>(in_.word()); // The caller has seen it.
        appendText("MThd");
        out_.appendU32(0);
        out_.appendU16(static_cast<std::uint16_t>(in_.number(0, 0xFFFF)));
        out_.appendU16(static_cast<std::uint16_t>(in_.number(0, 0xFFFF)));
        const std::int64_t division = in_.number(0, 0x7FFF);
        if (!in_.takes('/'))
            out_.appendU16(static_cast<std::uint16_t>(division));
        else if (division >= 1 && division <= 128)
            out_.appendU16(static_cast<std::uint16_t>((256 - division) << 8 | in_.number(0, 0xFF)));
        else
            in_.fail("Frames a second are a number from 1 to 128.");
        appendRest();
        out_.overwriteU32(4, static_cast<std::uint32_t>(out_.size() - 8));
    }

    void appendRest() {
        payload_.clear();
        in_.hex(payload_);
        out_.append(payload_);
    }

    void buildLine() {
        if (const char first = in_.peek(); first >= '0' && first <= '9') {
            buildEvent();
            return;
        }
        const std::string_view kind = in_.word();
        endTrack();
        if (kind == "track")
            beginChunk("MTrk");
        else if (kind == "chunk")
            buildForeignChunk();
        else if (kind == "rest")
            appendRest();
        else
            in_.fail("This is neither an event nor track, chunk or rest.");
    }

    void beginChunk(std::string_view type) {
        appendText(type);
        out_.appendU32(0);
        chunkAt_ = out_.size();
        lastTick_ = 0;
        runningStatus_ = 0;
    }

    void endTrack() {
        if (!chunkAt_)
            return;
        const std::size_t length = out_.size() - *chunkAt_;
        if (length > std::numeric_limits<std::uint32_t>::max())
            in_.fail("The track is larger than 4 GiB.");
        out_.overwriteU32(*chunkAt_ - 4, static_cast<std::uint32_t>(length));
        chunkAt_.reset();
    }

    void buildForeignChunk() {
        payload_.clear();
        in_.quoted(payload_);
        if (payload_.size() != 4)
            in_.fail("The type of a chunk has four characters.");
        beginChunk({reinterpret_cast<const char*>(payload_.data()), payload_.size()});
        appendRest();
        endTrack();
    }

    // "TICK", its count of bytes where it is not the shortest, and a mark for running status.
    void buildEvent() {
        if (!chunkAt_)
            in_.fail("An event belongs into a track.");
        const auto tick =
            static_cast<std::uint32_t>(in_.number(0, std::numeric_limits<std::uint32_t>::max()));
        if (tick < lastTick_)
            in_.fail("The event comes before the one above.");
        if (tick - lastTick_ > longestQuantity)
            in_.fail("No more than 268435455 ticks can lie between two events.");
        appendQuantity(tick - lastTick_);
        lastTick_ = tick;
        isRunning_ = in_.takes('~');
        buildNamedEvent(in_.word());
    }

    void appendQuantity(std::uint32_t value) {
        auto bytes = static_cast<std::int64_t>(quantityLength(value));
        if (in_.takes('/'))
            bytes = in_.number(bytes, 4);
        for (; bytes > 1; --bytes)
            out_.append(std::array{byte(value >> (7 * (bytes - 1)) | 0x80)});
        out_.append(std::array{byte(value & 0x7F)});
    }

    void buildNamedEvent(std::string_view name) {
        if (const auto* const found = std::ranges::find(channelNames, name); found != channelNames.end()) {
            buildChannelMessage(byte(0x80 + 16 * (found - channelNames.begin())));
            return;
        }
        if (isRunning_)
            in_.fail("Only a channel message can go without its status.");
        runningStatus_ = 0;
        payload_.clear();
        if (name == "sysex" || name == "escape")
            buildPayload(name == "sysex" ? MIDIStatus::systemExclusive
                                         : MIDIStatus::systemExclusiveContinuation);
        else
            buildMeta(name);
    }

    void buildChannelMessage(std::uint8_t kind) {
        const std::uint8_t status = byte(kind | (in_.number(1, 16) - 1));
        if (isRunning_ && status != runningStatus_)
            in_.fail("The event above has another status, which this one cannot take over.");
        if (!isRunning_)
            out_.append(std::array{status});
        runningStatus_ = status;
        if (kind == MIDIStatus::pitchBend) {
            const std::int64_t bend = in_.number(0, 0x3FFF);
            out_.append(std::array{byte(bend & 0x7F), byte(bend >> 7)});
            return;
        }
        out_.append(std::array{byte(in_.number(0, 0x7F))});
        if (MIDIStatus::dataLength(status) == 2)
            out_.append(std::array{byte(in_.number(0, 0x7F))});
    }

    // Before the payload: the count of bytes of its length, where that is not the shortest.
    void buildPayload(std::uint8_t status) {
        const std::int64_t lengthBytes = oddLength();
        in_.hex(payload_);
        out_.append(std::array{status});
        appendPayload(lengthBytes);
    }

    std::int64_t oddLength() { return in_.takes('/') ? in_.number(1, 4) : 0; }

    void appendPayload(std::int64_t lengthBytes) {
        const std::size_t size = payload_.size();
        if (size > longestQuantity)
            in_.fail("The event is longer than 268435455 bytes.");
        const auto length = static_cast<std::uint32_t>(size);
        const auto shortest = static_cast<std::int64_t>(quantityLength(length));
        if (lengthBytes != 0 && lengthBytes < shortest)
            in_.fail("The length of the event needs more bytes.");
        for (std::int64_t bytes = std::max(lengthBytes, shortest); bytes > 1; --bytes)
            out_.append(std::array{byte(length >> (7 * (bytes - 1)) | 0x80)});
        out_.append(std::array{byte(length & 0x7F)});
        out_.append(payload_);
    }

    void buildMeta(std::string_view name) {
        const std::int64_t lengthBytes = oddLength();
        const std::uint8_t type = metaType(name);
        out_.append(std::array{MIDIStatus::meta, type});
        appendPayload(lengthBytes);
    }

    // Leaves the payload in `payload_`.
    std::uint8_t metaType(std::string_view name) {
        if (const auto* const text = std::ranges::find(textNames, name); text != textNames.end()) {
            in_.quoted(payload_);
            return byte(text - textNames.begin() + 1);
        }
        if (name == "end")
            return MetaType::endOfTrack;
        if (name == "tempo") {
            const std::int64_t tempo = in_.number(0, 0xFF'FFFF);
            payload_ = {byte(tempo >> 16), byte(tempo >> 8), byte(tempo)};
            return MetaType::setTempo;
        }
        if (name == "time")
            return readTimeSignature();
        if (name == "key")
            return readKeySignature();
        if (name != "meta")
            in_.fail("There is no event called " + std::string(name) + ".");
        in_.hex(payload_);
        if (payload_.empty())
            in_.fail("The type of the meta event is missing.");
        const std::uint8_t type = payload_.front();
        payload_.erase(payload_.begin());
        return type;
    }

    std::uint8_t readTimeSignature() {
        const std::uint8_t numerator = byte(in_.number(0, 0xFF));
        if (!in_.takes('/'))
            in_.fail("A time signature is written like 3/4.");
        const auto denominator = static_cast<std::uint32_t>(in_.number(1, 128));
        if (!std::has_single_bit(denominator))
            in_.fail("The lower number of a time signature is a power of two.");
        const std::uint8_t clocks = byte(in_.number(0, 0xFF));
        payload_ = {numerator, byte(std::countr_zero(denominator)), clocks, byte(in_.number(0, 0xFF))};
        return MetaType::timeSignature;
    }

    std::uint8_t readKeySignature() {
        const std::uint8_t sharps = byte(in_.number(-128, 127));
        const std::string_view mode = in_.word();
        if (mode != "major" && mode != "minor")
            in_.fail("A key is major or minor.");
        payload_ = {sharps, byte(mode == "minor" ? 1 : 0)};
        return MetaType::keySignature;
    }

    TextReader in_;
    MIDIDataWriter out_;
    Bytes payload_;
    std::optional<std::size_t> chunkAt_; // Of the data of the open track.
    std::uint32_t lastTick_ = 0;
    std::uint8_t runningStatus_ = 0;
    bool isRunning_ = false;
};

} // namespace

MIDIData buildSong(std::string_view text) {
    return SongBuilder(text).run();
}

} // namespace tambrel::EventText
