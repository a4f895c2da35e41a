#include "SongFacts.h"

#include <cstdio>

namespace tambrel {
namespace {

std::string decimal(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

// C4 is middle C, key 60.
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
    std::string text = track.name.empty() ? track.instrument : track.name;
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

void addTexts(std::vector<SongFact>& facts, const char* name, const std::vector<SongDetails::Text>& texts) {
    for (const SongDetails::Text& text : texts)
        facts.push_back({name, text.text});
}

} // namespace

std::vector<SongFact> songFacts(const SongDetails& details) {
    std::vector<SongFact> facts{{"Division", divisionText(details)},
                                {"Notes", std::to_string(details.notes)}};
    for (std::size_t i = 0; i < details.tracks.size(); ++i)
        facts.push_back({"Track " + std::to_string(i + 1), trackText(details.tracks[i])});
    for (const auto& tempo : details.tempos)
        facts.push_back(
            {"Tempo", decimal(tempo.beatsPerMinute) + " BPM at tick " + std::to_string(tempo.tick)});
    for (const auto& metre : details.timeSignatures)
        facts.push_back({"Time", std::to_string(metre.numerator) + "/" + std::to_string(metre.denominator) +
                                     " at tick " + std::to_string(metre.tick)});
    addTexts(facts, "Copyright", details.copyrights);
    addTexts(facts, "Text", details.texts);
    addTexts(facts, "Lyric", details.lyrics);
    addTexts(facts, "Marker", details.markers);
    return facts;
}

} // namespace tambrel
