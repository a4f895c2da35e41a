#pragma once

#include "AudioDriver.h"
#include "Chase.h"
#include "EventFeed.h"
#include "LapTail.h"
#include "MIDIInstrument.h"
#include "RingOut.h"
#include "Timeline.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace tambrel {

/// Plays timelines on an instrument, the synthesizer. Two sides that share no lock: the control side (one
/// thread, the main thread in the window) says what to play, `renderAudio` (the audio callback, or a loop
/// that renders to a file) plays it. Orders are handed over whole through one atomic pointer and come back
/// through another, to be freed by the control side, so that rendering never allocates, locks or frees.
/// Events start on blocks of 64 frames.
class Sequencer final : public AudioSource {
public:
    explicit Sequencer(double sampleRate);
    ~Sequencer() override;
    Sequencer(const Sequencer&) = delete;
    Sequencer& operator=(const Sequencer&) = delete;

    /// Not owned. Until the first rendering gives silence and orders wait; another one takes over with the
    /// next order to play or halt, and the one before is free once that has been carried out (`isSettled`).
    /// Any thread.
    void setSynthesizer(MIDIInstrument& synthesizer) {
        handedOver_.store(&synthesizer, std::memory_order_release);
    }
    [[nodiscard]] double sampleRate() const { return sampleRate_; }

    // --- Control side ---

    /// Plays `song` from `seconds` (0 to its duration) on: what sounds is faded out within a few
    /// milliseconds, the channels get the state that playing up to there would have left and the notes that
    /// are held there, then the song goes on.
    void play(std::shared_ptr<const Timeline> song, double seconds);
    /// Keeps everything as it sounds at `seconds`, so that `resume` can go on. False, and halted, when the
    /// song of the latest `play` has not begun yet. `lap` is the one that is heard.
    [[nodiscard]] bool pause(double seconds, std::int64_t lap = 0);
    /// Goes on after a `pause` that was true, with every note that sounded then.
    void resume();
    /// Fades out what sounds; nothing sounds any more after a few milliseconds of rendering.
    void halt();
    /// Whether a song begins again when its end is rendered, without a gap: what sounds there fades out
    /// within the first 21 ms of the next lap. Nothing shorter than that is repeated.
    void setLooping(bool isLooping) { isLooping_.store(isLooping, std::memory_order_relaxed); }
    [[nodiscard]] bool isLooping() const { return isLooping_.load(std::memory_order_relaxed); }
    /// Seconds into the song of the latest `play`: what has been rendered, never beyond the song's end.
    /// 0 after `halt`.
    [[nodiscard]] double position() const;
    /// The same for a frame that is heard, rather than rendered, at this moment. Frames are counted from the
    /// beginning of the song on, through all its laps.
    [[nodiscard]] double positionAt(std::int64_t frame) const;
    /// How often the song has begun again up to a frame.
    [[nodiscard]] std::int64_t lapAt(std::int64_t frame) const;
    /// Where the song of the latest `play` ends: in the lap that is rendered.
    [[nodiscard]] std::int64_t endFrame() const {
        return lapBegins_.load(std::memory_order_acquire) + songFrames_;
    }
    /// True once the song of the latest `play` has been rendered to its end; its last notes may still ring
    /// out.
    [[nodiscard]] bool hasFinished() const;
    /// True when every order has been carried out.
    [[nodiscard]] bool isSettled() const { return serial_.load(std::memory_order_acquire) == lastSerial_; }
    /// True while rendering gives nothing but silence and nothing waits to be played.
    [[nodiscard]] bool isSilent() const;
    /// Frees what rendering has let go of. False while rendering still holds an older order.
    bool collect();

    // --- Rendering side ---

    enum class OrderKind { halt, play, pause, resume };
    struct Wish {
        OrderKind kind;
        std::int64_t firstFrame; ///< Of the song; for OrderKind::play.
    };

    /// Renders on, and carries out orders to play and to halt after a fade-out of what sounds.
    void renderAudio(float* left, float* right, int frames) noexcept override;

    /// For a caller that fades, pauses and resumes itself: the order that has come since, if any; then,
    /// whenever it is due and on whole blocks, `carryOut`; and `render` in place of `renderAudio`.
    [[nodiscard]] std::optional<Wish> takeOrder() noexcept;
    void carryOut() noexcept;
    void render(float* left, float* right, int frames) noexcept;
    /// True while rendering gives nothing but silence.
    [[nodiscard]] bool isSoundless() const noexcept { return phase_ == Phase::silent; }

private:
    struct Order;
    enum class Phase {
        silent,
        playing,
        ringing, ///< The song is over, its last notes ring out.
        fading,  ///< What sounds fades out, then the waiting order is carried out.
    };

    void send(std::unique_ptr<Order> order);
    void begin() noexcept;
    void retire(Order* order) noexcept;
    void beginBlock() noexcept;
    void beginLap() noexcept;
    void playEvents() noexcept;
    void startFading() noexcept;
    void goSilent() noexcept;
    void fadeOut(float* left, float* right, int frames) noexcept;

    const double sampleRate_;

    // Control side.
    std::uint64_t lastSerial_ = 0;
    OrderKind lastKind_ = OrderKind::halt;
    std::shared_ptr<const Timeline> song_; // Of the latest order; empty when that was to halt.
    std::int64_t songFrames_ = 0;
    double start_ = 0;          // Where the latest order begins, in seconds,
    std::int64_t startLap_ = 0; // and in which lap.
    std::size_t ordersOut_ = 0; // Sent and not yet freed.

    // Hand-over.
    std::atomic<MIDIInstrument*> handedOver_{nullptr};
    std::atomic<Order*> incoming_{nullptr};
    std::atomic<Order*> retired_{nullptr}; // A list through Order::next.
    std::atomic<std::uint64_t> serial_{0}; // Of the latest order that has been carried out.
    std::atomic<std::int64_t> frame_{0};   // Rendered frames of its song.
    std::atomic<std::uint64_t> finishedSerial_{0};
    std::atomic<bool> soundless_{true};
    std::atomic<bool> isLooping_{false};
    std::atomic<std::int64_t> lapBegins_{0}; // Frames of the laps that are over: whole songs.

    // Rendering side.
    MIDIInstrument* synthesizer_ = nullptr;
    Phase phase_ = Phase::silent;
    Order* current_ = nullptr;
    Order* waiting_ = nullptr;
    EventFeed feed_;
    std::uint64_t serialCarriedOut_ = 0;
    std::int64_t position_ = 0; // Frames into the song at the start of the next block.
    int blockOffset_ = 0;       // Frames of the current block that have been given out.
    int fadeLeft_ = 0;          // Frames of the fade-out that are still to come.
    bool carriesOutByItself_ = false;
    bool isOver_ = false; // The song.
    LapTail tail_;
    RingOut ringOut_;
};

} // namespace tambrel
