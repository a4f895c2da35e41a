#pragma once

#include "PlaybackMode.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace tambrel {

/// A time as the window writes it, read off slowly.
[[nodiscard]] inline std::string clockText(double seconds) {
    if (!std::isfinite(seconds) || seconds < 0)
        seconds = 0;
    auto hundredths = static_cast<long long>(std::round(seconds * 100));
    std::string text;
    const std::pair<long long, const char*> places[] = {{360'000, ":"}, {6000, ":"}, {100, "."}, {1, ""}};
    for (const auto& [unit, mark] : places) {
        const std::string digits = std::to_string(hundredths / unit);
        text += (digits.size() < 2 ? "0" : "") + digits + mark;
        hundredths %= unit;
    }
    return text;
}

/// A second, plain model of the player controller and the transport coordinator together: what every command
/// does to the mode and the position, and, in order, the log lines, callbacks and calls of the player on the
/// way.
struct TransportModel {
    using Text = std::string;
    struct Number {
        double value;
        Text text; ///< As log lines write it.
    };

    // The player, and whether the next one is refused.
    bool hasPlayer = false, isSounding = false, isPolling = false, isRefused = false;
    double position = 0;
    Number duration{0, "0.0"}, nextDuration{10, "10.0"};
    PlaybackMode mode = PlaybackMode::idle;
    // The song and its variants.
    bool hasSong = false, isLoudnessOn = false, hasLoudVariant = false, playsLoud = false;
    // What the controls show.
    Text playTitle = "Play", status, shownPosition = "0.000000", shownDuration = "0.000000",
         clock = "00:00:00.00";
    Text progress = "0.000000";
    int beeps = 0;

    std::vector<Text> said;

    void say(const Text& text) { said.push_back(text); }
    void player(const Text& message, const Text& name) { say(message + " | MIDIPlayerController." + name); }
    void state(const Text& message, const Text& name) { say(message + " | TambrelPlaybackState." + name); }
    void transport(const Text& message, const Text& name) {
        say(message + " | TambrelTransportCoordinator." + name);
    }
    [[nodiscard]] bool isIgnored(const Text& what, const Text& name) {
        if (!hasPlayer)
            player(what + " ignored because no MIDI file is loaded", name);
        return !hasPlayer;
    }

    void enter(PlaybackMode next) {
        static const std::pair<Text, Text> names[] = {
            {"idle", "Play"}, {"playing", "Pause"}, {"paused", "Resume"}};
        const auto& [name, title] = names[static_cast<int>(next)];
        mode = next;
        say("mode " + name + " at " + std::to_string(position));
        transport("Playback state changed to " + name, "updatePlaybackMode");
        playTitle = title;
        say("change of mode");
    }
    void report(double seconds) {
        shownPosition = std::to_string(seconds);
        shownDuration = std::to_string(duration.value);
        clock = clockText(seconds);
        progress = std::to_string(duration.value > 0 ? seconds / duration.value : 0);
        say("progress " + shownPosition + " of " + shownDuration);
    }
    void announce() {
        say("loaded " + std::to_string(duration.value));
        transport("Loaded MIDI duration " + clockText(duration.value), "player.onLoaded");
    }
    void moveTo(double seconds) {
        const bool moves = seconds != position;
        position = seconds;
        if (moves)
            say("change of position");
    }
    [[nodiscard]] double clamped(double seconds) const {
        return !(seconds > 0) ? 0 : seconds > duration.value ? duration.value : seconds;
    }
    [[nodiscard]] bool isAtEnd() const { return position >= 0 && position >= duration.value - 0.02; }

    void stopTimer() {
        if (isPolling)
            player("Stopping playback timer", "stopTimer");
        isPolling = false;
    }
    void silence() {
        isSounding = false;
        say("player: stop");
    }
    void finish() {
        if (!hasPlayer || mode != PlaybackMode::playing || isSounding || !isAtEnd())
            return;
        player("Playback reached end of file", "finishPlaybackIfNeeded");
        moveTo(0);
        enter(PlaybackMode::idle);
        stopTimer();
        report(0);
    }
    bool load(bool loud, double at) {
        const Text name = "load(data:position:modeAfterLoad:)";
        player("Resetting AVMIDIPlayer before load", name);
        stopTimer();
        if (hasPlayer)
            silence();
        say(loud ? "a player for the loud song" : "a player for the song");
        if (isRefused)
            return false;
        hasPlayer = true;
        duration = nextDuration;
        say("player: prepare");
        position = clamped(at);
        enter(PlaybackMode::idle);
        announce();
        report(position);
        player("AVMIDIPlayer loaded; duration " + duration.text, name);
        return true;
    }

    bool load() {
        state("Replacing loaded playback snapshot", "replaceLoadedMIDI");
        hasSong = true;
        isLoudnessOn = hasLoudVariant = playsLoud = false;
        player("Loading MIDI playback data", "load(data:)");
        return load(false, 0);
    }
    void unload() {
        player("Clearing MIDI playback data", "unload");
        stopTimer();
        if (hasPlayer)
            silence();
        hasPlayer = false;
        position = 0;
        duration = {0, "0.0"};
        enter(PlaybackMode::idle);
        announce();
        report(0);
        state("Clearing loaded playback snapshot", "reset");
        hasSong = isLoudnessOn = hasLoudVariant = playsLoud = false;
    }
    void play() {
        if (isIgnored("Play", "play"))
            return;
        player("Starting playback", "play");
        if (isAtEnd())
            moveTo(0);
        enter(PlaybackMode::playing);
        isSounding = true;
        say("player: play");
        player("Starting playback timer", "startTimer");
        stopTimer();
        isPolling = true;
    }
    void pause() {
        if (!hasPlayer || mode != PlaybackMode::playing)
            return player("Pause ignored because playback is not active", "pause");
        player("Pausing playback", "pause");
        silence();
        enter(PlaybackMode::paused);
        stopTimer();
        report(position);
    }
    void toggle() {
        const Text name = mode == PlaybackMode::playing  ? "playing"
                          : mode == PlaybackMode::paused ? "paused"
                                                         : "idle";
        player("Toggling playback from " + name, "togglePlayPause");
        mode == PlaybackMode::playing ? pause() : play();
    }
    void stop() {
        if (isIgnored("Stop", "stop"))
            return;
        player("Stopping playback and returning to zero", "stop");
        silence();
        moveTo(0);
        enter(PlaybackMode::idle);
        stopTimer();
        report(0);
    }
    void rtz() {
        if (isIgnored("RTZ", "rtz"))
            return;
        finish();
        player("Returning playhead to zero", "rtz");
        moveTo(0);
        report(0);
    }
    void seek(const Number& seconds) {
        if (isIgnored("Seek", "seek(to:)"))
            return;
        finish(); // Before a handle that was dragged past the end is back: from there the end could not be
                  // told.
        player("Seeking to " + seconds.text + " seconds", "seek(to:)");
        moveTo(clamped(seconds.value));
        report(position);
    }
    void tick() {
        if (!isPolling)
            return;
        report(position);
        finish();
    }

    void toggleLoudness() {
        isLoudnessOn = !isLoudnessOn;
        status = isLoudnessOn ? "Loudness On" : "Loaded";
        transport(isLoudnessOn ? "User Action: Enabled Loudness" : "User Action: Disabled Loudness",
                  "toggleLoudness");
    }
    void playPauseButton() {
        transport("User Action: Clicked Play/Pause button or menu item", "playPause");
        if (mode != PlaybackMode::playing)
            prepare();
        toggle();
    }
    void stopButton() {
        transport("User Action: Clicked Stop button or menu item", "stop");
        stop();
    }
    void rtzButton() {
        transport("User Action: Clicked RTZ button or menu item", "rtz");
        rtz();
    }
    void prepare() {
        const Text here = "prepareSelectedPlaybackData", caller = "TambrelTransportCoordinator." + here;
        transport("Preparing selected playback data", here);
        if (!hasSong)
            return state("No MIDI data is loaded for " + caller, "selectedSnapshot");
        if (isLoudnessOn && !std::exchange(hasLoudVariant, true))
            state("Generating loudness-processed MIDI data for " + caller, "selectedSnapshot");
        if (isLoudnessOn == playsLoud)
            return transport("Playback data already matches Loudness setting", here);
        const double at = position;
        player("Reloading MIDI playback data at current position", "reloadForPlayback(data:position:)");
        if (!load(isLoudnessOn, at)) {
            transport("Error: no bank", here);
            transport("Could not prepare MIDI playback: no bank", here);
            status = "Playback Error";
            ++beeps;
            return;
        }
        playsLoud = isLoudnessOn;
        state(playsLoud ? "Playback snapshot is now loud" : "Playback snapshot is now original",
              "markPlaybackLoaded");
        state("Generating MIDI 2.0 clip companion for " + caller, "prepareMIDI2ClipCompanion");
        state("MIDI 2.0 companion ready; bytes 48; UMP words 10; channel voice words 2",
              "prepareMIDI2ClipCompanion");
        status = playsLoud ? "Loudness On" : "Loaded";
        transport("Reloaded playback data at " + clockText(at), here);
    }
};

} // namespace tambrel
