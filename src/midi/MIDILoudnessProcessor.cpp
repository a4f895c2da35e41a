#include "MIDILoudnessProcessor.h"

#include "LowerCase.h"
#include "SMFHeader.h"
#include "SMFTrackEventWalker.h"
#include "UTF8.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tambrel::MIDILoudnessProcessor {
namespace {

constexpr std::uint8_t fullVelocity = 127;
constexpr std::uint8_t percussionChannel = 9;

bool isBass(std::uint8_t program) {
    return program >= 32 && program <= 39; // The bass family of General MIDI.
}

bool namesDrumsOrBass(std::string_view trackName) {
    std::string name(trackName);
    // The words sought are ASCII.
    std::ranges::transform(name, name.begin(), lowerCased);
    constexpr std::array<std::string_view, 3> words{"bass", "drum", "perc"};
    return std::ranges::any_of(words,
                               [&](std::string_view word) { return name.find(word) != std::string::npos; });
}

/// What one track has said so far about the notes that follow.
class TrackParts {
public:
    void changeProgram(std::uint8_t channel, std::uint8_t program) { programs_[channel] = program; }

    void rename(std::string_view trackName) {
        if (UTF8::isValid(trackName))
            nameMatches_ = namesDrumsOrBass(trackName);
    }

    [[nodiscard]] bool shouldBoost(std::uint8_t channel) const {
        return channel == percussionChannel || nameMatches_ || isBass(programs_[channel]);
    }

private:
    static constexpr std::uint8_t unknown = 0xFF;
    std::array<std::uint8_t, 16> programs_ = [] {
        std::array<std::uint8_t, 16> programs;
        programs.fill(unknown);
        return programs;
    }();
    bool nameMatches_ = false;
};

void boostTrack(Bytes& output, ByteView original, const SMFTrackChunk& track) {
    TrackParts parts;
    SMFTrackEventWalker::walk(
        original, track, SMFMalformedEventPolicy::stop, [&](const SMFTimedTrackEvent& event) {
            const std::size_t data = event.dataStart;
            const std::uint8_t kind = MIDIStatus::kind(event.status);
            const std::uint8_t channel = MIDIStatus::channel(event.status);
            if (kind == MIDIStatus::noteOn) {
                if (original[data + 1] != 0 && parts.shouldBoost(channel))
                    output[data + 1] = fullVelocity;
            } else if (kind == MIDIStatus::programChange) {
                parts.changeProgram(channel, original[data]);
            } else if (event.status == MIDIStatus::meta && event.metaType == MetaType::trackName) {
                const ByteView name = event.payload(original);
                parts.rename({reinterpret_cast<const char*>(name.data()), name.size()});
            }
            return SMFTrackWalkDecision::continue_;
        });
}

} // namespace

MIDIData boostedDrumsAndBass(const MIDIData& data) {
    const ByteView original = data;
    const auto header = SMFHeader::read(original);
    if (!header)
        return data;
    const auto tracks = SMFTrackEventWalker::trackChunks(original, header->trackCount);
    if (tracks.empty())
        return data;
    Bytes output(original.begin(), original.end());
    for (const SMFTrackChunk& track : tracks)
        boostTrack(output, original, track);
    return MIDIData(std::move(output));
}

} // namespace tambrel::MIDILoudnessProcessor
