#pragma once

#include <QSocketNotifier>

#include <memory>

namespace tambrel {

/// Turns SIGTERM, SIGINT and SIGHUP into a normal end of the event loop, so that a session's end or a kill
/// leaves no note hanging and loses nothing. One at a time, on the main thread.
class TerminationSignals {
public:
    TerminationSignals();
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace tambrel
