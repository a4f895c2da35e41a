#include "SongCheck.h"

#include "EventText.h"
#include "MIDI2Clip.h"
#include "MIDI2ClipImporter.h"
#include "SMFDefect.h"
#include "SMFHeader.h"
#include "SMFTrackEventWalker.h"

#include <algorithm>
#include <array>
#include <limits>

namespace tambrel {
namespace {

constexpr std::size_t chunkHeaderSize = 8;

/// Checks the events of one track.
class TrackCheck {
public:
    TrackCheck(ByteView data, std::size_t number, std::vector<SongFinding>& findings)
        : data_(data), number_(number), findings_(findings) {
        noteStarts_.fill(notSounding);
    }

    void run(std::size_t start, std::size_t end) {
        next_ = start;
        SMFTrackEventWalker::walkTrack(data_, start, end, SMFMalformedEventPolicy::stop,
                                       [this](const SMFTimedTrackEvent& event) {
                                           take(event);
                                           return SMFTrackWalkDecision::continue_;
                                       });
        if (next_ != end) {
            const SMFDefect defect = defectOfEvent(data_, next_, end, hasRunningStatus_);
            report(defect.position, "unreadable-event",
                   defect.reason + " The rest of the track cannot be read.");
        } else if (!hasEnded_) {
            report(end, "no-end-of-track", "The track does not end with End of Track.");
        }
        for (const std::size_t noteAt : noteStarts_) {
            if (noteAt != notSounding)
                report(noteAt, "endless-note", "The note that begins here never ends.");
        }
    }

private:
    static constexpr std::size_t notSounding = std::numeric_limits<std::size_t>::max();

    void report(std::size_t position, std::string_view kind, std::string explanation) {
        findings_.push_back({position, number_, kind, std::move(explanation)});
    }

    void take(const SMFTimedTrackEvent& event) {
        if (hasEnded_ && !hasReportedEnd_) {
            hasReportedEnd_ = true;
            report(next_, "events-after-end", "There are events after End of Track.");
        }
        if (MIDIStatus::isChannelMessage(event.status))
            takeChannelMessage(event);
        else if (event.status == MIDIStatus::meta)
            takeMeta(event);
        hasRunningStatus_ = MIDIStatus::isChannelMessage(event.status);
        next_ = event.dataEnd;
    }

    void takeChannelMessage(const SMFTimedTrackEvent& event) {
        for (std::size_t at = event.dataStart; at < event.dataEnd; ++at) {
            if (data_[at] >= 0x80) {
                report(at, "data-byte", "A data byte of a message is above 127.");
                return;
            }
        }
        const std::uint8_t kind = MIDIStatus::kind(event.status);
        if (kind != MIDIStatus::noteOn && kind != MIDIStatus::noteOff)
            return;
        const auto at = event.dataStart;
        std::size_t& start = noteStarts_[MIDIStatus::channel(event.status) * std::size_t{128} + data_[at]];
        const bool begins = kind == MIDIStatus::noteOn && data_[at + 1] != 0;
        start = begins ? next_ : notSounding;
    }

    void takeMeta(const SMFTimedTrackEvent& event) {
        const auto payload = event.payload(data_);
        switch (event.metaType) {
        case MetaType::endOfTrack:
            hasEnded_ = true;
            break;
        case MetaType::setTempo:
            if (requireSize(payload, 3, "tempo") && payload[0] == 0 && payload[1] == 0 && payload[2] == 0)
                report(next_, "tempo-zero", "A tempo of 0 microseconds is no tempo; it is ignored.");
            break;
        case MetaType::timeSignature:
            if (requireSize(payload, 4, "time signature") && (payload[0] == 0 || payload[1] > 7))
                report(next_, "time-signature", "The time signature cannot be played in.");
            break;
        case MetaType::keySignature:
            if (requireSize(payload, 2, "key signature") &&
                (std::abs(static_cast<std::int8_t>(payload[0])) > 7 || payload[1] > 1))
                report(next_, "key-signature",
                       "There is no key with so many sharps or flats, or of this mode.");
            break;
        default:
            break;
        }
    }

    bool requireSize(ByteView payload, std::size_t size, const char* what) {
        if (payload.size() != size)
            report(next_, "event-size",
                   std::string("A ") + what + " has " + std::to_string(size) + " bytes, this one " +
                       std::to_string(payload.size()) + ".");
        return payload.size() == size;
    }

