#include "DetailsPrinter.h"

#include "Console.h"

#include <cstdio>

namespace tambrel::cli {
namespace {

using JSON = nlohmann::ordered_json;

std::string line(std::string name, const std::string& value) {
    constexpr std::size_t nameWidth = 10;
    name.resize(std::max(nameWidth, name.size() + 1), ' ');
    return "  " + name + value + "\n";
}

std::string decimal(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

// C4 is the middle one, key 60.
std::string keyName(int key) {
    static constexpr const char* names[] = {"C", "C#", "D", "D#", "E", "F", "F#", "G", "G#", "A", "A#", "B"};
    return names[key % 12] + std::to_string(key / 12 - 1);
}

std::string divisionText(const SongDetails& details) {
    if (details.framesPerSecond == 0)
        return std::to_string(details.ticksPerQuarterNote) + " ticks a quarter note";
    return std::to_string(details.framesPerSecond) + " frames a second, " +
           std::to_string(details.ticksPerFrame) + " ticks a frame";
}

std::string programText(int channel, int program) {
    constexpr int drums = 10;
    return std::to_string(program + 1) +
           (channel == drums ? " (drums)" : std::string(" ") + generalMIDIName(program));
}

std::string trackText(const SongDetails::Track& track) {
    std::string text = printable(track.name.empty() ? track.instrument : track.name);
    const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    for (const int channel : track.channels)
        add("channel " + std::to_string(channel));
    for (const auto& [channel, program] : track.programs)
        add("program " + programText(channel, program));
    if (track.notes > 0)
        add(std::to_string(track.notes) + (track.notes == 1 ? " note from " : " notes from ") +
            keyName(track.lowestNote) + " to " + keyName(track.highestNote));
    return text;
}

std::string textsText(const char* name, const std::vector<SongDetails::Text>& texts) {
    std::string result;
    for (const SongDetails::Text& text : texts)
        result += line(name, printable(text.text));
    return result;
}

JSON textsJSON(const std::vector<SongDetails::Text>& texts) {
    JSON result = JSON::array();
    for (const SongDetails::Text& text : texts)
        result.push_back({{"tick", text.tick}, {"track", text.track}, {"text", text.text}});
    return result;
}

JSON trackJSON(const SongDetails::Track& track) {
    JSON programs = JSON::array();
    for (const auto& [channel, program] : track.programs)
        programs.push_back(
            {{"channel", channel}, {"program", program + 1}, {"name", generalMIDIName(program)}});
    const bool hasNotes = track.notes > 0;
    return {{"name", track.name},
            {"instrument", track.instrument},
            {"channels", track.channels},
            {"programs", std::move(programs)},
            {"notes", track.notes},
            {"lowestNote", hasNotes ? JSON(track.lowestNote) : JSON()},
            {"highestNote", hasNotes ? JSON(track.highestNote) : JSON()}};
}

} // namespace

std::string detailsText(const SongDetails& details) {
    std::string text = line("Division", divisionText(details));
    text += line("Notes", std::to_string(details.notes));
    for (std::size_t i = 0; i < details.tracks.size(); ++i)
        text += line("Track " + std::to_string(i + 1), trackText(details.tracks[i]));
    for (const auto& tempo : details.tempos)
        text += line("Tempo", decimal(tempo.beatsPerMinute) + " BPM at tick " + std::to_string(tempo.tick));
    for (const auto& metre : details.timeSignatures)
        text += line("Time", std::to_string(metre.numerator) + "/" + std::to_string(metre.denominator) +
                                 " at tick " + std::to_string(metre.tick));
    return text + textsText("Copyright", details.copyrights) + textsText("Text", details.texts) +
           textsText("Lyric", details.lyrics) + textsText("Marker", details.markers);
}

JSON detailsJSON(const SongDetails& details) {
    JSON tracks = JSON::array();
    for (const auto& track : details.tracks)
        tracks.push_back(trackJSON(track));
    JSON tempos = JSON::array();
    for (const auto& tempo : details.tempos)
        tempos.push_back({{"tick", tempo.tick}, {"beatsPerMinute", tempo.beatsPerMinute}});
    JSON metres = JSON::array();
    for (const auto& metre : details.timeSignatures)
        metres.push_back(
            {{"tick", metre.tick}, {"numerator", metre.numerator}, {"denominator", metre.denominator}});
    return {{"ticksPerQuarterNote", details.ticksPerQuarterNote},
            {"framesPerSecond", details.framesPerSecond},
            {"ticksPerFrame", details.ticksPerFrame},
            {"notes", details.notes},
            {"tracks", std::move(tracks)},
            {"tempos", std::move(tempos)},
            {"timeSignatures", std::move(metres)},
            {"copyrights", textsJSON(details.copyrights)},
            {"texts", textsJSON(details.texts)},
            {"lyrics", textsJSON(details.lyrics)},
            {"markers", textsJSON(details.markers)}};
}

std::string findingsText(const std::filesystem::path& file, const std::vector<SongFinding>& findings) {
    const std::string name = printable(file.native()) + ": ";
    if (findings.empty())
        return name + "nothing is wrong\n";
    std::string text;
    for (const SongFinding& finding : findings)
        text += name + "byte " + std::to_string(finding.position) +
                (finding.track > 0 ? ", track " + std::to_string(finding.track) : "") + ": " +
                finding.explanation + " [" + std::string(finding.kind) + "]\n";
    return text;
}

std::string findingsJSON(const std::filesystem::path& file, const std::vector<SongFinding>& findings) {
    JSON list = JSON::array();
    for (const SongFinding& finding : findings)
        list.push_back({{"byte", finding.position},
                        {"track", finding.track},
                        {"kind", finding.kind},
                        {"explanation", finding.explanation}});
    return JSON({{"file", file.string()}, {"findings", std::move(list)}})
        .dump(-1, ' ', false, JSON::error_handler_t::replace);
}

} // namespace tambrel::cli
