#pragma once

#include "SerialExecutor.h"
#include "TambrelBetaLogServices.h"
#include "TambrelBetaLogStore.h"

#include <stop_token>
#include <utility>

namespace tambrel {

/// The store of the betaLOG and the thread on which it works. Belongs to the main thread; destroyed, it waits
/// for what it was given, and what is still to be reported back never is.
class BetaLogStoreThread {
public:
    explicit BetaLogStoreThread(const TambrelBetaLogServices& services)
        : files_(services.folder, stoppable(services.profiler, isEnding_.get_token())) {}
    ~BetaLogStoreThread() { isEnding_.request_stop(); }
    BetaLogStoreThread(const BetaLogStoreThread&) = delete;
    BetaLogStoreThread& operator=(const BetaLogStoreThread&) = delete;

    /// Runs `job(store)` after all earlier jobs.
    template<class Job>
    void run(Job job) {
        executor_.run([this, job = std::move(job)] { job(files_); });
    }
    /// The same, then `then(result)` on the main thread.
    template<class Job, class Then>
    void run(Job job, Then then) {
        executor_.run([this, job = std::move(job)] { return job(files_); }, std::move(then));
    }
    void wait() { executor_.wait(); }

private:
    static SystemProfiler stoppable(SystemProfiler profiler, std::stop_token stop) {
        profiler.stop = std::move(stop);
        return profiler;
    }

    std::stop_source isEnding_;
    TambrelBetaLogStore files_;
    SerialExecutor executor_; // Destroyed first, which waits for the jobs on the files.
};

} // namespace tambrel
