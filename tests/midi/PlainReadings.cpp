#include "PlainReadings.h"

#include <QByteArrayView>
#include <QString>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <sstream>

namespace tambrel::plain {
namespace {

std::uint64_t number(const Bytes& file, std::size_t at, std::size_t bytes) {
    std::uint64_t value = 0;
    for (; bytes > 0; --bytes)
        value = value * 256 + file.at(at++);
    return value;
}

std::string text(const Bytes& file, std::size_t start, std::size_t end) {
    return {file.begin() + static_cast<long>(start), file.begin() + static_cast<long>(end)};
}

void put(Bytes& file, std::string_view text) {
    file.insert(file.end(), text.begin(), text.end());
}

void put(Bytes& file, std::uint64_t value, std::size_t bytes) {
    for (; bytes > 0; --bytes)
        file.push_back(static_cast<std::uint8_t>(value >> (8 * (bytes - 1))));
}

void putQuantity(Bytes& file, std::uint64_t value) {
    for (std::uint64_t above : {1u << 28, 1u << 21, 1u << 14, 1u << 7}) {
        if (value >= above)
            file.push_back(static_cast<std::uint8_t>(value / above % 128 + 128));
    }
    file.push_back(static_cast<std::uint8_t>(value % 128));
}

std::optional<std::size_t> quantity(const Bytes& file, std::size_t& at, std::size_t end) {
    std::size_t value = 0;
    for (int i = 0; i < 4 && at < end; ++i) {
        const std::uint8_t byte = file[at++];
        value = value * 128 + byte % 128;
        if (byte < 128)
            return value;
    }
    return std::nullopt;
}

template<class... Values>
std::string printed(const char* format, Values... values) {
    return QString::asprintf(format, values...).toStdString();
}

std::string keyName(int sharps, bool minor) {
    std::istringstream tonics(minor ? "Ab Eb Bb F C G D A E B F# C# G# D# A#"
                                    : "Cb Gb Db Ab Eb Bb F C G D A E B F# C#");
    std::string tonic = "Unknown";
    for (int i = -7; i <= sharps && sharps <= 7; ++i)
        tonics >> tonic;
    return tonic + (minor ? " minor" : " major");
}

std::vector<MIDIPhrase> phrases(std::vector<std::uint64_t> ticks, double length, std::uint64_t gap) {
    std::ranges::sort(ticks);
    std::vector<MIDIPhrase> result;
    for (std::size_t first = 0, last = 0; first < ticks.size(); first = ++last) {
        while (last + 1 < ticks.size() && ticks[last + 1] - ticks[last] <= gap)
            ++last;
        const double start = static_cast<double>(ticks[first]) / length;
        const double end = static_cast<double>(ticks[last]) / length + 0.01;
        result.push_back({start, std::max(std::min(end, 1.0), start + 0.005)});
    }
    return result;
}

} // namespace

bool hasHeader(const Bytes& file) {
    return file.size() >= 14 && text(file, 0, 4) == "MThd" && number(file, 4, 4) == 6;
}

std::vector<Chunk> tracks(const Bytes& file) {
    std::vector<Chunk> chunks;
    std::size_t at = 14;
    while (chunks.size() < number(file, 10, 2) && at + 8 <= file.size() && text(file, at, at + 4) == "MTrk") {
        const std::size_t end = at + 8 + number(file, at + 4, 4);
        if (end > file.size())
            break;
        chunks.push_back({at + 8, end});
        at = end;
    }
    return chunks;
}

std::vector<Event> events(const Bytes& file, Chunk track, Defects defects) {
    std::vector<Event> result;
    std::uint64_t tick = 0;
    int running = 0;
    for (std::size_t at = track.start; at < track.end;) {
        const auto delta = quantity(file, at, track.end);
        if (!delta || at == track.end || tick + *delta > 0xFFFFFFFF)
            break;
        tick += *delta;
        int status = file[at];
        if (status >= 0x80) {
            ++at;
            running = status < 0xF0 ? status : 0;
        } else {
            status = running;
        }
        int type = 0;
        std::optional<std::size_t> length;
        if (status == 0xFF || status == 0xF0 || status == 0xF7) {
            if (status == 0xFF && at < track.end)
                type = file[at++];
            length = quantity(file, at, track.end);
            if (!length || *length > track.end - at)
                break;
        } else if (status >= 0x80 && status < 0xF0) {
            length = status / 16 == 0xC || status / 16 == 0xD ? 1 : 2;
        }
        if (length && at + *length <= track.end) {
            result.push_back({tick, status, type, at, at + *length});
            at += *length;
        } else if (defects == Defects::areSkipped) {
            ++at;
        } else {
            break;
        }
    }
    return result;
}

MIDIFileInfo facts(const Bytes& file) {
    MIDIFileInfo info;
    if (!hasHeader(file))
        return info;
    info.format = static_cast<std::uint16_t>(number(file, 8, 2));
    info.isSupportedFormat = info.format == 0 || info.format == 1;
    info.trackCount = info.displayTrackCount = static_cast<std::int64_t>(number(file, 10, 2));
    if (!info.isSupportedFormat)
        return info;
    const std::uint64_t division = number(file, 12, 2);
    const std::uint64_t quarter = std::max<std::uint64_t>(division < 0x8000 ? division : division % 256, 1);
    std::map<int, std::vector<std::uint64_t>> ofTracks, ofChannels;
    std::uint64_t length = 0;
    int track = 0;
    for (const Chunk chunk : tracks(file)) {
        ++track;
        for (const Event& event : events(file, chunk, Defects::endTheTrack)) {
            length = std::max(length, event.tick);
            const std::size_t size = event.end - event.start;
            if (event.status / 16 == 9 && file[event.start + 1] > 0) {
                ofTracks[track].push_back(event.tick);
                ofChannels[event.status % 16].push_back(event.tick);
            } else if (event.metaType == 0x51 && size >= 3 && !info.tempoBPM) {
                if (const auto microseconds = number(file, event.start, 3))
                    info.tempoBPM = 60e6 / static_cast<double>(microseconds);
            } else if (event.metaType == 0x59 && size >= 2 && !info.keySignature) {
                info.keySignature =
                    keyName(static_cast<std::int8_t>(file[event.start]), file[event.start + 1] == 1);
            }
        }
    }
    if (info.format == 0 && !ofChannels.empty()) {
        info.displayTrackCount = static_cast<std::int64_t>(ofChannels.size());
        info.wasExplodedFromFormat0 = ofChannels.size() >= 2;
        ofTracks.clear();
        for (auto& [channel, ticks] : ofChannels)
            ofTracks[static_cast<int>(ofTracks.size()) + 1] = ticks;
    }
    for (const auto& [label, ticks] : ofTracks) {
        if (length > 0)
            info.timelineLanes.push_back(
                {std::to_string(label), phrases(ticks, static_cast<double>(length), 2 * quarter)});
    }
    return info;
}

Bytes boosted(const Bytes& file) {
    Bytes result = file;
    if (!hasHeader(file))
        return result;
    for (const Chunk chunk : tracks(file)) {
        std::string name;
        std::map<int, int> programs;
        for (const Event& event : events(file, chunk, Defects::endTheTrack)) {
            const int channel = event.status % 16;
            if (event.status / 16 == 0xC)
                programs[channel] = file[event.start];
            if (const auto words = text(file, event.start, event.end);
                event.metaType == 3 &&
                QByteArrayView(words.data(), static_cast<qsizetype>(words.size())).isValidUtf8()) {
                name.clear();
                for (const char letter : words)
                    name += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
            }
            const auto named = [&](const char* word) { return name.find(word) != std::string::npos; };
            const bool isBass = programs.contains(channel) && programs[channel] / 8 == 4;
            if (event.status / 16 == 9 && file[event.start + 1] > 0 &&
                (channel == 9 || named("bass") || named("drum") || named("perc") || isBass))
                result[event.start + 1] = 127;
        }
    }
    return result;
}

Bytes companion(const Bytes& file) {
    Bytes clip;
    if (!hasHeader(file))
        return clip;
    struct Packet {
        std::uint64_t tick;
        std::uint64_t word;
    };
    std::vector<Packet> packets;
    for (const Chunk chunk : tracks(file)) {
        for (const Event& event : events(file, chunk, Defects::areSkipped)) {
            if (event.status < 0xF0) {
                const std::uint64_t second = event.end - event.start == 2 ? file[event.start + 1] : 0;
                packets.push_back({event.tick, 0x20000000 + static_cast<std::uint64_t>(event.status) * 65536 +
                                                   file[event.start] * std::uint64_t{256} + second});
            }
        }
    }
    std::ranges::stable_sort(packets, {}, &Packet::tick);
    const std::uint64_t division = number(file, 12, 2);
    put(clip, "SMF2CLIP");
    for (const std::uint64_t word :
         {std::uint64_t{0x400000},
          0x300000 + (division >= 0x8000 ? 480 : std::max<std::uint64_t>(division, 1)),
          std::uint64_t{0x400000}, std::uint64_t{0xF0200000}})
        put(clip, word, 4);
    std::uint64_t tick = 0;
    for (const Packet& packet : packets) {
        for (; packet.tick - tick >= 0x100000; tick += 0xFFFFF)
            put(clip, 0x004FFFFF00000000, 8);
        put(clip, 0x400000 + packet.tick - tick, 4);
        put(clip, packet.word, 4);
        tick = packet.tick;
    }
    put(clip, 0x00400000F0210000, 8);
    return clip;
}

MIDI2ClipBuildSummary summary(const Bytes& clip) {
    MIDI2ClipBuildSummary result{static_cast<std::int64_t>(clip.size()), 0, 0};
    if (clip.size() < 8 || text(clip, 0, 8) != "SMF2CLIP")
        return result;
    for (std::size_t at = 8; at + 4 <= clip.size(); at += 4) {
        ++result.umpWordCount;
        result.channelVoiceWordCount += clip[at] / 16 == 2 ? 1 : 0;
    }
    return result;
}

namespace {

struct Message {
    std::uint64_t tick;
    Bytes bytes;
};

void putTrack(Bytes& song, const std::string& name, std::vector<Message> messages) {
    std::ranges::stable_sort(messages, {}, &Message::tick);
    Bytes track;
    if (!name.empty()) {
        put(track, 0x00FF03, 3);
        putQuantity(track, name.size());
        put(track, name);
    }
    std::uint64_t tick = 0;
    for (const Message& message : messages) {
        putQuantity(track, message.tick - tick);
        track.insert(track.end(), message.bytes.begin(), message.bytes.end());
        tick = message.tick;
    }
    put(track, 0x00FF2F00, 4);
    put(song, "MTrk");
    put(song, track.size(), 4);
    song.insert(song.end(), track.begin(), track.end());
}

// The bytes of a MIDI 2.0 message at the resolution of MIDI 1.0; none when there is no such message.
Bytes midi1Bytes(std::uint32_t first, std::uint32_t second) {
    const auto status = static_cast<std::uint8_t>(first / 65536),
               index = static_cast<std::uint8_t>(first / 256 % 128);
    const auto value = static_cast<std::uint8_t>(second / 0x2000000);
    const auto bend = static_cast<unsigned>(std::floor(second * 16383.0L / 4294967295.0L));
    const int kind = status / 16;
    if (kind == 8 || kind == 0xA || kind == 0xB)
        return {status, index, value};
    if (kind == 9)
        return {status, index, std::max<std::uint8_t>(value, 1)};
    if (kind == 0xC)
        return {status, static_cast<std::uint8_t>(second / 0x1000000 % 128)};
    if (kind == 0xD)
        return {status, value};
    if (kind == 0xE)
        return {status, static_cast<std::uint8_t>(bend % 128), static_cast<std::uint8_t>(bend / 128)};
    return {};
}

} // namespace

Import imported(const Bytes& clip) {
    constexpr std::size_t wordCounts[] = {1, 1, 1, 2, 2, 4, 1, 1, 2, 2, 2, 3, 3, 4, 4, 4};
    if (clip.size() < 8 || text(clip, 0, 8) != "SMF2CLIP")
        return {"MIDI 2.0 clip data is missing the SMF2CLIP signature.", {}, {}};
    if (clip.size() % 4 != 0)
        return {"MIDI 2.0 clip payload is not aligned to 32-bit UMP words.", {}, {}};
    std::vector<std::vector<std::uint32_t>> packets;
    for (std::size_t at = 8; at < clip.size(); at += 4 * packets.back().size()) {
        const unsigned type = clip[at] / 16;
        const std::size_t left = (clip.size() - at) / 4;
        if (wordCounts[type] > left)
            return {
                printed("UMP type 0x%X expected %zu word(s), only %zu remain.", type, wordCounts[type], left),
                {},
                {}};
        packets.emplace_back();
        for (std::size_t word = 0; word < wordCounts[type]; ++word)
            packets.back().push_back(static_cast<std::uint32_t>(number(clip, at + 4 * word, 4)));
    }

    MIDI2ClipImportSummary counts;
    counts.totalPackets = static_cast<std::int64_t>(packets.size());
    counts.ticksPerQuarterNote = 480;
    std::map<std::pair<std::uint8_t, std::uint8_t>, std::vector<Message>> parts; // By group and channel.
    std::vector<Message> tempos;
    std::uint64_t now = 0, start = 0;
    bool isStarted = false;
    for (const auto& words : packets) {
        const std::uint32_t first = words[0];
        const auto group = static_cast<std::uint8_t>(first >> 24 & 15),
                   channel = static_cast<std::uint8_t>(first >> 16 & 15);
        const auto status = static_cast<std::uint8_t>(first >> 16);
        const std::uint64_t tick = isStarted ? now - start : 0;
        const bool isGlobal = (first >> 20 & 15) == 1;
        bool isKnown = true;
        Bytes message;
        if (first >> 28 == 0 && status / 16 == 4) {
            ++counts.deltaClockstampPackets;
            now += first % 0x100000;
            if (now > 0xFFFFFFFF)
                return {"MIDI 2.0 clip delta clockstamp timing overflowed.", {}, {}};
        } else if (first >> 28 == 0 && status / 16 == 3) {
            if (first % 65536 != 0)
                counts.ticksPerQuarterNote = static_cast<std::uint16_t>(first % 65536);
        } else if (first >> 28 == 2) {
            ++counts.midi1ChannelVoicePackets;
            isKnown = status >= 0x80 && status < 0xF0;
            message = {status, static_cast<std::uint8_t>(first / 256 % 128),
                       static_cast<std::uint8_t>(first % 128)};
            if (status / 16 == 0xC || status / 16 == 0xD)
                message.pop_back();
        } else if (first >> 28 == 4) {
            ++counts.midi2ChannelVoicePackets;
            ++counts.midi2ChannelVoiceDownConverted;
            message = midi1Bytes(first, words[1]);
            if (message.empty())
                return {printed("MIDI 2.0 Channel Voice status 0x%02X is not down-converted yet.", status),
                        {},
                        {}};
        } else if (first >> 28 == 0xD && isGlobal && (first >> 22 & 3) == 0 && first % 65536 == 0) {
            ++counts.flexTempoPackets;
            ++counts.importedPackets;
            tempos.push_back({tick, {0xFF, 0x51, 3}});
            const std::uint64_t microseconds = std::max(words[1] / 100, 1u);
            put(tempos.back().bytes, microseconds > 0xFFFFFE ? 0xFFFFFF : microseconds, 3);
        } else if (first >> 28 == 0xD && isGlobal && (first >> 22 & 3) == 0 && first % 65536 == 1 &&
                   words[1] >> 24 != 0 && (words[1] >> 16 & 0xFF) <= 7) {
            ++counts.flexTimeSignaturePackets;
            ++counts.importedPackets;
            tempos.push_back({tick, {0xFF, 0x58, 4}});
            put(tempos.back().bytes, words[1] >> 16, 2);
            put(tempos.back().bytes, 0x1800 + (words[1] >> 8 & 0xFF), 2);
        } else if (words == std::vector<std::uint32_t>{0xF0200000, 0, 0, 0}) {
            isStarted = true;
            start = now;
        } else if (words == std::vector<std::uint32_t>{0xF0210000, 0, 0, 0}) {
            isStarted = false;
        } else {
            isKnown = false;
        }
        if (!isKnown) {
            ++counts.unsupportedPackets;
        } else if (!message.empty()) {
            ++counts.importedPackets;
            parts[{group, channel}].push_back({tick, message});
        }
    }
    if (parts.empty())
        return {"MIDI 2.0 clip did not contain playable channel voice events.", {}, {}};
    if (counts.flexTimeSignaturePackets == 0)
        tempos.insert(tempos.begin(), {0, {0xFF, 0x58, 4, 4, 2, 0x18, 8}});
    if (counts.flexTempoPackets == 0)
        tempos.insert(tempos.begin(), {0, {0xFF, 0x51, 3, 7, 0xA1, 0x20}});

    Bytes song;
    put(song, "MThd");
    put(song, 6, 4);
    put(song, 1, 2);
    put(song, parts.size() + 1, 2);
    put(song, counts.ticksPerQuarterNote, 2);
    putTrack(song, "", tempos);
    for (const auto& [part, messages] : parts) {
        const auto [group, channel] = part;
        putTrack(song, (group > 0 ? printed("Group %d ", group + 1) : "") + printed("Ch %d", channel + 1),
                 messages);
        ++counts.trackCount;
        counts.channelsByGroup[group].push_back(channel);
    }
    for (const auto& [group, channels] : counts.channelsByGroup)
        counts.groups.push_back(group);
    return {"", song, counts};
}

} // namespace tambrel::plain
