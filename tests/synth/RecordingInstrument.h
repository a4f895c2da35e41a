#pragma once

#include "MIDIInstrument.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tambrel::testing {

/// A message as text: "ch 1 note on 60 100".
[[nodiscard]] inline std::string text(MIDIMessage message) {
    const char* const kinds[] = {"note off", "note on",          "key pressure", "control",
                                 "program",  "channel pressure", "bend",         "nothing"};
    const char* const systems[] = {"nothing",       "GM reset",      "GS reset",         "XG reset",
                                   "master volume", "rhythm map",    "master tuning",    "master key shift",
                                   "balance",       "reverb type",   "chorus type",      "key tuning",
                                   "key fraction",  "drum pitch",    "drum level",       "drum pan",
                                   "drum reverb",   "drum chorus",   "second pitch",     "second level",
                                   "second pan",    "second reverb", "second chorus",    "receive channel",
                                   "bend range",    "key shift",     "modulation depth", "scale tuning"};
    const int kind = message.status >> 4;
    char line[80];
    if (message.isSystem() && message.data1 <= 3)
        return systems[message.data1];
    if (message.isSystem())
        std::snprintf(line, sizeof line, "%s %d %d",
                      systems[std::min<std::size_t>(message.data1, std::size(systems) - 1)], message.data2,
                      message.data3);
    else if (kind == 12 || kind == 13)
        std::snprintf(line, sizeof line, "ch %d %s %d", (message.status & 15) + 1, kinds[kind & 7],
                      message.data1);
    else
        std::snprintf(line, sizeof line, "ch %d %s %d %d", (message.status & 15) + 1, kinds[kind & 7],
                      message.data1, message.data2);
    return line;
}

/// Stands in for the synthesizer: writes down what it is told and at which frame. What it plays is 1 on the
/// left and 0.5 on the right while a key is held and for 10 ms after; key 127 goes on for ever, unheard.
class RecordingInstrument final : public MIDIInstrument {
public:
    void send(MIDIMessage message) noexcept override {
        write(text(message));
        const bool isNoteOn = message.status >> 4 == 9 && message.data2 > 0;
        const std::pair key(message.status & 15, message.data1);
        if (isNoteOn)
            message.data1 == 127 ? void(isUnheardVoice_ = true) : void(keys_.insert(key));
        else if (message.status >> 5 == 4 && keys_.erase(key) > 0)
            ringing_ = tail;
    }
    void resumeNote(MIDIMessage noteOn, double age) noexcept override {
        send(noteOn);
        char line[40];
        std::snprintf(line, sizeof line, ", %.4f s ago", age);
        written.back().second += line;
    }
    void reset() noexcept override {
        write("reset");
        keys_.clear();
        ringing_ = 0;
        isUnheardVoice_ = false;
    }
    void releaseNotes() noexcept override {
        write("release");
        ringing_ = keys_.empty() ? ringing_ : tail;
        keys_.clear();
    }
    void render(float* left, float* right, int frames) noexcept override {
        for (int at = 0; at < frames; ++at, ++frame) {
            const float level = isHeard() ? 1.0F : 0.0F;
            ringing_ -= keys_.empty() && ringing_ > 0 ? 1 : 0;
            left[at] = level;
            right[at] = level / 2;
        }
    }
    [[nodiscard]] int activeVoices() const noexcept override { return isHeard() || isUnheardVoice_ ? 1 : 0; }

    std::int64_t frame = 0;                                    // Rendered so far.
    std::vector<std::pair<std::int64_t, std::string>> written; // What came at which frame.

private:
    static constexpr int tail = 480;
    void write(std::string message) { written.emplace_back(frame, std::move(message)); }

    [[nodiscard]] bool isHeard() const { return !keys_.empty() || ringing_ > 0; }

    std::set<std::pair<int, int>> keys_;
    int ringing_ = 0;
    bool isUnheardVoice_ = false;
};

} // namespace tambrel::testing
