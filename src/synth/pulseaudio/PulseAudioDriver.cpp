#include "PulseAudioDriver.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace tambrel {
namespace {

constexpr int channels = 2;
constexpr std::int64_t bytesPerFrame = channels * sizeof(float);
constexpr double secondsAhead = 0.2;
constexpr double secondsAtOnce = 0.05; // The server asks for no less.
// What is this near to the loudspeaker stays: the server needs the time to take over what is written.
constexpr double secondsTooNear = 0.012;
constexpr double secondsWrittenFirst = 0.06; // In answer to an order; the rest may come later.

template<class Owner, void (Owner::*call)()>
void callOn(pa_stream*, void* self) {
    (static_cast<Owner*>(self)->*call)();
}

void drop(pa_operation* operation) {
    if (operation != nullptr)
        pa_operation_unref(operation);
}

} // namespace

PulseAudioDriver::PulseAudioDriver(const ApplicationNames& names, double sampleRate, AudioSource& source)
    : sampleRate_(sampleRate), source_(source), connection_(names) {
    source_.heard(0, AudioSource::Time::max());
    try {
        const PulseConnection::Lock lock(connection_);
        listenToOrders();
        openStream();
        learnOfSink();
    } catch (...) {
        end();
        throw;
    }
}

PulseAudioDriver::~PulseAudioDriver() {
    end();
}

void PulseAudioDriver::end() {
    const PulseConnection::Lock lock(connection_);
    stream_.reset();
    pa_context_set_state_callback(connection_.context(), nullptr, nullptr);
    pa_context_disconnect(connection_.context()); // No answer to a question comes any more.
    connection_.api()->defer_free(refill_);
    connection_.api()->io_free(onOrder_);
    close(orders_);
}

void PulseAudioDriver::listenToOrders() {
    orders_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    onOrder_ = connection_.api()->io_new(
        connection_.api(), orders_, PA_IO_EVENT_INPUT,
        [](pa_mainloop_api*, pa_io_event*, int descriptor, pa_io_event_flags_t, void* self) {
            eventfd_t count = 0;
            eventfd_read(descriptor, &count);
            static_cast<PulseAudioDriver*>(self)->look();
        },
        this);
    refill_ = connection_.api()->defer_new(
        connection_.api(),
        [](pa_mainloop_api* api, pa_defer_event* event, void* self) {
            api->defer_enable(event, 0);
            static_cast<PulseAudioDriver*>(self)->fill();
        },
        this);
    connection_.api()->defer_enable(refill_, 0);
}

void PulseAudioDriver::openStream() {
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(sampleRate_), channels};
    const PulseProperties properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_MEDIA_ROLE, "music");
    stream_.reset(
        pa_stream_new_with_proplist(connection_.context(), "Playback", &format, nullptr, properties.get()));
    if (stream_ == nullptr)
        connection_.fail();
    listenTo(stream_.get());
    const auto bytes = [this](double seconds) {
        return static_cast<std::uint32_t>(std::lround(seconds * sampleRate_) * bytesPerFrame);
    };
    constexpr auto asTheServerLikes = static_cast<std::uint32_t>(-1);
    const pa_buffer_attr buffer{.maxlength = asTheServerLikes,
                                .tlength = bytes(secondsAhead),
                                .prebuf = bytes(secondsAtOnce),
                                .minreq = bytes(secondsAtOnce),
                                .fragsize = asTheServerLikes};
    if (pa_stream_connect_playback(stream_.get(), nullptr, &buffer, PA_STREAM_AUTO_TIMING_UPDATE, nullptr,
                                   nullptr) < 0)
        connection_.fail();
    while (pa_stream_get_state(stream_.get()) != PA_STREAM_READY) {
        if (!PA_STREAM_IS_GOOD(pa_stream_get_state(stream_.get())))
            connection_.fail();
        connection_.wait();
    }
}

void PulseAudioDriver::listenTo(pa_stream* stream) {
    using Self = PulseAudioDriver;
    pa_stream_set_state_callback(
        stream,
        [](pa_stream* changed, void* self) {
            auto& driver = *static_cast<Self*>(self);
            driver.thread_.store(static_cast<std::uint64_t>(gettid()), std::memory_order_relaxed);
            if (!PA_STREAM_IS_GOOD(pa_stream_get_state(changed)))
                driver.hasFailed_.store(true, std::memory_order_relaxed);
            driver.connection_.wake();
        },
        this);
    pa_stream_set_write_callback(
        stream, [](pa_stream*, std::size_t, void* self) { static_cast<Self*>(self)->fill(); }, this);
    pa_stream_set_underflow_callback(
        stream,
        [](pa_stream*, void* self) {
            if (static_cast<Self*>(self)->hasStarted_)
                static_cast<Self*>(self)->underruns_.fetch_add(1, std::memory_order_relaxed);
        },
        this);
    pa_stream_set_latency_update_callback(stream, callOn<Self, &Self::tellTime>, this);
    pa_stream_set_moved_callback(stream, callOn<Self, &Self::learnOfSink>, this);
}

