#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>

namespace tambrel {

/// One thread that runs jobs one after another, in the order in which they were submitted: what may block
/// (opening a device, loading a bank) happens here. Jobs do not throw. The destructor waits until all of them
/// have run.
class ServiceThread {
public:
    ServiceThread() : thread_([this] { run(); }) {}
    ~ServiceThread();
    ServiceThread(const ServiceThread&) = delete;
    ServiceThread& operator=(const ServiceThread&) = delete;

    /// Any thread. The job sees everything that was written before the call.
    void submit(std::function<void()> job);

private:
    struct Job {
        std::function<void()> work;
        Job* next = nullptr;
    };

    void run();
    [[nodiscard]] Job* takeAll();

    std::atomic<Job*> submitted_{nullptr}; // Newest first.
    std::atomic<std::int32_t> changes_{0}; // What the thread sleeps on.
    std::atomic<bool> ending_{false};
    std::thread thread_; // Last: it uses all of the above.
};

} // namespace tambrel
