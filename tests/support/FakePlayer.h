#pragma once

#include "MIDIFilePlayer.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tambrel {

/// What fake players are told and what they answer. Outlives them.
struct PlayerScript {
    double duration = 10;
    double position = 0;
    std::int64_t lap = 0;
    bool playing = false;
    std::string refusal; ///< Why no player can be made; empty when one can.
    std::vector<std::string> calls;
    std::function<void(const std::string& call)> onCall; ///< Told of each call; may be empty.
    std::vector<MIDIData> songs; ///< Those that players were asked for, refused ones included.
    int alive = 0;

    [[nodiscard]] MIDIFilePlayerFactory factory();
    void take(const std::string& call) {
        calls.push_back(call);
        if (onCall)
            onCall(call);
    }
};

class FakePlayer : public MIDIFilePlayer {
public:
    explicit FakePlayer(PlayerScript& script) : script_(script) { ++script_.alive; }
    ~FakePlayer() override { --script_.alive; }
    FakePlayer(const FakePlayer&) = delete;
    FakePlayer& operator=(const FakePlayer&) = delete;

    void prepareToPlay() override { script_.take("prepare"); }
    void play(std::function<void()>) override {
        script_.take("play");
        script_.playing = true;
    }
    void stop() override {
        script_.take("stop");
        script_.playing = false;
    }
    [[nodiscard]] double currentPosition() const override { return script_.position; }
    void setCurrentPosition(double seconds) override { script_.position = seconds; }
    [[nodiscard]] double duration() const override { return script_.duration; }
    [[nodiscard]] std::int64_t lap() const override { return script_.lap; }
    [[nodiscard]] bool isPlaying() const override { return script_.playing; }

private:
    PlayerScript& script_;
};

inline MIDIFilePlayerFactory PlayerScript::factory() {
    return [this](const PlayableSong& song) -> std::unique_ptr<MIDIFilePlayer> {
        songs.push_back(song.data);
        if (!refusal.empty())
            throw std::runtime_error(refusal);
        position = 0;
        return std::make_unique<FakePlayer>(*this);
    };
}

} // namespace tambrel
