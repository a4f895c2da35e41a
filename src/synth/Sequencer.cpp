#include "Sequencer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace tambrel {
namespace {

constexpr int fadeFrames = 5 * synthesizerBlock; // 7 ms at 48 kHz: short, and free of a click.

} // namespace

/// What to do next.
struct Sequencer::Order {
    using Kind = OrderKind;

    explicit Order(Kind what) : kind(what) {}

    const Kind kind;
    std::uint64_t serial = 0;
    // For Kind::play.
    std::shared_ptr<const Timeline> song;
    std::int64_t firstFrame = 0;
    std::int64_t songFrames = 0;
    std::size_t firstEvent = 0;
    std::vector<Chased> chasedState;
    std::optional<TempoMap::Cursor> tempo;
    std::optional<TempoMap::Cursor> tempoOfLap; // At the beginning of the song.
    Order* next = nullptr;
};

Sequencer::Sequencer(double sampleRate) : sampleRate_(sampleRate), ringOut_(sampleRate) {}

Sequencer::~Sequencer() {
    for (Order* order : {incoming_.load(), current_, waiting_})
        delete order;
    collect();
}

// --- Control side ---

void Sequencer::play(std::shared_ptr<const Timeline> song, double seconds) {
    auto order = std::make_unique<Order>(Order::Kind::play);
    song_ = std::move(song);
    start_ = std::clamp(seconds, 0.0, song_->duration());
    startLap_ = 0;
    order->song = song_;
    order->firstFrame = std::llround(start_ * sampleRate_);
    order->songFrames = songFrames_ = static_cast<std::int64_t>(std::ceil(song_->duration() * sampleRate_));
    // Events at this very tick are played, not chased.
    order->firstEvent = song_->firstEventAt(song_->tempoMap().firstTickFrom(start_));
    order->chasedState = chaseTo(*song_, order->firstEvent, start_);
    order->tempo.emplace(song_->tempoMap(), start_);
    order->tempoOfLap.emplace(song_->tempoMap());
    send(std::move(order));
}

bool Sequencer::pause(double seconds, std::int64_t lap) {
    // What has not begun yet has nothing to keep.
    if (!song_ || !(isSettled() || lastKind_ == OrderKind::resume)) {
        halt();
        return false;
    }
    start_ = seconds;
    startLap_ = lap;
    send(std::make_unique<Order>(Order::Kind::pause));
    return true;
}

void Sequencer::resume() {
    send(std::make_unique<Order>(Order::Kind::resume));
}

void Sequencer::halt() {
    song_.reset();
    start_ = 0;
    send(std::make_unique<Order>(Order::Kind::halt));
}

void Sequencer::send(std::unique_ptr<Order> order) {
    order->serial = ++lastSerial_;
    lastKind_ = order->kind;
    ++ordersOut_;
    // An order that has not been taken yet is void: the new one is complete.
    if (const std::unique_ptr<Order> overtaken{
            incoming_.exchange(order.release(), std::memory_order_acq_rel)})
        --ordersOut_;
    collect();
}

double Sequencer::position() const {
    return hasFinished() ? song_->duration() : positionAt(frame_.load(std::memory_order_relaxed));
}

double Sequencer::positionAt(std::int64_t frame) const {
    if (!song_ || !isSettled() || lastKind_ == OrderKind::pause)
        return start_;
    const std::int64_t lap = lapAt(frame);
    return std::clamp(static_cast<double>(frame - lap * songFrames_) / sampleRate_,
                      lap == startLap_ ? start_ : 0, song_->duration());
}

std::int64_t Sequencer::lapAt(std::int64_t frame) const {
    if (!isSettled() || lastKind_ == OrderKind::pause)
        return startLap_;
    const std::int64_t rendered = lapBegins_.load(std::memory_order_acquire);
    return rendered == 0 ? 0 : std::clamp<std::int64_t>(frame, 0, rendered) / songFrames_;
}

bool Sequencer::hasFinished() const {
    return song_ && finishedSerial_.load(std::memory_order_acquire) == lastSerial_;
}

bool Sequencer::isSilent() const {
    return isSettled() && soundless_.load(std::memory_order_acquire);
}

bool Sequencer::collect() {
    Order* order = retired_.exchange(nullptr, std::memory_order_acquire);
    while (order != nullptr) {
        const std::unique_ptr<Order> done(order);
        order = done->next;
        --ordersOut_;
    }
    return ordersOut_ <= 1;
}

// --- Rendering side ---

void Sequencer::renderAudio(float* left, float* right, int frames) noexcept {
    carriesOutByItself_ = true;
    if (takeOrder() && (phase_ == Phase::playing || phase_ == Phase::ringing))
        startFading();
    render(left, right, frames);
}

void Sequencer::render(float* left, float* right, int frames) noexcept {
    if (handedOver_.load(std::memory_order_relaxed) == nullptr) {
        std::fill_n(left, frames, 0.0F);
        std::fill_n(right, frames, 0.0F);
        return;
    }
    while (frames > 0) {
        if (blockOffset_ == 0)
            beginBlock();
        const int step = std::min(frames, synthesizerBlock - blockOffset_);
        if (phase_ == Phase::silent) {
            std::fill_n(left, step, 0.0F);
            std::fill_n(right, step, 0.0F);
        } else {
            synthesizer_->render(left, right, step);
        }
        tail_.addTo(left, right, step);
        if (phase_ == Phase::fading)
            fadeOut(left, right, step);
        if (phase_ == Phase::ringing && ringOut_.isOver(left, right, step, synthesizer_->activeVoices()))
            startFading();
        blockOffset_ = (blockOffset_ + step) % synthesizerBlock;
        left += step;
        right += step;
        frames -= step;
    }
}

