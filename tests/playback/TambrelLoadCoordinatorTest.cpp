#include "TambrelLoadCoordinator.h"

#include <gtest/gtest.h>

namespace tambrel {
namespace {

TEST(TambrelLoadCoordinator, outdatesAndStopsTheLoadBefore) {
    TambrelLoadCoordinator coordinator;
    std::stop_source first;
    const std::int64_t firstGeneration = coordinator.begin();
    coordinator.setTask(first);
    EXPECT_EQ(coordinator.generation(), firstGeneration);
    EXPECT_FALSE(first.stop_requested());

    std::stop_source second;
    const std::int64_t secondGeneration = coordinator.begin();
    EXPECT_TRUE(first.stop_requested());
    EXPECT_GT(secondGeneration, firstGeneration);
    coordinator.setTask(second);

    coordinator.cancel();
    EXPECT_TRUE(second.stop_requested());
    EXPECT_GT(coordinator.generation(), secondGeneration);
}

TEST(TambrelLoadCoordinator, stopsTheLoadInFlightWhenItGoes) {
    std::stop_source task;
    {
        TambrelLoadCoordinator coordinator;
        static_cast<void>(coordinator.begin());
        coordinator.setTask(task);
    }
    EXPECT_TRUE(task.stop_requested());
}

} // namespace
} // namespace tambrel
