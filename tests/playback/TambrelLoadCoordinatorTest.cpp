#include "TambrelLoadCoordinator.h"

#include <gtest/gtest.h>

#include <optional>

namespace tambrel {
namespace {

TEST(TambrelLoadCoordinator, stopsALoadThatIsOutdatedCancelledOrLeft) {
    std::optional<TambrelLoadCoordinator> coordinator(std::in_place);
    std::stop_source outdated, cancelled, left;
    const std::int64_t first = coordinator->begin();
    coordinator->setTask(outdated);
    EXPECT_EQ(coordinator->generation(), first);
    EXPECT_FALSE(outdated.stop_requested());

    const std::int64_t second = coordinator->begin();
    EXPECT_TRUE(outdated.stop_requested());
    EXPECT_GT(second, first);

    coordinator->setTask(cancelled);
    coordinator->cancel();
    EXPECT_TRUE(cancelled.stop_requested());
    EXPECT_GT(coordinator->generation(), second);

    static_cast<void>(coordinator->begin());
    coordinator->setTask(left);
    coordinator.reset();
    EXPECT_TRUE(left.stop_requested());
}

} // namespace
} // namespace tambrel
