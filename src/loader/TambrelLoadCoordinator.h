#pragma once

#include <cstdint>
#include <optional>
#include <stop_token>
#include <utility>

namespace tambrel {

/// Gives each load a generation, so that a result that arrives after a newer load has begun, or after the
/// song was cleared, is known and dropped. Main thread only.
class TambrelLoadCoordinator {
public:
    TambrelLoadCoordinator() = default;
    ~TambrelLoadCoordinator();
    TambrelLoadCoordinator(const TambrelLoadCoordinator&) = delete;
    TambrelLoadCoordinator& operator=(const TambrelLoadCoordinator&) = delete;

    /// Begins a load: cancels the one before and returns the generation of the new one.
    [[nodiscard]] std::int64_t begin();

    /// How to stop the load that has just begun.
    void setTask(std::stop_source task) { task_ = std::move(task); }

    /// Cancels the load in flight, if any; its result is out of date from now on.
    void cancel();

    /// Generation of the newest load or cancellation.
    [[nodiscard]] std::int64_t generation() const { return generation_; }

private:
    void cancelTask();

    std::int64_t generation_ = 0;
    std::optional<std::stop_source> task_; ///< Of the current load.
};

} // namespace tambrel
