#pragma once

#include "WorkQueue.h"

#include <QObject>
#include <QSocketNotifier>
#include <QThread>

#include <cassert>
#include <memory>
#include <semaphore>
#include <thread>
#include <utility>

namespace tambrel {

/// Runs jobs one at a time, in the order of the calls, on one thread of its own. Belongs to the thread that
/// made it, which runs a Qt event loop; results come back there. Jobs do not throw. The destructor waits for
/// every job; a result that has not been delivered by then never is.
class SerialExecutor {
public:
    SerialExecutor() {
        QObject::connect(&notifier_, &QSocketNotifier::activated, [this] { results_.receive()->run(); });
    }
    ~SerialExecutor() {
        run([this] { isEnding_ = true; });
        thread_.join();
    }
    SerialExecutor(const SerialExecutor&) = delete;
    SerialExecutor& operator=(const SerialExecutor&) = delete;

    template<class Job>
    void run(Job job) {
        assert(QThread::currentThread() == notifier_.thread());
        jobs_.send(work(std::move(job)));
    }

    /// Waits for every job sent so far; results are delivered later, as always.
    void wait() {
        std::binary_semaphore reached(0);
        run([&reached] { reached.release(); });
        reached.acquire();
    }

    /// Calls `then` with what `job` returned.
    template<class Job, class Then>
    void run(Job job, Then then) {
        run([this, job = std::move(job), then = std::move(then)]() mutable {
            results_.send(
                work([then = std::move(then), result = job()]() mutable { then(std::move(result)); }));
        });
    }

private:
    // Not a std::function: what it holds would have to be copyable.
    template<class Callable>
    class CallableWork final : public WorkQueue::Work {
    public:
        explicit CallableWork(Callable callable) : callable_(std::move(callable)) {}
        void run() override { callable_(); }

    private:
        Callable callable_;
    };

    template<class Callable>
    static std::unique_ptr<WorkQueue::Work> work(Callable callable) {
        return std::make_unique<CallableWork<Callable>>(std::move(callable));
    }

    void runJobs() {
        while (!isEnding_)
            jobs_.receive()->run();
    }

    WorkQueue jobs_;
    WorkQueue results_;
    bool isEnding_ = false; // Set by the last job, on its own thread.
    QSocketNotifier notifier_{results_.descriptor(), QSocketNotifier::Read};
    std::thread thread_{[this] { runJobs(); }}; // Last: it uses all of the above.
};

} // namespace tambrel
