#include "EventNames.h"
#include "EventText.h"
#include "EventTextParts.h"
#include "SMFDefect.h"
#include "SMFHeader.h"
#include "SMFTrackEventWalker.h"
#include "TextWriter.h"

namespace tambrel::EventText {
namespace {

ByteView part(ByteView data, std::size_t from, std::size_t to) {
    return data.subspan(from, to - from);
}

/// Writes the events of one track.
class TrackDumper {
public:
    TrackDumper(ByteView data, std::size_t start, std::size_t end, TextWriter& out)
        : data_(data), next_(start), end_(end), out_(out) {}

    void run() {
        SMFTrackEventWalker::walkTrack(data_, next_, end_, SMFMalformedEventPolicy::stop,
                                       [this](const SMFTimedTrackEvent& event) {
                                           dump(event);
                                           return SMFTrackWalkDecision::continue_;
                                       });
        if (next_ == end_)
            return;
        const SMFDefect defect = defectOfEvent(data_, next_, end_, hasRunningStatus_);
        fail(defect.position, defect.reason);
    }

private:
    void dump(const SMFTimedTrackEvent& event) {
        const std::size_t statusAt = quantityEnd(next_);
        const bool isRunning = data_[statusAt] < 0x80;
        out_.number(event.tick);
        noteOddLength(event.tick - lastTick_, statusAt - next_);
        if (isRunning)
            out_.joined('~');
        if (MIDIStatus::isChannelMessage(event.status))
            dumpChannelMessage(event);
        else
            dumpPayload(event, statusAt + (event.status == MIDIStatus::meta ? 2 : 1));
        out_.endLine();
        hasRunningStatus_ = MIDIStatus::isChannelMessage(event.status);
        lastTick_ = event.tick;
        next_ = event.dataEnd;
    }

    [[nodiscard]] std::size_t quantityEnd(std::size_t position) const {
        while (data_[position] >= 0x80)
            ++position;
        return position + 1;
    }

    // Writes the count of bytes of a quantity that is not the shortest.
    void noteOddLength(std::uint32_t value, std::size_t bytes) {
        if (bytes == quantityLength(value))
            return;
        out_.joined('/');
        out_.joinedNumber(static_cast<std::int64_t>(bytes));
    }

    void dumpChannelMessage(const SMFTimedTrackEvent& event) {
        const std::uint8_t data1 = data_[event.dataStart];
        const std::uint8_t data2 = data_[event.dataEnd - 1];
        if (data1 >= 0x80 || data2 >= 0x80)
            fail(data1 >= 0x80 ? event.dataStart : event.dataEnd - 1, "A data byte is above 127.");
        writeChannelMessage(event.status, data1, data2, out_,
                            [&] { out_.number(MIDIStatus::channel(event.status) + 1); });
    }

    void dumpPayload(const SMFTimedTrackEvent& event, std::size_t lengthAt) {
        const ByteView payload = event.payload(data_);
        const auto named = [&](std::string_view name) {
            out_.word(name);
            noteOddLength(static_cast<std::uint32_t>(payload.size()), event.dataStart - lengthAt);
        };
        if (event.status == MIDIStatus::meta) {
            dumpMeta(event.metaType, payload, named);
        } else {
            named(event.status == MIDIStatus::systemExclusive ? "sysex" : "escape");
            out_.hex(payload);
        }
    }

    template<class Named>
    void dumpMeta(std::uint8_t type, ByteView payload, Named named) {
        if (type >= 1 && type <= textNames.size()) {
            named(textNames[type - 1U]);
            out_.quoted(payload);
        } else if (type == MetaType::endOfTrack && payload.empty()) {
            named("end");
        } else if (type == MetaType::setTempo && payload.size() == 3) {
            named("tempo");
            out_.number(payload[0] << 16 | payload[1] << 8 | payload[2]);
        } else if (type == MetaType::timeSignature && payload.size() == 4 && payload[1] < 8) {
            named("time");
            out_.number(payload[0]);
            out_.joined('/');
            out_.joinedNumber(1 << payload[1]);
            out_.number(payload[2]);
            out_.number(payload[3]);
        } else if (type == MetaType::keySignature && payload.size() == 2 && payload[1] <= 1) {
            named("key");
            out_.number(static_cast<std::int8_t>(payload[0]));
            out_.word(payload[1] == 1 ? "minor" : "major");
        } else {
            named("meta");
            out_.hex(ByteView(&type, 1));
            out_.hex(payload);
        }
    }

    ByteView data_;
    std::size_t next_; // Where the next event begins.
    std::size_t end_;
    TextWriter& out_;
    std::uint32_t lastTick_ = 0;
    bool hasRunningStatus_ = false;
};

/// Writes the chunks of a file.
class FileDumper {
public:
    explicit FileDumper(ByteView data) : data_(data), out_(data.size() * 6 + 64) {}

    std::string run() {
        std::size_t position = dumpHeader();
        while (isWholeChunk(position))
            position = SMFByteCodec::hasChunkType(data_, position, "MTrk") ? dumpTrack(position)
                                                                           : dumpChunk(position);
        if (position < size() && SMFByteCodec::hasChunkType(data_, position, "MTrk"))
            fail(position, "A track is cut off.");
        if (position < size()) {
            out_.word("rest");
            out_.hex(part(data_, position, size()));
            out_.endLine();
        }
        return out_.take();
    }

private:
    static constexpr std::size_t chunkHeaderSize = 8;

    [[nodiscard]] std::size_t size() const { return data_.size(); }

    [[nodiscard]] std::size_t chunkEnd(std::size_t position) const {
        return position + chunkHeaderSize + SMFByteCodec::readU32(data_, position + 4);
    }
    [[nodiscard]] bool isWholeChunk(std::size_t position) const {
        return position + chunkHeaderSize <= size() && chunkEnd(position) <= size();
    }

    std::size_t dumpHeader() {
        if (!SMFByteCodec::hasChunkType(data_, 0, "MThd") || size() < SMFHeader::size)
            fail(0, "There is neither the header of a Standard MIDI File nor that of a clip.");
        if (!isWholeChunk(0) || chunkEnd(0) < SMFHeader::size)
            fail(4, "The length of the header is wrong.");
        const std::uint16_t division = SMFByteCodec::readU16(data_, 12);
        out_.word(songWord);
        out_.number(SMFByteCodec::readU16(data_, 8));
        out_.number(SMFByteCodec::readU16(data_, 10));
        if ((division & 0x8000) == 0) {
            out_.number(division);
        } else {
            out_.number(256 - (division >> 8));
            out_.joined('/');
            out_.joinedNumber(division & 0xFF);
        }
        out_.hex(part(data_, SMFHeader::size, chunkEnd(0)));
        out_.endLine();
        return chunkEnd(0);
    }

    std::size_t dumpTrack(std::size_t position) {
        out_.word("track");
        out_.endLine();
        TrackDumper(data_, position + chunkHeaderSize, chunkEnd(position), out_).run();
        return chunkEnd(position);
    }

    std::size_t dumpChunk(std::size_t position) {
        out_.word("chunk");
        out_.quoted(data_.subspan(position, 4));
        out_.hex(part(data_, position + chunkHeaderSize, chunkEnd(position)));
        out_.endLine();
        return chunkEnd(position);
    }

    ByteView data_;
    TextWriter out_;
};

} // namespace

std::string dumpSong(ByteView data) {
    return FileDumper(data).run();
}

} // namespace tambrel::EventText
