#include "FreedInBackground.h"

#include "WorkQueue.h"

#include <exception>
#include <thread>

namespace tambrel {
namespace {

class LettingGo final : public WorkQueue::Work {
public:
    explicit LettingGo(std::shared_ptr<const void> object) : object_(std::move(object)) {}
    void run() override { object_.reset(); }

private:
    std::shared_ptr<const void> object_;
};

// One thread, until the process ends: to start one needs memory from the kernel, and would wait while a large
// block is given back.
WorkQueue& queue() {
    static WorkQueue* const queue = [] {
        auto* const made = new WorkQueue;
        std::thread([made] {
            for (;;)
                made->receive()->run();
        }).detach();
        return made;
    }();
    return *queue;
}

} // namespace

void freeInBackground(std::shared_ptr<const void> object) noexcept {
    try {
        queue().send(std::make_unique<LettingGo>(std::move(object)));
    } catch (const std::exception&) { // Without a thread or memory, it is freed here.
    }
}

} // namespace tambrel
