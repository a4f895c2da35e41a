#pragma once

#include "PulseConnection.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace tambrel {

/// A stream of PulseAudio, or of PipeWire through its PulseAudio interface, with some 200 ms in the server.
/// So a few wake-ups a second are enough; and when the source has something else to say, what has not been
/// heard is written over.
class PulseAudioDriver final : public AudioDriver {
public:
    /// Blocks until the stream is there. Throws AudioDriverError.
    PulseAudioDriver(const ApplicationNames& names, double sampleRate, AudioSource& source);
    ~PulseAudioDriver() override;

    [[nodiscard]] std::string name() const override { return "pulseaudio"; }
    void respond() noexcept override;
    [[nodiscard]] bool hasFailed() const noexcept override {
        return hasFailed_.load(std::memory_order_relaxed);
    }
    [[nodiscard]] std::uint64_t usualThread() const noexcept override {
        return thread_.load(std::memory_order_relaxed);
    }
    [[nodiscard]] std::uint64_t underruns() const noexcept override {
        return underruns_.load(std::memory_order_relaxed);
    }

private:
    static constexpr int framesPerChunk = 2048;

    struct EndStream {
        void operator()(pa_stream* stream) const {
            pa_stream_disconnect(stream);
            pa_stream_unref(stream);
        }
    };

    void openStream();
    void listenTo(pa_stream* stream);
    void listenToOrders();
    void end();
    // All below run on libpulse's thread.
    void learnOfSink();
    void look();
    void writeOver();
    void fill();
    void write(int frames, std::int64_t seek);
    void tellTime();
    [[nodiscard]] std::int64_t framesIn(pa_usec_t time) const;

    const double sampleRate_;
    AudioSource& source_;
    PulseConnection connection_;
    std::unique_ptr<pa_stream, EndStream> stream_;
    int orders_ = -1; // An event descriptor: readable once the source has something else to say.
    pa_io_event* onOrder_ = nullptr;
    pa_defer_event* refill_ = nullptr;
    bool canRewind_ = false;   // What the sink has taken over can be written over too.
    std::int64_t written_ = 0; // Frames, without those that were written over.
    std::int64_t lead_ = 0;    // Of these, silence while the device starts, which may tear what it is given.
    bool hasStarted_ = false;
    std::array<float, framesPerChunk> left_{};
    std::array<float, framesPerChunk> right_{};
    std::atomic<bool> hasFailed_{false};
    std::atomic<std::uint64_t> underruns_{0};
    std::atomic<std::uint64_t> thread_{0};
};

} // namespace tambrel
