#include "Interruption.h"

#include <atomic>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>

namespace tambrel::cli::Interruption {
namespace {

std::atomic<int> first{0};

// Never destroyed: the last threads may still look at it.
std::stop_source& source() {
    static auto& leaked = *new std::stop_source;
    return leaked;
}

void dieOf(int signal) {
    std::signal(signal, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    kill(getpid(), signal);
}

sigset_t signalsToWaitFor() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler != SIG_IGN)
            sigaddset(&signals, signal);
    }
    return signals;
}

void waitFor(sigset_t signals) {
    for (;;) {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0)
            continue;
        if (first.load() != 0)
            dieOf(signal);
        raise(signal);
    }
}

} // namespace

void listen() {
    std::signal(SIGPIPE, SIG_IGN);
    static_cast<void>(descriptor()); // Opened before there are threads.
    const sigset_t signals = signalsToWaitFor();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread(waitFor, signals).detach();
}

std::stop_token token() {
    return source().get_token();
}

int signal() {
    return first.load();
}

int descriptor() {
    static const int event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return event;
}

void raise(int signal) {
    int none = 0;
    first.compare_exchange_strong(none, signal);
    source().request_stop();
    const std::uint64_t one = 1;
    static_cast<void>(!write(descriptor(), &one, sizeof one));
}

void die() {
    if (const int signal = first.load(); signal != 0)
        dieOf(signal);
}

} // namespace tambrel::cli::Interruption
