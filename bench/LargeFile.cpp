#include "LargeFile.h"

#include "MIDIStatus.h"
#include "SMFByteCodec.h"

#include <algorithm>
#include <cassert>
#include <initializer_list>
#include <random>
#include <string_view>
#include <utility>

namespace tambrel::bench {
namespace {

constexpr std::uint16_t ticksPerQuarter = 480;

// The standard fixes the numbers of this engine, but not those of its own distributions.
class Dice {
public:
    explicit Dice(std::uint32_t seed) : engine_(seed) {}

    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(engine_() >> 8) % limit; }
    std::uint8_t dataByte() { return static_cast<std::uint8_t>(below(128)); }
    bool oneIn(std::uint32_t chances) { return below(chances) == 0; }

private:
    std::minstd_rand engine_;
};

class TrackWriter {
public:
    explicit TrackWriter(Bytes& file) : file_(file), start_(file.size()) {
        append("MTrk");
        SMFByteCodec::appendU32(0, file_);
    }

    void channelEvent(std::uint32_t delta, std::uint8_t status, std::initializer_list<std::uint8_t> data) {
        SMFByteCodec::appendVarLen(delta, file_);
        if (std::exchange(runningStatus_, status) != status)
            file_.push_back(status);
        file_.insert(file_.end(), data);
    }

    void meta(std::uint32_t delta, std::uint8_t type, std::initializer_list<std::uint8_t> payload) {
        SMFByteCodec::appendVarLen(delta, file_);
        file_.insert(file_.end(), {MIDIStatus::meta, type});
        appendPayload(payload);
    }

    void systemExclusive(std::uint32_t delta, std::initializer_list<std::uint8_t> payload) {
        SMFByteCodec::appendVarLen(delta, file_);
        file_.push_back(MIDIStatus::systemExclusive);
        appendPayload(payload);
    }

    void finish() {
        meta(0, MetaType::endOfTrack, {});
        Bytes length;
        SMFByteCodec::appendU32(static_cast<std::uint32_t>(size() - 8), length);
        std::ranges::copy(length, file_.begin() + static_cast<std::ptrdiff_t>(start_) + 4);
    }

    [[nodiscard]] std::size_t size() const { return file_.size() - start_; }

private:
    void append(std::string_view text) { file_.insert(file_.end(), text.begin(), text.end()); }

    void appendPayload(std::initializer_list<std::uint8_t> payload) {
        SMFByteCodec::appendVarLen(static_cast<std::uint32_t>(payload.size()), file_);
        file_.insert(file_.end(), payload);
        runningStatus_ = 0;
    }

    Bytes& file_;
    std::size_t start_;
    std::uint8_t runningStatus_ = 0;
};

void writeConductor(Bytes& file, Dice& dice) {
    constexpr int tempoChanges = 200;
    TrackWriter track(file);
    track.meta(0, MetaType::timeSignature, {4, 2, 24, 8});
    track.meta(0, MetaType::keySignature, {2, 0});
    for (int i = 0; i < tempoChanges; ++i)
        track.meta(i == 0 ? 0 : 4 * ticksPerQuarter, MetaType::setTempo,
                   {7, dice.dataByte(), dice.dataByte()});
    track.finish();
}

// One to four notes struck together and let go together: note-ons of velocity 0 keep the running status.
void writeChord(TrackWriter& track, Dice& dice, std::uint8_t channel, Density density) {
    const std::uint32_t beat = density == Density::song ? ticksPerQuarter : ticksPerQuarter / 16;
    const std::uint32_t longRest = 10 * beat;
    const auto status = static_cast<std::uint8_t>(MIDIStatus::noteOn | channel);
    const std::uint8_t root = static_cast<std::uint8_t>(36 + dice.below(48));
    const std::uint32_t noteCount = 1 + dice.below(4);
    for (std::uint32_t i = 0; i < noteCount; ++i) {
        const std::uint32_t rest = dice.oneIn(200) ? longRest : dice.below(beat);
        track.channelEvent(
            i == 0 ? rest : dice.below(4), status,
            {static_cast<std::uint8_t>(root + 4 * i), static_cast<std::uint8_t>(1 + dice.below(127))});
    }
    const std::uint32_t length = beat * (1 + dice.below(8)) / 4 - beat / 48;
    for (std::uint32_t i = 0; i < noteCount; ++i)
        track.channelEvent(i == 0 ? length : dice.below(4), status,
                           {static_cast<std::uint8_t>(root + 4 * i), 0});
}

void writeExpression(TrackWriter& track, Dice& dice, std::uint8_t channel) {
    const auto of = [channel](std::uint8_t kind) { return static_cast<std::uint8_t>(kind | channel); };
    const std::uint32_t delta = dice.below(40);
    if (dice.oneIn(40))
        track.channelEvent(delta, of(MIDIStatus::programChange), {dice.dataByte()});
    else if (dice.oneIn(40))
        track.systemExclusive(delta, {0x7E, 0x7F, 0x09, 0x01, 0xF7});
    else if (dice.oneIn(40))
        track.meta(delta, MetaType::trackName, {'B', 'u', 's', 'y'});
    else if (dice.oneIn(2))
        track.channelEvent(delta, of(MIDIStatus::controlChange), {11, dice.dataByte()});
    else
        track.channelEvent(delta, of(MIDIStatus::pitchBend), {dice.dataByte(), dice.dataByte()});
}

void writePart(Bytes& file, Dice& dice, int index, std::size_t size, Density density) {
    constexpr std::size_t endOfTrackSize = 4;
    const auto channel = static_cast<std::uint8_t>(index % 16);
    TrackWriter track(file);
    while (track.size() + endOfTrackSize < size) {
        writeChord(track, dice, channel, density);
        if (dice.oneIn(2))
            writeExpression(track, dice, channel);
    }
    track.finish();
}

} // namespace

Bytes largeFile(std::size_t size, int trackCount, Density density) {
    assert(trackCount >= 2 && trackCount <= 0xFFFF);
    Dice dice(20);
    Bytes file{'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 1};
    file.reserve(size + 1024);
    SMFByteCodec::appendU16(static_cast<std::uint16_t>(trackCount), file);
    SMFByteCodec::appendU16(ticksPerQuarter, file);
    writeConductor(file, dice);
    for (int index = 1; index < trackCount; ++index) {
        const auto remainingTracks = static_cast<std::size_t>(trackCount - index);
        writePart(file, dice, index, size > file.size() ? (size - file.size()) / remainingTracks : 0,
                  density);
    }
    return file;
}

} // namespace tambrel::bench
