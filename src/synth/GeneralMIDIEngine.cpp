#include "GeneralMIDIEngine.h"

#include "AudioDrivers.h"
#include "SMFHeader.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tambrel {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr double outputSampleRate = 48000;
constexpr auto soon = 50ms; // Until the next look after something has begun.
constexpr auto seldom = 500ms;
constexpr auto idleTime = 5s; // Before the device is released.

} // namespace

/// One song on the engine. The position is kept here while the song does not play.
class GeneralMIDIEngine::Player final : public MIDIFilePlayer {
public:
    Player(GeneralMIDIEngine& engine, std::shared_ptr<const Timeline> song)
        : engine_(engine), song_(std::move(song)) {}
    ~Player() override { engine_.halt(*this); }
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    void prepareToPlay() override { engine_.prepare(); }

    void play(std::function<void()> onCompletion) override {
        position_ = currentPosition();
        onCompletion_ = std::move(onCompletion);
        engine_.start(*this, position_);
    }

    void stop() override {
        position_ = currentPosition();
        onCompletion_ = nullptr;
        engine_.pause(*this, position_);
    }

    [[nodiscard]] double currentPosition() const override {
        return engine_.playing_ == this ? engine_.sound().position() : position_;
    }

    void setCurrentPosition(double seconds) override {
        const bool plays = isPlaying();
        settle();
        position_ = std::clamp(seconds, 0.0, duration());
        if (plays)
            engine_.start(*this, position_);
    }

    [[nodiscard]] double duration() const override { return song_->duration(); }
    [[nodiscard]] std::int64_t lap() const override {
        return engine_.playing_ == this ? engine_.sound().lap() : 0;
    }
    [[nodiscard]] bool isPlaying() const override { return engine_.isPlaying(*this); }
    [[nodiscard]] const std::shared_ptr<const Timeline>& song() const { return song_; }

    /// The song has been played to its end: keeps the position, lets the last notes ring.
    void complete() {
        settle();
        if (const auto callback = std::exchange(onCompletion_, nullptr))
            callback();
    }

private:
    // Leaves the engine alone with its last notes, when the song is over.
    void settle() {
        if (engine_.playing_ != this || isPlaying())
            return;
        position_ = currentPosition();
        engine_.playing_ = nullptr;
    }

    GeneralMIDIEngine& engine_;
    std::shared_ptr<const Timeline> song_;
    double position_ = 0;
    std::function<void()> onCompletion_;
};

GeneralMIDIEngine::GeneralMIDIEngine(GeneralMIDIOptions options)
    : options_(std::move(options)),
      sequencer_(outputSampleRate),
      executor_(std::make_unique<SerialExecutor>()),
      bank_(sequencer_, *executor_, {options_.soundBank, options_.preferredSoundBank}, outputSampleRate) {
    if (options_.audioDrivers.empty())
        options_.audioDrivers = defaultAudioDrivers();
    output_ = std::make_unique<AudioOutput>(sequencer_, *executor_, options_.audioDrivers, outputSampleRate,
                                            options_.openDriver);
    bank_.onFailure = [this](const std::string& reason) { giveUpBank(reason); };
    bank_.onNotice = [this](const std::string& sentence) { notice(sentence); };
    bank_.onChange = [this] { playOnNewBank(); };
    watch_.emplace(*output_);
    watch_->onFailure = [this](const std::string& reason) { failToPlay(reason); };
    watch_->onNotice = [this](const std::string& sentence) { notice(sentence); };
    watch_->onLoss = [this](bool isLost) {
        if (onOutputLoss)
            onOutputLoss(isLost);
    };
    watch_->onThread = [this](std::uint64_t thread) {
        if (onUsualThread)
            onUsualThread(thread);
    };
    nextLook_.setSingleShot(true);
    QObject::connect(&nextLook_, &QTimer::timeout, [this] { lookAgain(); });
}

GeneralMIDIEngine::~GeneralMIDIEngine() {
    output_->close();
    executor_.reset(); // Runs all that was asked of it; the device is closed then.
}

std::unique_ptr<MIDIFilePlayer> GeneralMIDIEngine::makePlayer(const PlayableSong& song) {
    if (!SMFHeader::read(song.data))
        throw std::invalid_argument("The data is no Standard MIDI File.");
    bank_.load();
    return std::make_unique<Player>(*this, song.timeline ? song.timeline : Timeline::build(song.data));
}

