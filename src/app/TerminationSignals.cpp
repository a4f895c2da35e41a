#include "TerminationSignals.h"

#include <QCoreApplication>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace tambrel {
namespace {

// A handler may do little more than write to a pipe, which the event loop reads.
std::array<int, 2> wakeUp{-1, -1};

void handleSignal(int) {
    const char byte = 0;
    static_cast<void>(!write(wakeUp[1], &byte, 1));
}

void setHandler(void (*handler)(int)) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        std::signal(signal, handler);
}

} // namespace

TerminationSignals::TerminationSignals() {
    if (pipe2(wakeUp.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // The signals then end the program as they do by default.
    notifier_ = std::make_unique<QSocketNotifier>(wakeUp[0], QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [] { QCoreApplication::quit(); });
    setHandler(handleSignal);
}

TerminationSignals::~TerminationSignals() {
    if (!notifier_)
        return;
    setHandler(SIG_DFL);
    notifier_.reset();
    for (int& end : wakeUp)
        close(std::exchange(end, -1));
}

} // namespace tambrel
