#include <gtest/gtest.h>

#include "player_rules/rotation_timer.h"

namespace platform {
namespace {

TEST(RotationTimer, TellsTheSecondsUntilItFiresAndNothingAfter)
{
    RotationTimerModel timer;
    timer.launched(true);
    timer.restart(1000.0, 300);
    EXPECT_EQ(timer.left_s(1000.0), 300.0);
    EXPECT_EQ(timer.left_s(1100.5), 199.5);
    EXPECT_EQ(timer.left_s(1300.0), std::nullopt);
}

} // namespace
} // namespace platform
