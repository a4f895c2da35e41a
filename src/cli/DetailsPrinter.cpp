#include "DetailsPrinter.h"

#include "Console.h"
#include "SongFacts.h"

namespace tambrel::cli {
namespace {

using JSON = nlohmann::ordered_json;

std::string line(std::string name, const std::string& value) {
    constexpr std::size_t nameWidth = 10;
    name.resize(std::max(nameWidth, name.size() + 1), ' ');
    return "  " + name + value + "\n";
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
    std::string text;
    for (const SongFact& fact : songFacts(details))
        text += line(fact.name, printable(fact.value));
    return text;
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