std::optional<Sequencer::Wish> Sequencer::takeOrder() noexcept {
    if (handedOver_.load(std::memory_order_relaxed) == nullptr ||
        incoming_.load(std::memory_order_relaxed) == nullptr)
        return std::nullopt;
    retire(std::exchange(waiting_, incoming_.exchange(nullptr, std::memory_order_acq_rel)));
    return Wish{waiting_->kind, waiting_->firstFrame};
}

void Sequencer::retire(Order* order) noexcept {
    if (order == nullptr)
        return;
    order->next = retired_.load(std::memory_order_relaxed);
    while (!retired_.compare_exchange_weak(order->next, order, std::memory_order_release,
                                           std::memory_order_relaxed)) {
    }
}

void Sequencer::startFading() noexcept {
    phase_ = Phase::fading;
    fadeLeft_ = fadeFrames;
}

void Sequencer::beginBlock() noexcept {
    const bool hasFaded = phase_ == Phase::fading && fadeLeft_ <= 0;
    if (waiting_ != nullptr && carriesOutByItself_ && (phase_ == Phase::silent || hasFaded))
        carryOut();
    else if (hasFaded)
        goSilent();
    if (phase_ == Phase::playing) {
        const bool isRepeated = isLooping() && current_->songFrames > std::int64_t{LapTail::frames};
        if (isRepeated && position_ >= current_->songFrames)
            beginLap();
        playEvents();
    }
}

void Sequencer::carryOut() noexcept {
    Order* order = std::exchange(waiting_, nullptr);
    serialCarriedOut_ = order->serial;
    switch (order->kind) {
    case Order::Kind::play:
        retire(std::exchange(current_, order));
        synthesizer_ = handedOver_.load(std::memory_order_acquire);
        begin();
        break;
    case Order::Kind::halt:
        retire(std::exchange(current_, order));
        synthesizer_ = handedOver_.load(std::memory_order_acquire);
        goSilent();
        break;
    case Order::Kind::pause:
    case Order::Kind::resume: // The sequencer is what is not asked for sound meanwhile.
        retire(order);
        if (isOver_)
            finishedSerial_.store(serialCarriedOut_, std::memory_order_release);
        break;
    }
    serial_.store(serialCarriedOut_, std::memory_order_release);
}

void Sequencer::begin() noexcept {
    isOver_ = false;
    tail_.drop();
    lapBegins_.store(0, std::memory_order_relaxed);
    synthesizer_->reset();
    for (const Chased& chased : current_->chasedState) {
        if (chased.isNote)
            synthesizer_->resumeNote(chased.message, chased.age);
        else
            synthesizer_->send(chased.message);
    }
    feed_.begin(*current_->song, current_->firstEvent);
    position_ = current_->firstFrame;
    frame_.store(position_, std::memory_order_relaxed);
    phase_ = Phase::playing;
    soundless_.store(false, std::memory_order_release);
}

// The end lies within a block: what that has too much is gone of the next lap, so that laps are as long as
// the song.
void Sequencer::beginLap() noexcept {
    const std::int64_t over = position_ - position_ % current_->songFrames;
    position_ -= over;
    lapBegins_.store(lapBegins_.load(std::memory_order_relaxed) + over, std::memory_order_release);
    tail_.take(*synthesizer_);
    synthesizer_->reset();
    feed_.begin(*current_->song, 0);
    current_->tempo = current_->tempoOfLap;
}

void Sequencer::goSilent() noexcept {
    tail_.drop();
    synthesizer_->reset();
    phase_ = Phase::silent;
    soundless_.store(true, std::memory_order_release);
}

void Sequencer::playEvents() noexcept {
    const bool isOver = position_ >= current_->songFrames;
    // The block that lies nearest to an event plays it.
    const double nearest = (static_cast<double>(position_) + synthesizerBlock / 2.0) / sampleRate_;
    constexpr std::uint32_t lastTick = std::numeric_limits<std::uint32_t>::max();
    feed_.play(*synthesizer_, isOver ? lastTick : current_->tempo->tickAt(nearest));
    frame_.store(lapBegins_.load(std::memory_order_relaxed) + position_, std::memory_order_relaxed);
    position_ += synthesizerBlock;
    if (isOver && feed_.isOver()) {
        synthesizer_->releaseNotes();
        phase_ = Phase::ringing;
        isOver_ = true;
        ringOut_.begin();
        finishedSerial_.store(serialCarriedOut_, std::memory_order_release);
    }
}

void Sequencer::fadeOut(float* left, float* right, int frames) noexcept {
    for (int frame = 0; frame < frames; ++frame) {
        const float gain = static_cast<float>(std::max(fadeLeft_--, 0)) / fadeFrames;
        left[frame] *= gain;
        right[frame] *= gain;
    }
}

} // namespace tambrel
