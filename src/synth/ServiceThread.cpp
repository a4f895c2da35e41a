#include "ServiceThread.h"

#include <memory>
#include <utility>

namespace tambrel {

ServiceThread::~ServiceThread() {
    ending_.store(true, std::memory_order_release);
    changes_.fetch_add(1, std::memory_order_release);
    changes_.notify_one();
    thread_.join();
}

void ServiceThread::submit(std::function<void()> job) {
    auto node = std::make_unique<Job>(Job{std::move(job)});
    node->next = submitted_.load(std::memory_order_relaxed);
    while (!submitted_.compare_exchange_weak(node->next, node.get(), std::memory_order_release,
                                             std::memory_order_relaxed)) {
    }
    static_cast<void>(node.release()); // The thread frees it.
    changes_.fetch_add(1, std::memory_order_release);
    changes_.notify_one();
}

void ServiceThread::run() {
    for (;;) {
        const std::int32_t seen = changes_.load(std::memory_order_acquire);
        const bool isLastRound = ending_.load(std::memory_order_acquire);
        Job* job = takeAll();
        if (job == nullptr && isLastRound)
            return;
        if (job == nullptr)
            changes_.wait(seen, std::memory_order_acquire);
        while (job != nullptr) {
            const std::unique_ptr<Job> done(job);
            done->work();
            job = done->next;
        }
    }
}

// Oldest first.
ServiceThread::Job* ServiceThread::takeAll() {
    Job* newestFirst = submitted_.exchange(nullptr, std::memory_order_acquire);
    Job* oldestFirst = nullptr;
    while (newestFirst != nullptr) {
        Job* next = std::exchange(newestFirst->next, oldestFirst);
        oldestFirst = std::exchange(newestFirst, next);
    }
    return oldestFirst;
}

} // namespace tambrel
