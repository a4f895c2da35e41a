#include "TambrelLoadCoordinator.h"

#include <cassert>
#include <limits>

namespace tambrel {

TambrelLoadCoordinator::~TambrelLoadCoordinator() {
    cancelTask();
}

std::int64_t TambrelLoadCoordinator::begin() {
    cancel();
    return generation_;
}

void TambrelLoadCoordinator::cancel() {
    assert(generation_ < std::numeric_limits<std::int64_t>::max());
    ++generation_;
    cancelTask();
}

void TambrelLoadCoordinator::cancelTask() {
    if (task_)
        task_->request_stop();
    task_.reset();
}

} // namespace tambrel