void GeneralMIDIEngine::prepare() {
    lastUse_ = Clock::now();
    output_->open();
    nextLook_.start(soon);
}

void GeneralMIDIEngine::start(Player& player, double seconds) {
    playing_ = &player;
    sounding_ = &player;
    if (std::exchange(paused_, nullptr) == &player && seconds == pausedAt_)
        sequencer_.resume();
    else
        sequencer_.play(player.song(), seconds);
    output_->respond();
    prepare();
}

// Going on at the same place finds every note again; any other place, and another player, begins anew.
void GeneralMIDIEngine::pause(const Player& player, double seconds) {
    if (!isPlaying(player)) {
        if (paused_ != &player)
            halt(player);
        return;
    }
    playing_ = nullptr;
    sounding_ = nullptr;
    paused_ = sequencer_.pause(seconds, sound().lap()) ? &player : nullptr;
    output_->respond();
    pausedAt_ = seconds;
    lastUse_ = Clock::now();
    nextLook_.start(soon);
}

void GeneralMIDIEngine::halt(const Player& player) {
    if (sounding_ != &player && paused_ != &player)
        return;
    playing_ = nullptr;
    sounding_ = nullptr;
    paused_ = nullptr;
    lastUse_ = Clock::now();
    sequencer_.halt();
    output_->respond();
    nextLook_.start(soon);
}

bool GeneralMIDIEngine::isPlaying(const Player& player) const {
    return playing_ == &player && !sound().hasFinished();
}

void GeneralMIDIEngine::lookAgain() {
    watchSong();
    watch_->look(playing_ != nullptr);
    releaseWhenIdle();
    noticeOutput();
    const bool isCollected = sequencer_.collect() && bank_.collect(); // What is not played is given back.
    const bool isBeginning = playing_ != nullptr && !sequencer_.isSettled();
    if (isBeginning) // The bank may have come since.
        output_->respond();
    const bool isBusy = !isCollected || isBeginning || watch_->isWaiting();
    if (isBusy || playing_ != nullptr || !output_->isClosed())
        nextLook_.start(isBusy ? soon : untilNextLook());
}

// A song that plays is looked at again at its end.
std::chrono::milliseconds GeneralMIDIEngine::untilNextLook() const {
    if (playing_ == nullptr)
        return seldom;
    const std::chrono::duration<double> left(playing_->duration() - playing_->currentPosition());
    return std::clamp(std::chrono::ceil<std::chrono::milliseconds>(left), 10ms, seldom);
}

void GeneralMIDIEngine::watchSong() {
    const bool isRinging =
        output_->state() == AudioOutput::State::open && sound().hasFinished() && !isSilent();
    if (playing_ != nullptr || isRinging)
        lastUse_ = Clock::now();
    if (playing_ != nullptr && sound().hasFinished())
        playing_->complete();
}

// Without a bank, the state of the device is no news.
void GeneralMIDIEngine::giveUpBank(const std::string& reason) {
    output_->close();
    if (onFailure)
        onFailure(reason);
}

void GeneralMIDIEngine::playOnNewBank() {
    watchSong(); // A song that is over by now must not begin again.
    if (playing_ != nullptr) {
        sequencer_.play(playing_->song(), sound().position());
    } else {
        sounding_ = nullptr;
        paused_ = nullptr;
        sequencer_.halt();
    }
    output_->respond();
    nextLook_.start(soon);
}

void GeneralMIDIEngine::releaseWhenIdle() {
    const bool isIdle = playing_ == nullptr && Clock::now() - lastUse_ > idleTime;
    if (output_->isWanted() && isIdle)
        watch_->release();
    if (playing_ == nullptr && output_->isClosed() && bank_.isReady())
        output_->silence();
}

void GeneralMIDIEngine::noticeOutput() {
    std::string inUse = output_->driverName();
    if (std::exchange(outputInUse_, inUse) != inUse && onOutputChange)
        onOutputChange();
}

// Nobody misses a device that was only opened ahead.
void GeneralMIDIEngine::failToPlay(const std::string& reason) const {
    if (playing_ != nullptr && onOutputFailure)
        onOutputFailure(reason);
}

void GeneralMIDIEngine::notice(const std::string& sentence) const {
    if (onNotice)
        onNotice(sentence);
}

} // namespace tambrel
