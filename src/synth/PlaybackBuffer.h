#pragma once

#include "MasterStage.h"
#include "Sequencer.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

namespace tambrel {

/// Everything between the sequencer and the audio driver: the master stage, the user's volume, the fades
/// around every order, and the pause. It remembers what it gave out, so that a driver may ask far ahead of
/// the loudspeaker and still take back what has not been heard when an order comes: the sound that is heard
/// is faded out of what is remembered, and the new sound follows. A pause keeps what was rendered ahead for
/// the resume, so that not a sample is lost. Three sides: control (the thread that commands the sequencer),
/// rendering (the driver's thread), and whoever opens and closes the driver, while none renders.
class PlaybackBuffer final : public AudioSource {
public:
    /// Frames that can be taken back at most.
    static constexpr int capacity = 1 << 15;

    using Clock = Time (*)();

    /// `sequencer` outlives this object, which alone renders it. The rate is in frames per second.
    PlaybackBuffer(Sequencer& sequencer, double sampleRate, Clock clock = std::chrono::steady_clock::now);

    // --- Control side ---

    /// Seconds into the song: what the loudspeaker plays at this moment.
    [[nodiscard]] double position() const;
    /// How often the song has been heard to begin again.
    [[nodiscard]] std::int64_t lap() const { return sequencer_.lapAt(songFrame()); }
    /// True once the end of the song has been heard; its last notes may still ring out.
    [[nodiscard]] bool hasFinished() const;
    /// True while nothing is heard and no order waits.
    [[nodiscard]] bool isSilent() const { return sequencer_.isSettled() && isQuiet(); }
    [[nodiscard]] UserVolume& volume() { return volume_; }

    // --- Any thread ---

    /// True while nothing is heard, whatever may be about to begin.
    [[nodiscard]] bool isQuiet() const {
        return heardFrames() >= silentFrom_.load(std::memory_order_acquire);
    }

    // --- While no driver renders ---

    void beginStream();
    /// What the driver has not played is given out again to the next one.
    void endStream();

    // --- Rendering side ---

    void renderAudio(float* left, float* right, int frames) noexcept override;
    [[nodiscard]] int takeBack(int frames) noexcept override;
    void heard(std::int64_t frames, Time when) noexcept override;

private:
    struct Frame {
        float left = 0, right = 0;
    };

    [[nodiscard]] std::int64_t heardFrames() const;
    [[nodiscard]] std::int64_t songFrame() const;
    [[nodiscard]] Frame& past(std::int64_t frame) {
        return past_[static_cast<std::size_t>(frame) % capacity];
    }
    [[nodiscard]] int giveAgain(int frames) noexcept;
    void takeOrder() noexcept;
    void keepAhead() noexcept;
    [[nodiscard]] bool isQuietAhead() noexcept;
    void carryOut() noexcept;
    void begin(std::int64_t songFrame) noexcept;
    void forgetAhead() noexcept;
    void goStill() noexcept;
    void goOn() noexcept;
    [[nodiscard]] Frame nextFrame() noexcept;
    void renderAhead() noexcept;

    Sequencer& sequencer_;
    const double sampleRate_;
    const Clock clock_;
    MasterStage master_;
    UserVolume volume_;

    // Frames are counted from the first that was ever given out.
    std::int64_t frame_ = 0;      // The next that is given out.
    std::int64_t stateBegan_ = 0; // Where the latest order came into force.
    std::vector<Frame> past_;     // A ring of what was given out, before the volume,
    int again_ = 0;               // and how much of it, from `frame_` on, is given out again.
    std::vector<Frame> ahead_;    // What the sequencer has rendered and nobody has heard,
    std::size_t aheadAt_ = 0;     // of which this is the next.
    std::size_t aheadEnd_ = 0;
    std::optional<Sequencer::Wish> wish_; // Carried out after the fade-out.
    int fadeLeft_ = 0;
    bool isStill_ = true;
    bool isTakenBack_ = false; // By this driver: then orders are taken there alone.
    bool keepsAhead_ = false;  // From a pause to its resume, which begins at the front of `ahead_`:
    std::int64_t songFrameKept_ = 0;

    // Written by rendering, read by control.
    std::atomic<std::int64_t> written_{0};    // `frame_`.
    std::atomic<std::int64_t> songBegins_{0}; // The frame at which the song's frame 0 is, or would be, heard.
    std::atomic<std::int64_t> silentFrom_{0};
    // When frame 0 would have been heard, in nanoseconds; and where the driver came in.
    std::atomic<std::int64_t> clockZero_;
    std::atomic<std::int64_t> streamBegins_{0};
};

} // namespace tambrel
