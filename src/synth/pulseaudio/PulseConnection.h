#pragma once

#include "AudioDriver.h"
#include "DestroyedBy.h"

#include <pulse/pulseaudio.h>

#include <memory>

namespace tambrel {

using PulseProperties = std::unique_ptr<pa_proplist, DestroyedBy<pa_proplist_free>>;

/// A connection to the user's sound server, and the thread of libpulse that serves it.
class PulseConnection {
public:
    /// Blocks until the server has answered. Throws AudioDriverError.
    explicit PulseConnection(const ApplicationNames& names);
    /// Ends the thread.
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    [[nodiscard]] pa_context* context() const { return context_.get(); }
    [[nodiscard]] pa_mainloop_api* api() const { return pa_threaded_mainloop_get_api(loop_.get()); }
    /// While the thread's lock is held: waits for a call of `wake`.
    void wait() const { pa_threaded_mainloop_wait(loop_.get()); }
    void wake() const { pa_threaded_mainloop_signal(loop_.get(), 0); }
    /// Throws AudioDriverError with what libpulse says.
    [[noreturn]] void fail() const;

    /// Holds the thread's lock.
    class Lock {
    public:
        explicit Lock(const PulseConnection& connection) : loop_(connection.loop_.get()) {
            pa_threaded_mainloop_lock(loop_);
        }
        ~Lock() { pa_threaded_mainloop_unlock(loop_); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        pa_threaded_mainloop* loop_;
    };

private:
    struct EndContext {
        void operator()(pa_context* context) const {
            pa_context_disconnect(context);
            pa_context_unref(context);
        }
    };
    void connect();
    void disconnect();

    std::unique_ptr<pa_threaded_mainloop, DestroyedBy<pa_threaded_mainloop_free>> loop_{
        pa_threaded_mainloop_new()};
    std::unique_ptr<pa_context, EndContext> context_;
};

} // namespace tambrel
