#include "FactsPrinter.h"

#include "Console.h"
#include "DetailsPrinter.h"

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

JSON importSummaryJSON(const MIDI2ClipImportSummary& summary) {
    JSON channelsByGroup = JSON::object();
    for (const auto& [group, channels] : summary.channelsByGroup)
        channelsByGroup[std::to_string(group)] = channels;
    return {{"totalPackets", summary.totalPackets},
            {"importedPackets", summary.importedPackets},
            {"unsupportedPackets", summary.unsupportedPackets},
            {"deltaClockstampPackets", summary.deltaClockstampPackets},
            {"midi1ChannelVoicePackets", summary.midi1ChannelVoicePackets},
            {"midi2ChannelVoicePackets", summary.midi2ChannelVoicePackets},
            {"midi2ChannelVoiceDownConverted", summary.midi2ChannelVoiceDownConverted},
            {"flexTempoPackets", summary.flexTempoPackets},
            {"flexTimeSignaturePackets", summary.flexTimeSignaturePackets},
            {"ticksPerQuarterNote", summary.ticksPerQuarterNote},
            {"trackCount", summary.trackCount},
            {"groups", summary.groups},
            {"channelsByGroup", std::move(channelsByGroup)}};
}

JSON companionSummaryJSON(const MIDI2ClipBuildSummary& summary) {
    return {{"byteCount", summary.byteCount},
            {"umpWordCount", summary.umpWordCount},
            {"channelVoiceWordCount", summary.channelVoiceWordCount}};
}

std::string oneLine(const JSON& json) {
    return json.dump(-1, ' ', false, JSON::error_handler_t::replace);
}

std::string line(std::string_view name, const std::string& value) {
    constexpr std::size_t nameWidth = 10;
    std::string text = "  ";
    text += name;
    text.append(name.size() < nameWidth ? nameWidth - name.size() : 1, ' ');
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

std::string factsText(const TambrelLoadedFile& loaded, double duration) {
    const MIDIFileInfo& info = loaded.info;
    std::string text = printable(loaded.url.native()) + "\n";
    text += line("Status", loaded.loadedStatus);
    text += line("Format", std::to_string(info.format));
    text += line("Tracks", std::to_string(info.displayTrackCount) +
                               (info.wasExplodedFromFormat0 ? " (one per channel)" : ""));
    text += line("Tempo", info.tempoBPM ? decimal("%.3f BPM", *info.tempoBPM) : "-");
    text += line("Key", info.keySignature.value_or("-"));
    text += line("Length", lengthText(duration));
    for (const MIDITrackPhraseLane& lane : info.timelineLanes)
        text += line("Lane " + lane.label, std::to_string(lane.phrases.size()) +
                                               (lane.phrases.size() == 1 ? " phrase" : " phrases"));
    if (loaded.importSummary)
        text += line("Import", loaded.importSummary->debugDescription());
    return text;
}

std::string factsJSON(const TambrelLoadedFile& loaded, double duration) {
    const auto& import = loaded.importSummary;
    const auto& companion = loaded.midi2ClipCompanionSummary;
    return oneLine({{"file", loaded.url.string()},
                    {"info", infoJSON(loaded.info)},
                    {"duration", duration},
                    {"loadedStatus", loaded.loadedStatus},
                    {"importSummary", import ? importSummaryJSON(*import) : JSON()},
                    {"companionSummary", companion ? companionSummaryJSON(*companion) : JSON()},
                    {"details", detailsJSON(SongDetails::gather(loaded.playbackData))}});
}

std::string errorJSON(const std::filesystem::path& file, const TambrelLoadError& error) {
    return oneLine({{"file", file.string()},
                    {"error", error.caseName()},
                    {"userMessage", error.userMessage()},
                    {"diagnosticDescription", error.diagnosticDescription()}});
}

} // namespace tambrel::cli
