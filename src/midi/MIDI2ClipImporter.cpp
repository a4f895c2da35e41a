#include "MIDI2ClipImporter.h"

#include "MIDI2Clip.h"
#include "MIDI2ClipContent.h"
#include "MIDIDataWriter.h"
#include "MIDIStatus.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>
#include <utility>

namespace tambrel::MIDI2ClipImporter {
namespace {

/// Writes the tracks of a Standard MIDI File of format 1 one after another.
class SMFWriter {
public:
    SMFWriter(std::size_t expectedSize, std::int64_t trackCount, std::uint16_t ticksPerQuarterNote)
        : out_(expectedSize) {
        appendText("MThd");
        out_.appendU32(6);
        out_.appendU16(1);
        out_.appendU16(static_cast<std::uint16_t>(trackCount));
        out_.appendU16(ticksPerQuarterNote);
    }

    template<class Events>
    void appendTrack(std::string_view name, Events& events) {
        appendText("MTrk");
        const std::size_t lengthAt = out_.size();
        out_.appendU32(0);
        if (!name.empty())
            appendName(name);
        appendEvents(events);
        appendDeltaAndMeta(MetaType::endOfTrack, 0);
        out_.overwriteU32(lengthAt, static_cast<std::uint32_t>(out_.size() - lengthAt - 4));
    }

    [[nodiscard]] MIDIData finish() { return out_.finish(); }

private:
    void appendText(std::string_view text) {
        out_.append({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }

    void appendDeltaAndMeta(std::uint8_t type, std::size_t length) {
        out_.append(std::array<std::uint8_t, 3>{0, MIDIStatus::meta, type});
        out_.appendVarLen(static_cast<std::uint32_t>(length));
    }

    void appendName(std::string_view name) {
        appendDeltaAndMeta(MetaType::trackName, name.size());
        appendText(name);
    }

    void append(const TimedEvent& event) {
        out_.append(std::bit_cast<std::array<std::uint8_t, 4>>(event.message), event.message.size());
    }
    void append(const TimedMetaEvent& event) { out_.append(event.bytes, event.size); }

    template<class Events>
    void appendEvents(Events& events) {
        // Time goes back only in a clip that starts twice or goes on after its end.
        using Event = typename Events::value_type;
        if (!std::ranges::is_sorted(events, {}, &Event::tick))
            std::ranges::stable_sort(events, {}, &Event::tick);
        std::uint32_t lastTick = 0;
        for (const Event& event : events) {
            out_.appendVarLen(event.tick - lastTick);
            append(event);
            lastTick = event.tick;
        }
    }

    MIDIDataWriter out_;
};

MIDIData buildSMF(MIDI2ClipContent& content) {
    constexpr std::size_t sizeOfFrames = 64 * (TrackKey::count + 1);
    const MIDI2ClipImportSummary& summary = content.summary;
    // A delta of up to five bytes is possible, one or two are usual.
    const auto expectedSize = sizeOfFrames + static_cast<std::size_t>(summary.importedPackets) * 5;
    SMFWriter writer(expectedSize, summary.trackCount + 1, summary.ticksPerQuarterNote);
    writer.appendTrack({}, content.conductor);
    for (std::size_t i = 0; i < content.tracks.size(); ++i) {
        if (!content.tracks[i].empty())
            writer.appendTrack(TrackKey::at(i).trackName(), content.tracks[i]);
    }
    return writer.finish();
}

} // namespace

bool isMIDI2Clip(ByteView data) {
    return MIDI2Clip::hasSignature(data);
}

MIDI2ClipImportResult importPlayableSMF(ByteView clip) {
    MIDI2ClipContent content(clip);
    return {buildSMF(content), std::move(content.summary)};
}

} // namespace tambrel::MIDI2ClipImporter
