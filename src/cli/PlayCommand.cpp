#include "Commands.h"
#include "Console.h"
#include "Interruption.h"
#include "TerminalKeys.h"
#include "TerminalText.h"

#include "GeneralMIDIEngine.h"
#include "MIDILoudnessProcessor.h"
#include "TambrelLoadError.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cstdint>
#include <unistd.h>
#include <utility>

namespace tambrel::cli {
namespace {

/// Plays one song after another, with a line that shows where it is.
class TerminalPlayer {
public:
    TerminalPlayer(const PlayOptions& options, std::vector<std::filesystem::path> files)
        : options_(options),
          files_(std::move(files)),
          engine_({.soundBank = options.soundFont, .audioDrivers = options.audioDrivers}) {
        engine_.setLooping(options.loop && files_.size() == 1);
        engine_.onFailure = engine_.onOutputFailure = [this](const std::string& reason) { fail(reason); };
        engine_.onNotice = [this](const std::string& sentence) { say("tambrel-midi: " + sentence + "\n"); };
    }

    ExitStatus run() {
        QSocketNotifier interrupted(Interruption::descriptor(), QSocketNotifier::Read);
        QObject::connect(&interrupted, &QSocketNotifier::activated, [this] { quit(); });
        if (keys_.descriptor() >= 0) {
            keysWaiting_.emplace(keys_.descriptor(), QSocketNotifier::Read);
            QObject::connect(&*keysWaiting_, &QSocketNotifier::activated, [this] { takeKeys(); });
        }
        QTimer clock;
        QObject::connect(&clock, &QTimer::timeout, [this] { tick(); });
        clock.start(100);
        QTimer::singleShot(0, [this] { playFrom(0, 1); });
        QCoreApplication::exec();
        wipe();
        return status_;
    }

private:
    // Plays the first song that loads, from `index` on in the direction of `step`.
    void playFrom(std::size_t index, int step) {
        for (index_ = index; index_ < files_.size(); index_ += static_cast<std::size_t>(step)) {
            if (playOne())
                return;
            if (options_.batch.failFast)
                break;
        }
        player_.reset();
        quit();
    }

    bool playOne() {
        try {
            player_.reset();
            const MIDIData song = loadInput(files_[index_]).playbackData;
            player_ = engine_.makePlayer(options_.loudness ? MIDILoudnessProcessor::boostedDrumsAndBass(song)
                                                           : song);
            announce();
            play();
            return true;
        } catch (const TambrelLoadCancelled&) {
        } catch (const std::exception& error) {
            say(complaint(files_[index_], TambrelLoadError::diagnosticReason(error)));
            status_ = aFileFailed;
        }
        return false;
    }

    void announce() {
        if (!showsLine_)
            print("Playing " + title() + " (" + clockText(player_->duration()) + ")\n");
    }

    void noticeLap() {
        const std::int64_t lap = player_ ? player_->lap() : 0;
        if (std::exchange(lap_, lap) < lap)
            announce();
    }

    void play() {
        player_->play([this] { isOver_ = true; });
    }

    void tick() {
        keys_.resume();
        noticeLap();
        if (isOver_ && (index_ + 1 < files_.size() || options_.loop || engine_.isSilent())) {
            isOver_ = false;
            const bool isLast = index_ + 1 == files_.size();
            playFrom(isLast && options_.loop ? 0 : index_ + 1, 1);
        }
        if (player_)
            draw();
    }

    void takeKeys() {
        while (const auto key = keys_.next()) {
            if (player_)
                take(*key);
        }
    }

    void take(TerminalKeys::Key key) {
        using Key = TerminalKeys::Key;
        constexpr double step = 5;
        constexpr double leap = 30;
        switch (key) {
        case Key::pause:
            return player_->isPlaying() ? player_->stop() : play();
        case Key::back:
            return move(-step);
        case Key::forward:
            return move(step);
        case Key::farBack:
            return move(-leap);
        case Key::farForward:
            return move(leap);
        case Key::next:
            return playFrom(index_ + 1, 1);
        case Key::previous:
            return playFrom(index_ == 0 ? 0 : index_ - 1, index_ == 0 ? 1 : -1);
        case Key::quit:
            return quit();
        }
    }

    void move(double seconds) {
        player_->setCurrentPosition(
            std::clamp(player_->currentPosition() + seconds, 0.0, player_->duration()));
    }

    void quit() {
        if (player_)
            player_->stop();
        QCoreApplication::quit();
    }

    void fail(const std::string& reason) {
        say("tambrel-midi: " + reason + "\n");
        status_ = aFileFailed;
        quit();
    }

    [[nodiscard]] std::string title() const { return printable(files_[index_].filename().native()); }

    void draw() {
        if (!showsLine_)
            return;
        const double position = player_->currentPosition();
        const double length = player_->duration();
        const std::string end = " " + clockText(position) + " / " + clockText(length) +
                                (player_->isPlaying() || isOver_ ? "" : "  paused");
        const std::string line =
            barLine(title(), length > 0 ? position / length : 1, end, terminalWidth(STDOUT_FILENO) - 1);
        if (line != lineShown_)
            print("\r" + line + "\033[K");
        lineShown_ = line;
    }

    void wipe() {
        if (!lineShown_.empty())
            print("\r\033[K");
        lineShown_.clear();
    }

    void say(const std::string& text) {
        wipe();
        complain(text);
    }

    const PlayOptions& options_;
    const std::vector<std::filesystem::path> files_;
    const bool showsLine_ = canRedrawLine(STDOUT_FILENO);
    TerminalKeys keys_;
    std::optional<QSocketNotifier> keysWaiting_;
    GeneralMIDIEngine engine_;
    std::unique_ptr<MIDIFilePlayer> player_;
    std::size_t index_ = 0;
    std::int64_t lap_ = 0; // Of a song that loops.
    bool isOver_ = false;  // The song has ended; its release tail may still sound.
    std::string lineShown_;
    ExitStatus status_ = allWell;
};

} // namespace

ExitStatus runPlay(const PlayOptions& options) {
    int count = 1;
    char name[] = "tambrel-midi";
    char* words[] = {name, nullptr};
    const QCoreApplication application(count, words);
    return TerminalPlayer(options, inputs(options.input)).run();
}

} // namespace tambrel::cli
