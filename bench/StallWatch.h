#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

namespace tambrel::bench {

/// Memory of this process, in megabytes; `key` is one of those of /proc/self/status.
inline double megabytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(key + ":"))
            return std::atof(line.c_str() + key.size() + 1) / 1e3;
    return 0;
}

/// Resets the peak that VmHWM tells.
inline void forgetPeakMemory() {
    std::ofstream("/proc/self/clear_refs") << 5;
}

/// Measures how long the event loop is busy with anything at a time.
class StallWatch {
public:
    StallWatch() {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.callOnTimeout([this] { turn(); });
        sinceTurn_.start();
        timer_.start(std::chrono::milliseconds(1));
    }

    /// Runs the event loop until `isOver` is true, at most a minute. False when it never was.
    template<class Condition>
    bool run(Condition isOver) {
        QElapsedTimer elapsed;
        elapsed.start();
        while (!isOver() && elapsed.elapsed() < 60'000)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return isOver();
    }

    /// The longest time between two turns since the last call, in milliseconds.
    double longest() {
        turn();
        return static_cast<double>(std::exchange(longest_, 0)) / 1e6;
    }

private:
    void turn() {
        longest_ = std::max(longest_, sinceTurn_.nsecsElapsed());
        sinceTurn_.start();
    }

    QTimer timer_;
    QElapsedTimer sinceTurn_;
    qint64 longest_ = 0;
};

} // namespace tambrel::bench
