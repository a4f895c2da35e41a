#include "TambrelLoadCoordinator.h"

#include <gtest/gtest.h>

#include <optional>

namespace tambrel {
namespace {

TEST(TambrelLoadCoordinator, stopsALoadThatIsOutdatedCancelledOrLeft) {
    std::optional<TambrelLoadCoordinator> coordinator(std::in_place);
    std::stop_source outdated, cancelled, left;
    static_cast<void>(coordinator->begin());
    coordinator->setTask(outdated);
    EXPECT_FALSE(outdated.stop_requested());
    static_cast<void>(coordinator->begin());
    EXPECT_TRUE(outdated.stop_requested());
    coordinator->setTask(cancelled);
    coordinator->cancel();
    EXPECT_TRUE(cancelled.stop_requested());
    coordinator->setTask(left);
    coordinator.reset();
    EXPECT_TRUE(left.stop_requested());
}

} // namespace
} // namespace tambrel
