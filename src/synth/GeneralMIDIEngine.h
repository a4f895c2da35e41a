#pragma once

#include "AudioOutput.h"
#include "MIDIFilePlayer.h"
#include "OutputWatch.h"
#include "Sequencer.h"
#include "SerialExecutor.h"
#include "SoundBankLoader.h"

#include <QTimer>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tambrel {

struct GeneralMIDIOptions {
    std::filesystem::path soundBank; ///< This one and no other; empty for the next.
    std::filesystem::path preferredSoundBank =
        {};                                ///< If it can be loaded; empty for the system's default bank.
    std::vector<std::string> audioDrivers; ///< Empty for the default drivers.
    AudioDriverOpener openDriver = openAudioDriver;
};

/// One synthesizer, one sound bank and one audio device for the whole run, and the players on top of them.
/// Bank and device are got ready in the background. While a song plays, a device that dies is opened anew and
/// the song goes on where it was; when nothing plays for a few seconds, the device is released. Main thread
/// only. Outlives its players.
class GeneralMIDIEngine {
public:
    explicit GeneralMIDIEngine(GeneralMIDIOptions options);
    ~GeneralMIDIEngine();
    GeneralMIDIEngine(const GeneralMIDIEngine&) = delete;
    GeneralMIDIEngine& operator=(const GeneralMIDIEngine&) = delete;

    /// Called when no bank can be loaded, with the reason. Songs cannot be played then; a player created
    /// later tries again.
    std::function<void(const std::string& reason)> onFailure;
    /// Called when a song is to play and no device can be opened, with what was tried. To play tries again.
    std::function<void(const std::string& reason)> onOutputFailure;
    /// Called when `output` is another.
    std::function<void()> onOutputChange;
    /// Called with a sentence when the device was lost, or is back, and when another bank is used than the
    /// one that was wanted.
    std::function<void(const std::string& sentence)> onNotice;
    /// Called when the device was lost and is waited for, and when that is over: it is back, or nothing has
    /// played for some time.
    std::function<void(bool isLost)> onOutputLoss;
    /// Called when a device is open that renders by a thread, by the kernel's number, of usual priority.
    std::function<void(std::uint64_t thread)> onUsualThread;

    /// Begins to load the bank, unless that was done. Throws SoundBankError when there is none.
    void loadSoundBank() { bank_.load(); }
    /// Changes to another bank, or the system's default when it is empty; a song that plays goes on where it
    /// was once the bank is there. Throws SoundBankError when there is none.
    void chooseSoundBank(const std::filesystem::path& bank) { bank_.choose(bank); }
    /// True while the bank is being loaded, which cannot be interrupted.
    [[nodiscard]] bool isLoadingSoundBank() const { return bank_.isLoading(); }
    [[nodiscard]] const SoundBankWish& soundBankWish() const { return bank_.wish(); }
    /// The bank in use, or the one that is being loaded; empty before.
    [[nodiscard]] const std::filesystem::path& soundBank() const { return bank_.bank(); }

    /// True while no song plays, no note rings out and none is about to.
    [[nodiscard]] bool isSilent() const { return sound().isSilent(); }

    /// The name of the audio driver in use; empty while there is none.
    [[nodiscard]] const std::string& output() const { return outputInUse_; }
    /// 0 (silence) to 1 (as it comes), for everything that is played.
    void setVolume(double volume) { output_->setVolume(volume); }
    [[nodiscard]] double volume() const { return output_->volume(); }

    /// Whether a song begins again at its end, without a gap. What has been rendered ahead stays as it is.
    void setLooping(bool isLooping) { sequencer_.setLooping(isLooping); }
    [[nodiscard]] bool isLooping() const { return sequencer_.isLooping(); }

    /// A player for the song, whose timeline is made here if it has none yet. Throws SoundBankError when
    /// there is no bank, std::invalid_argument when the data is no Standard MIDI File.
    [[nodiscard]] std::unique_ptr<MIDIFilePlayer> makePlayer(const PlayableSong& song);

private:
    class Player;

    void prepare();
    void start(Player& player, double seconds);
    void pause(const Player& player, double seconds);
    void halt(const Player& player);
    [[nodiscard]] bool isPlaying(const Player& player) const;

    void lookAgain();
    void playOnNewBank();
    void giveUpBank(const std::string& reason);
    void watchSong();
    void releaseWhenIdle();
    void noticeOutput();
    [[nodiscard]] std::chrono::milliseconds untilNextLook() const;
    [[nodiscard]] const PlaybackBuffer& sound() const { return output_->sound(); }
    void failToPlay(const std::string& reason) const;
    void notice(const std::string& sentence) const;

    GeneralMIDIOptions options_;
    Sequencer sequencer_;

    Player* playing_ = nullptr;        // Until it stops or its song is over.
    const Player* sounding_ = nullptr; // Until `stop`: while its release tail sounds, too.
    const Player* paused_ = nullptr;   // Its notes are kept, for it to go on at this place:
    double pausedAt_ = 0;
    std::chrono::steady_clock::time_point lastUse_;
    QTimer nextLook_; // Runs while there is anything to watch.

    std::unique_ptr<SerialExecutor> executor_;
    SoundBankLoader bank_;
    std::unique_ptr<AudioOutput> output_;
    std::optional<OutputWatch> watch_;
    std::string outputInUse_;
};

} // namespace tambrel
