// When a picture that steps back from key frame to key frame shows which.

#include <gtest/gtest.h>

#include "media_player/backward_steps.h"

namespace {

using namespace std::chrono_literals;
using platform::BackwardSteps;
using Place = std::optional<std::chrono::nanoseconds>;

class BackwardStepsTest : public testing::Test {
  protected:
    BackwardSteps::Time now_ = BackwardSteps::Time(1h);
    BackwardSteps steps_{10s, -2.0, true, now_};
};

TEST_F(BackwardStepsTest, ThePlaceMovesAtTheSpeedAndEndsAtTheStart)
{
    EXPECT_EQ(steps_.place(now_), 10s);
    EXPECT_EQ(steps_.place(now_ + 1500ms), 7s);
    EXPECT_EQ(steps_.place(now_ + 5s), 0s);
    EXPECT_EQ(steps_.place(now_ + 1h), 0s);
}

TEST_F(BackwardStepsTest, TheFirstStepIsDueAtOnceAndShowsThePlace)
{
    EXPECT_EQ(steps_.due(), now_);
    EXPECT_EQ(steps_.step(now_), Place(10s));
}

TEST_F(BackwardStepsTest, AKeyFrameStaysUntilItsOwnPlaceHasBeenPassed)
{
    steps_.step(now_);
    steps_.on_shown(8s);

    EXPECT_EQ(steps_.due(), now_ + 1000ms + 500us);
    EXPECT_EQ(steps_.step(now_ + 1s), Place());
    EXPECT_EQ(steps_.step(now_ + 1001ms), Place(7998ms));
}

TEST_F(BackwardStepsTest, CloseKeyFramesAreNotShownFasterThanTheEyeFollows)
{
    steps_.step(now_);
    steps_.on_shown(9990ms);

    EXPECT_EQ(steps_.due(), now_ + 80ms);
}

TEST_F(BackwardStepsTest, AFileThatLandsBehindThePlaceDoesNotStandStill)
{
    steps_.step(now_);
    steps_.on_shown(12s);

    EXPECT_EQ(steps_.due(), now_ + 80ms);
    EXPECT_EQ(steps_.step(now_ + 80ms), Place(9840ms));
}

TEST_F(BackwardStepsTest, HoldingKeepsThePlaceAndStepsNowhere)
{
    steps_.set_running(false, now_ + 1s);

    EXPECT_FALSE(steps_.due());
    EXPECT_EQ(steps_.step(now_ + 2s), Place());
    EXPECT_EQ(steps_.place(now_ + 1h), 8s);

    steps_.set_running(true, now_ + 1h);
    EXPECT_EQ(steps_.place(now_ + 1h + 1s), 6s);
}

TEST_F(BackwardStepsTest, TheLastStepIsAtTheStart)
{
    EXPECT_EQ(steps_.step(now_ + 10s), Place(0s));
}

} // namespace
