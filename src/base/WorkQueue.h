#pragma once

#include <atomic>
#include <memory>

namespace tambrel {

/// A queue of work from any number of sending threads to one receiving thread, in the order of sending.
class WorkQueue {
public:
    class Work {
    public:
        virtual ~Work() = default;
        virtual void run() = 0;

    private:
        friend class WorkQueue;
        Work* next_ = nullptr;
    };

    /// Throws std::system_error when the process has too many files open.
    WorkQueue();
    ~WorkQueue();
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    /// Any thread. The receiver sees everything that was written before the call.
    void send(std::unique_ptr<Work> work);

    /// The oldest work, never null; waits until there is some. The receiving thread only.
    [[nodiscard]] std::unique_ptr<Work> receive();
    /// A file descriptor that is readable while there is work; only `receive` reads it.
    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    void takeSent();

    int descriptor_;
    std::atomic<Work*> sent_{nullptr}; // Newest first.
    Work* received_ = nullptr;         // Oldest first.
};

} // namespace tambrel
