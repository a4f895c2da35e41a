#include "SuddenExit.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <optional>

namespace tambrel {
namespace {

void exitWith(bool livesOn) {
    std::optional<SuddenExit> guard;
    guard.emplace([] { std::cerr << "called\n"; });
    if (!livesOn)
        guard.reset();
    std::exit(3); // NOLINT(concurrency-mt-unsafe)
}

TEST(SuddenExitTest, CallsWhileItLives) {
    EXPECT_EXIT(exitWith(true), testing::ExitedWithCode(3), "^called\n$");
    EXPECT_EXIT(exitWith(false), testing::ExitedWithCode(3), "^$");
}

} // namespace
} // namespace tambrel