void PulseAudioDriver::respond() noexcept {
    eventfd_write(orders_, 1);
}

// A sink whose latency follows its streams can take back what it was given; the others, those over a network
// and those of PipeWire cannot.
void PulseAudioDriver::learnOfSink() {
    canRewind_ = false;
    drop(pa_context_get_server_info(
        connection_.context(),
        [](pa_context* context, const pa_server_info* server, void* self) {
            if (server == nullptr ||
                std::string_view(server->server_name).find("PipeWire") != std::string::npos)
                return;
            drop(pa_context_get_sink_info_by_index(
                context, pa_stream_get_device_index(static_cast<PulseAudioDriver*>(self)->stream_.get()),
                [](pa_context*, const pa_sink_info* sink, int, void* driver) {
                    if (sink != nullptr)
                        static_cast<PulseAudioDriver*>(driver)->canRewind_ =
                            (sink->flags & PA_SINK_DYNAMIC_LATENCY) != 0 &&
                            (sink->flags & PA_SINK_NETWORK) == 0;
                },
                self));
        },
        this));
}

// The server is asked how far it is, then what it has not played is written over.
void PulseAudioDriver::look() {
    if (!hasStarted_)
        return;
    drop(pa_stream_update_timing_info(
        stream_.get(),
        [](pa_stream*, int success, void* self) {
            if (success != 0)
                static_cast<PulseAudioDriver*>(self)->writeOver();
        },
        this));
}

void PulseAudioDriver::writeOver() {
    const pa_timing_info* const time = pa_stream_get_timing_info(stream_.get());
    if (time == nullptr || time->read_index_corrupt != 0)
        return;
    const std::int64_t taken = time->read_index / bytesPerFrame + framesIn(time->transport_usec);
    const std::int64_t heard = canRewind_ ? taken - framesIn(time->sink_usec) : taken;
    const auto tooNear = static_cast<std::int64_t>(secondsTooNear * sampleRate_);
    const std::int64_t free = std::max<std::int64_t>(heard + tooNear, 0);
    const std::int64_t unheard = std::max<std::int64_t>(written_ - free, 0);
    const std::int64_t rendered = written_ - lead_;
    std::int64_t back = source_.takeBack(static_cast<int>(std::min(unheard, rendered)));
    if (back == rendered) {
        lead_ -= unheard - back;
        back = unheard;
    }
    written_ -= back;
    const auto first = static_cast<std::int64_t>(secondsWrittenFirst * sampleRate_);
    std::int64_t seek = -back;
    for (std::int64_t left = first; left > 0; left -= framesPerChunk, seek = 0)
        write(static_cast<int>(std::min<std::int64_t>(left, framesPerChunk)), seek);
    // What is written goes out when this returns.
    connection_.api()->defer_enable(refill_, 1);
}

void PulseAudioDriver::fill() {
    const std::size_t bytes = pa_stream_writable_size(stream_.get());
    if (bytes == static_cast<std::size_t>(-1))
        return;
    for (auto left = static_cast<std::int64_t>(bytes) / bytesPerFrame; left > 0; left -= framesPerChunk)
        write(static_cast<int>(std::min<std::int64_t>(left, framesPerChunk)), 0);
}

void PulseAudioDriver::write(int frames, std::int64_t seek) {
    void* memory = nullptr;
    std::size_t bytes = static_cast<std::size_t>(frames) * bytesPerFrame;
    if (pa_stream_begin_write(stream_.get(), &memory, &bytes) < 0 || memory == nullptr)
        return;
    frames = static_cast<int>(bytes / bytesPerFrame);
    if (hasStarted_)
        source_.renderAudio(left_.data(), right_.data(), frames);
    else
        lead_ += frames;
    auto* interleaved = static_cast<float*>(memory);
    for (std::size_t frame = 0; frame < static_cast<std::size_t>(frames); ++frame) {
        *interleaved++ = left_[frame];
        *interleaved++ = right_[frame];
    }
    written_ += frames;
    pa_stream_write(stream_.get(), memory, static_cast<std::size_t>(frames) * bytesPerFrame, nullptr,
                    seek * bytesPerFrame, PA_SEEK_RELATIVE);
}

void PulseAudioDriver::tellTime() {
    const pa_timing_info* const time = pa_stream_get_timing_info(stream_.get());
    if (time == nullptr || time->read_index_corrupt != 0 || time->playing == 0)
        return;
    const std::int64_t heard =
        time->read_index / bytesPerFrame + framesIn(time->transport_usec) - framesIn(time->sink_usec);
    if (heard <= 0)
        return;
    if (!std::exchange(hasStarted_, true))
        writeOver();
    timeval now{};
    pa_gettimeofday(&now);
    const std::chrono::microseconds age(pa_timeval_diff(&now, &time->timestamp));
    source_.heard(heard - lead_, std::chrono::steady_clock::now() - age);
}

std::int64_t PulseAudioDriver::framesIn(pa_usec_t time) const {
    return static_cast<std::int64_t>(static_cast<double>(time) * sampleRate_ / 1e6);
}

} // namespace tambrel
