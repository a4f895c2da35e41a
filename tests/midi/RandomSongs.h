#pragma once

#include "MIDIStatus.h"
#include "SMFBuilder.h"

#include <random>

namespace tambrel::testing {

/// Makes small songs and clips, of varied shape and at the edges of what is allowed, and damages them. The
/// same seed gives the same ones.
class RandomSongs {
public:
    explicit RandomSongs(std::uint32_t seed) : engine_(seed) {}

    [[nodiscard]] int upTo(int largest) { return std::uniform_int_distribution(0, largest)(engine_); }

    /// Notes, other channel messages, running status, meta and system-exclusive events, now and then a
    /// defect.
    [[nodiscard]] Bytes next() {
        const int shape = upTo(4);
        const int division = upTo(9) == 0   ? timeCodeDivision(25, upTo(255))
                             : upTo(9) == 0 ? upTo(0x7FFF)
                                            : upTo(60);
        gap_ = 2 * std::max(division & (division > 0x7FFF ? 0xFF : 0x7FFF), 1);
        std::vector<TrackBuilder> tracks(static_cast<std::size_t>(1 + upTo(6)));
        for (TrackBuilder& track : tracks)
            fill(track, shape);
        const int declared = static_cast<int>(tracks.size()) + (upTo(9) == 0 ? upTo(4) - 1 : 0);
        return smfBytes(upTo(19) == 0 ? 2 : upTo(1), division, tracks, declared);
    }

    /// The bytes of a track that is more defect than music.
    [[nodiscard]] Bytes track() {
        Bytes bytes(static_cast<std::size_t>(upTo(60)));
        for (std::uint8_t& byte : bytes)
            byte = oddByte();
        return bytes;
    }

    /// The same with one to three faults: a byte changed, left out or put in, or the end cut off.
    [[nodiscard]] Bytes damaged(Bytes file) {
        for (int faults = upTo(2); faults >= 0 && !file.empty(); --faults) {
            const int size = static_cast<int>(file.size());
            const auto at = file.begin() + upTo(upTo(2) == 0 ? std::min(size - 1, 24) : size - 1);
            const int kind = upTo(9);
            if (kind == 0)
                file.erase(at, file.end());
            else if (kind == 1)
                file.erase(at);
            else if (kind == 2)
                file.insert(at, oddByte());
            else
                *at = kind < 6 ? oddByte() : static_cast<std::uint8_t>(*at ^ 1 << upTo(7));
        }
        return file;
    }

    /// Packets of every kind, most of them playable.
    [[nodiscard]] Bytes clip() {
        constexpr std::uint32_t others[] = {0x00400000, 0x00400001, 0x004FFFFF, 0x00300060, 0x00300000,
                                            0x00000000, 0x38FFFF00, 0xD0100000, 0xD5100001, 0xD0100000,
                                            0xD0100001, 0xD0100002, 0xD0100100, 0xD0500000, 0xD0000001,
                                            0xF0200000, 0xF0200000, 0xF0210000, 0x10F80000, 0xF0000000};
        constexpr std::uint32_t seconds[] = {0,          50,         99,         100,        60'000'099,
                                             0x01FF0000, 0x02000000, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF,
                                             0x03020800, 0x04070600, 0x04080800, 0x00020800, 1'677'721'499};
        constexpr int furtherWords[] = {0, 0, 0, 1, 1, 3, 0, 0, 1, 1, 1, 2, 2, 3, 3, 3};
        const auto any = [this] { return static_cast<std::uint32_t>(engine_()); };
        const bool isStrange = upTo(5) == 0;
        std::vector<std::uint32_t> words;
        for (int remaining = upTo(30); remaining > 0; --remaining) {
            const auto kind = static_cast<std::uint32_t>(isStrange ? upTo(15) : 8 + upTo(6));
            const std::uint32_t message =
                (upTo(1) == 0 ? 0x20000000 : 0x40000000) | kind << 20 | (any() & 0x0F03FFFF);
            words.push_back(isStrange && upTo(4) == 0 ? any() : upTo(1) == 0 ? message : one(others));
            for (int further = furtherWords[words.back() >> 28]; further > 0; --further) {
                const bool isBare = words.back() >> 28 == 0xF || words.back() == 0;
                words.push_back(isBare && upTo(9) > 0 ? 0 : upTo(2) == 0 ? any() : one(seconds));
            }
        }
        return clipBytes(words);
    }

private:
    template<class T, std::size_t count>
    [[nodiscard]] const T& one(const T (&values)[count]) {
        return values[static_cast<std::size_t>(upTo(static_cast<int>(count) - 1))];
    }
    [[nodiscard]] std::uint8_t oddByte() {
        const int bytes[] = {0,    0,    0,    1,    2,    3,    0x2F, 0x40, 0x7F, 0x80, 0x81, 0x90,     0x99,
                             0xC3, 0xD0, 0xE0, 0xF0, 0xF1, 0xF6, 0xF7, 0xF8, 0xFE, 0xFF, 0xFF, upTo(255)};
        return static_cast<std::uint8_t>(one(bytes));
    }

    void fill(TrackBuilder& track, int shape) {
        for (int remaining = upTo(40); remaining > 0; --remaining)
            append(track, delta(shape));
        if (upTo(9) == 0)
            track.raw({upTo(255), upTo(255), upTo(255)});
        if (upTo(1) == 0)
            track.endOfTrack(delta(shape));
    }

    // Short, long, the longest, or just enough to part two phrases.
    [[nodiscard]] std::uint32_t delta(int shape) {
        const int largest[] = {0, 3, 200, 0x0FFFFFFF, gap_ + upTo(2) - 1};
        if (shape == 3 && upTo(3) == 0)
            return 0xFFFFF + static_cast<std::uint32_t>(upTo(1)); // The longest clockstamp of a clip.
        return static_cast<std::uint32_t>(upTo(2) == 0 ? 0 : shape == 4 ? largest[4] : upTo(largest[shape]));
    }

    void append(TrackBuilder& track, std::uint32_t delta) {
        const int channel = upTo(2) == 0 ? 9 : upTo(15);
        const int kind = upTo(11);
        const auto byte = [this](int largest = 255) { return static_cast<std::uint8_t>(upTo(largest)); };
        if (kind == 0)
            track.noteOff(delta, channel, upTo(127)).channelPressure(0, channel, upTo(127));
        else if (kind == 1)
            track.control(delta, channel, upTo(127), upTo(127)).sysex(0, {1, 2, 0xF7});
        else if (kind == 2)
            track.program(delta, channel, 30 + upTo(11)).raw({0, 30 + upTo(11)});
        else if (kind == 3)
            track.meta(delta, MetaType::setTempo,
                       one({Bytes{1, 2}, {byte(1), byte(1), byte(1)}, {9, 9, 9, 9}}));
        else if (kind == 4)
            track.meta(delta, MetaType::keySignature,
                       one({Bytes{byte()}, {byte(), byte(2)}, {byte(7), 1, 0}}));
        else if (kind <= 6)
            track.name(delta, one({"Fretless Bass", "BASSOON", "my Drumline", "Grosse Percussion é", "Flute",
                                   "Bas Drm", "Bass \xE9", "\xFF", "", "pERc"}));
        else if (kind == 7)
            track.meta(delta, 4, {'b', 'a', 's', 's'}).endOfTrack();
        else
            track.noteOn(delta, channel, upTo(127), upTo(127)).raw({upTo(9), upTo(127), upTo(2)});
    }

    std::mt19937 engine_;
    int gap_ = 2; // Two quarter notes, in ticks.
};

} // namespace tambrel::testing