    ByteView data_;
    std::size_t number_;
    std::vector<SongFinding>& findings_;
    std::array<std::size_t, std::size_t{16} * 128> noteStarts_{}; // Where a sounding note began.
    std::size_t next_ = 0;
    bool hasEnded_ = false;
    bool hasReportedEnd_ = false;
    bool hasRunningStatus_ = false;
};

/// Checks the chunks of a file.
class FileCheck {
public:
    explicit FileCheck(ByteView data) : data_(data) {}

    std::vector<SongFinding> run() {
        if (!SMFByteCodec::hasChunkType(data_, 0, "MThd") || data_.size() < SMFHeader::size) {
            report(0, "no-header", "There is no header of a Standard MIDI File.");
            return std::move(findings_);
        }
        const std::size_t header = SMFByteCodec::readU32(data_, 4);
        if (header != 6)
            report(4, "header-length", "The header has " + std::to_string(header) + " bytes instead of 6.");
        checkHeader();
        checkChunks(header < 6 ? SMFHeader::size : chunkHeaderSize + header);
        std::ranges::stable_sort(findings_, {}, &SongFinding::position);
        return std::move(findings_);
    }

private:
    void report(std::size_t position, std::string_view kind, std::string explanation) {
        findings_.push_back({position, 0, kind, std::move(explanation)});
    }

    void checkHeader() {
        const std::uint16_t format = SMFByteCodec::readU16(data_, 8);
        declared_ = SMFByteCodec::readU16(data_, 10);
        const std::uint16_t division = SMFByteCodec::readU16(data_, 12);
        if (format > 2)
            report(8, "format", "There is no format " + std::to_string(format) + ".");
        if (declared_ == 0)
            report(10, "no-tracks", "The header declares no tracks.");
        if (format == 0 && declared_ > 1)
            report(10, "format", "A file of format 0 has one track only.");
        const bool isTimeCode = (division & 0x8000) != 0;
        const int frames = 256 - (division >> 8);
        if (isTimeCode && frames != 24 && frames != 25 && frames != 29 && frames != 30)
            report(12, "division",
                   "There is no time code of " + std::to_string(frames) + " frames a second.");
        if ((isTimeCode ? division & 0xFF : division) == 0)
            report(12, "division", "The division is 0, so that no time ever passes.");
    }

    void checkChunks(std::size_t position) {
        std::size_t tracks = 0;
        for (; position + chunkHeaderSize <= data_.size();) {
            const bool isTrack = SMFByteCodec::hasChunkType(data_, position, "MTrk");
            if (!isTrack && tracks == declared_)
                break;
            const std::size_t start = position + chunkHeaderSize;
            const std::size_t end = start + SMFByteCodec::readU32(data_, position + 4);
            if (!isTrack) {
                report(position, "foreign-chunk",
                       "This chunk is no track. Many programs, Tambrel among "
                       "them, read no tracks behind it.");
            } else if (++tracks == declared_ + 1) {
                report(position, "undeclared-track",
                       "The header declares only " + std::to_string(declared_) +
                           " tracks; this one is not played.");
            }
            if (end > data_.size()) {
                report(position + 4, "cut-off",
                       "The chunk should have " + std::to_string(end - start) + " bytes, but the file ends " +
                           std::to_string(end - data_.size()) + " before that.");
            }
            if (isTrack)
                TrackCheck(data_, tracks, findings_).run(start, std::min(end, data_.size()));
            position = end;
        }
        if (position < data_.size())
            report(position, "trailing-data",
                   std::to_string(data_.size() - position) + " bytes follow the last track.");
        if (tracks < declared_)
            report(10, "missing-tracks",
                   "The header declares " + std::to_string(declared_) + " tracks, of which there are " +
                       std::to_string(tracks) + ".");
    }

    ByteView data_;
    std::size_t declared_ = 0;
    std::vector<SongFinding> findings_;
};

std::vector<SongFinding> checkClip(ByteView data) {
    try {
        static_cast<void>(EventText::dump(data));
        static_cast<void>(MIDI2ClipImporter::importPlayableSMF(data));
    } catch (const EventText::Error& error) {
        return {{error.position, 0, "cut-off", error.reason}};
    } catch (const MIDI2ClipImportError& error) {
        return {{0, 0, "unplayable", error.description()}};
    }
    return {};
}

} // namespace

std::vector<SongFinding> checkSong(ByteView data) {
    return MIDI2Clip::hasSignature(data) ? checkClip(data) : FileCheck(data).run();
}

} // namespace tambrel
