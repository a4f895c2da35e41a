#pragma once

#include <QMetaObject>
#include <QObject>
#include <QThread>
#include <QThreadPool>

#include <cassert>
#include <utility>

namespace tambrel {

/// Runs jobs one at a time, in the order of the calls, on one thread of its own. Belongs to the thread that
/// made it, which runs a Qt event loop; results come back there. Jobs do not throw. The destructor waits for
/// every job; a result that has not been delivered by then never is.
class SerialExecutor {
public:
    SerialExecutor() { pool_.setMaxThreadCount(1); }

    template<class Job>
    void run(Job job) {
        assert(QThread::currentThread() == context_.thread());
        pool_.start(std::move(job));
    }

    /// Calls `then` with what `job` returned.
    template<class Job, class Then>
    void run(Job job, Then then) {
        run([this, job = std::move(job), then = std::move(then)]() mutable {
            auto deliver = [then = std::move(then), result = job()]() mutable { then(std::move(result)); };
            QMetaObject::invokeMethod(&context_, std::move(deliver), Qt::QueuedConnection);
        });
    }

private:
    QObject context_;
    QThreadPool pool_; // Destroyed first, which waits: a job may need the context until its end.
};

} // namespace tambrel
