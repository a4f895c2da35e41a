#include "FactsPrinter.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <string_view>

namespace tambrel::cli {
namespace {

// Keys in the order in which they are written.
using JSON = nlohmann::ordered_json;

JSON laneJSON(const MIDITrackPhraseLane& lane) {
    JSON phrases = JSON::array();
    for (const MIDIPhrase& phrase : lane.phrases)
        phrases.push_back({phrase.start, phrase.end});
    return {{"label", lane.label}, {"phrases", std::move(phrases)}};
}

JSON infoJSON(const MIDIFileInfo& info) {
    JSON lanes = JSON::array();
    for (const MIDITrackPhraseLane& lane : info.timelineLanes)
        lanes.push_back(laneJSON(lane));
    return {{"format", info.format},
            {"isSupportedFormat", info.isSupportedFormat},
            {"trackCount", info.trackCount},
            {"displayTrackCount", info.displayTrackCount},
            {"tempoBPM", info.tempoBPM ? JSON(*info.tempoBPM) : JSON()},
            {"keySignature", info.keySignature ? JSON(*info.keySignature) : JSON()},
            {"wasExplodedFromFormat0", info.wasExplodedFromFormat0},
            {"timelineLanes", std::move(lanes)}};
}

std::string line(std::string_view name, const std::string& value) {
    constexpr std::size_t nameWidth = 10;
    std::string text = "  ";
    text += name;
    text.append(nameWidth - name.size(), ' ');
    return text + value + "\n";
}

std::string decimal(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string lengthText(double seconds) {
    constexpr double secondsPerMinute = 60;
    const double rounded = std::round(seconds * 1000) / 1000;
    const double minutes = std::floor(rounded / secondsPerMinute);
    return decimal("%.0f:", minutes) + decimal("%06.3f", rounded - minutes * secondsPerMinute);
}

} // namespace

std::string factsText(const std::filesystem::path& file, const MIDIFileInfo& info, double duration) {
    std::string text = file.string() + "\n";
    text += line("Format", std::to_string(info.format) + (info.isSupportedFormat ? "" : " (not supported)"));
    text += line("Tracks", std::to_string(info.displayTrackCount) +
                               (info.wasExplodedFromFormat0 ? " (one per channel)" : ""));
    text += line("Tempo", info.tempoBPM ? decimal("%.3f BPM", *info.tempoBPM) : "-");
    text += line("Key", info.keySignature.value_or("-"));
    text += line("Length", lengthText(duration));
    for (const MIDITrackPhraseLane& lane : info.timelineLanes)
        text += line("Lane " + lane.label, std::to_string(lane.phrases.size()) +
                                               (lane.phrases.size() == 1 ? " phrase" : " phrases"));
    return text;
}

std::string factsJSON(const std::filesystem::path& file, const MIDIFileInfo& info, double duration) {
    const JSON facts{{"file", file.string()}, {"info", infoJSON(info)}, {"duration", duration}};
    return facts.dump(-1, ' ', false, JSON::error_handler_t::replace);
}

} // namespace tambrel::cli
