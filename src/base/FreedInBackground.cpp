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

// One thread for good: a new one needs memory from the system, and waits for it while a large block is given
// back. It ends with the process, which frees all the rest.
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
    } catch (const std::exception&) { // No thread, no memory: freed here then.
    }
}

} // namespace tambrel
