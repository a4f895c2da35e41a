#include "WorkQueue.h"

#include <cerrno>
#include <cstdint>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace tambrel {

WorkQueue::WorkQueue() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_SEMAPHORE)) {
    if (descriptor_ < 0)
        throw std::system_error(errno, std::generic_category());
}

WorkQueue::~WorkQueue() {
    for (int lists = 0; lists < 2; ++lists) {
        while (received_ != nullptr)
            delete std::exchange(received_, received_->next_);
        takeSent();
    }
    close(descriptor_);
}

void WorkQueue::send(std::unique_ptr<Work> work) {
    work->next_ = sent_.load(std::memory_order_relaxed);
    while (!sent_.compare_exchange_weak(work->next_, work.get(), std::memory_order_release,
                                        std::memory_order_relaxed)) {
    }
    static_cast<void>(work.release()); // The receiver frees it.
    constexpr std::uint64_t one = 1;
    while (write(descriptor_, &one, sizeof(one)) < 0 && errno == EINTR) {
    }
}

std::unique_ptr<WorkQueue::Work> WorkQueue::receive() {
    std::uint64_t one = 0;
    while (read(descriptor_, &one, sizeof(one)) < 0 && errno == EINTR) {
    }
    if (received_ == nullptr)
        takeSent();
    return std::unique_ptr<Work>(std::exchange(received_, received_->next_));
}

void WorkQueue::takeSent() {
    Work* newestFirst = sent_.exchange(nullptr, std::memory_order_acquire);
    while (newestFirst != nullptr) {
        Work* next = std::exchange(newestFirst->next_, received_);
        received_ = std::exchange(newestFirst, next);
    }
}

} // namespace tambrel
