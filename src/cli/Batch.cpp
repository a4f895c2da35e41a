#include "Batch.h"

#include "Console.h"
#include "Interruption.h"
#include "ProgressBar.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace tambrel::cli {
namespace {

class Batch {
public:
    Batch(std::size_t count, const BatchOptions& options, const std::function<Report(std::size_t)>& work,
          ProgressBar* progress)
        : count_(count), options_(options), work_(work), progress_(progress) {}

    ExitStatus run() {
        const std::size_t wanted = options_.jobs == 0 ? std::thread::hardware_concurrency() : options_.jobs;
        const std::size_t jobs = std::clamp<std::size_t>(wanted, 1, std::max<std::size_t>(count_, 1));
        {
            std::vector<std::jthread> helpers;
            for (std::size_t job = 1; job < jobs; ++job)
                helpers.emplace_back([this] { workOn(); });
            workOn();
        }
        if (error_)
            std::rethrow_exception(error_);
        if (failures_ > 0 && count_ > 1 && Interruption::signal() == 0)
            complain("tambrel-midi: " + std::to_string(failures_) + " of " + std::to_string(count_) +
                     " failed.\n");
        return failures_ > 0 ? aFileFailed : allWell;
    }

private:
    using Done = std::vector<std::pair<std::size_t, Report>>;

    // Does not wait for the thread that prints: on a busy machine each wait for a lock may take milliseconds,
    // and a job less than one.
    void workOn() {
        Done done;
        try {
            while (const auto job = take(done)) {
                done.emplace_back(*job, work_(*job));
                if (const std::unique_lock lock(mutex_, std::try_to_lock); lock)
                    hand(done);
            }
        } catch (...) {
            const std::lock_guard lock(mutex_);
            error_ = std::current_exception();
            ends_ = true;
        }
        const std::lock_guard lock(mutex_);
        hand(done);
        advanced_.notify_all();
    }

    // Stays close to what has been printed, so that few reports wait in memory.
    std::optional<std::size_t> take(Done& done) {
        constexpr std::size_t farthest = 1024;
        if (next_ >= printed_ + farthest) {
            std::unique_lock lock(mutex_);
            hand(done);
            advanced_.wait(lock, [this] { return ends_ || next_ < printed_ + farthest; });
        }
        if (ends_ || Interruption::signal() != 0)
            return std::nullopt;
        const std::size_t job = next_++;
        return job < count_ ? std::optional(job) : std::nullopt;
    }

    // Called with the lock held.
    void hand(Done& done) {
        for (auto& [job, report] : done)
            waiting_.emplace(job, std::move(report));
        done.clear();
        for (auto first = waiting_.begin(); first != waiting_.end() && first->first == printed_;
             first = waiting_.erase(first), ++printed_)
            show(first->second);
        advanced_.notify_all();
    }

    void show(const Report& report) {
        if (progress_ != nullptr)
            progress_->wipe();
        print(report.output);
        complain(report.errors);
        failures_ += report.failed ? 1 : 0;
        ends_ = ends_ || (report.failed && options_.failFast);
    }

    const std::size_t count_;
    const BatchOptions& options_;
    const std::function<Report(std::size_t)>& work_;
    ProgressBar* const progress_;

    std::mutex mutex_;
    std::condition_variable advanced_;
    std::map<std::size_t, Report> waiting_;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<std::size_t> printed_ = 0;
    std::atomic<bool> ends_ = false;
    std::size_t failures_ = 0;
    std::exception_ptr error_;
};

} // namespace

ExitStatus runBatch(std::size_t count, const BatchOptions& options,
                    const std::function<Report(std::size_t)>& work, ProgressBar* progress) {
    return Batch(count, options, work, progress).run();
}

} // namespace tambrel::cli
