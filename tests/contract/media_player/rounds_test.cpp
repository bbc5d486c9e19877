// When a file that plays over and over begins its next round, and when it has had its last.

#include <gtest/gtest.h>

#include "media_player/rounds.h"

namespace {

using namespace std::chrono_literals;
using platform::Rounds;
using Plan = Rounds::Plan;
using Step = Rounds::Step;

class RoundsTest : public testing::Test {
  protected:
    void SetUp() override { rounds_.on_start(now_); }

    Step read(Plan plan, bool at_end = false)
    {
        rounds_.on_read();
        return rounds_.plan_read(plan, at_end, now_);
    }
    Step shown(bool looping = true) { return rounds_.on_shown(looping, now_); }

    Rounds rounds_;
    Rounds::Time now_ = Rounds::Time(1h);
};

TEST_F(RoundsTest, ARoundThatWasReadIsFollowedByTheNextAtOnce)
{
    now_ += 2s;

    EXPECT_EQ(read(Plan::GoOn), Step::Begin);
}

TEST_F(RoundsTest, ARoundThatWasReadBeforeTheStartIsPlannedAfterIt)
{
    EXPECT_FALSE(rounds_.wants_plan());
    rounds_.on_read();
    EXPECT_TRUE(rounds_.wants_plan());

    rounds_.plan_read(Plan::GoOn, false, now_);

    EXPECT_FALSE(rounds_.wants_plan());
}

TEST_F(RoundsTest, AFileOfNoLengthGoesRoundTenTimesASecondAtMost)
{
    now_ += 1s;
    ASSERT_EQ(read(Plan::GoOn), Step::Begin);
    rounds_.on_begun(true, now_);
    now_ += 1ms;

    EXPECT_EQ(read(Plan::GoOn), Step::Nothing);

    ASSERT_TRUE(rounds_.due());
    EXPECT_EQ(*rounds_.due(), now_ + 99ms);
    EXPECT_EQ(rounds_.on_due(), Step::Begin);
    EXPECT_FALSE(rounds_.due());
}

TEST_F(RoundsTest, ThePictureFollowsTheReaderWithoutBeingHelped)
{
    now_ += 2s;
    ASSERT_EQ(read(Plan::GoOn), Step::Begin);
    rounds_.on_begun(true, now_);

    EXPECT_EQ(shown(), Step::Nothing);

    EXPECT_FALSE(rounds_.due());
}

TEST_F(RoundsTest, AReaderThatDoesNotTellTheEndIsHelpedOn)
{
    now_ += 2s;

    EXPECT_EQ(shown(), Step::Nothing);
    ASSERT_TRUE(rounds_.due());
    EXPECT_EQ(*rounds_.due(), now_ + 300ms);
    now_ += 100ms;
    EXPECT_EQ(shown(), Step::Nothing);

    EXPECT_EQ(*rounds_.due(), now_ + 200ms)
        << "a second word about the end is no reason to wait anew";
    EXPECT_EQ(rounds_.on_due(), Step::Begin);
}

TEST_F(RoundsTest, AReaderThatNeverTellsTheEndIsHelpedOnRoundAfterRound)
{
    for (int round = 0; round < 3; round++) {
        SCOPED_TRACE(round);
        now_ += 2s;
        shown();
        ASSERT_TRUE(rounds_.due());
        ASSERT_EQ(rounds_.on_due(), Step::Begin);
        rounds_.on_begun(true, now_);
    }
}

TEST_F(RoundsTest, AWordThatComesLateButComesNeedsNoHelp)
{
    now_ += 2s;
    shown();
    ASSERT_TRUE(rounds_.due());

    ASSERT_EQ(read(Plan::GoOn), Step::Begin);
    rounds_.on_begun(true, now_);

    EXPECT_FALSE(rounds_.due()) << "it would begin twice";
}

TEST_F(RoundsTest, TheLastRoundIsCompleteWhenItHasBeenShown)
{
    EXPECT_EQ(read(Plan::End), Step::Nothing);

    EXPECT_EQ(shown(false), Step::Complete);
}

TEST_F(RoundsTest, ALastRoundThatWasShownBeforeItWasPlannedIsComplete)
{
    EXPECT_EQ(read(Plan::End, true), Step::Complete);
}

TEST_F(RoundsTest, ALastRoundGoesOnWhenItIsToLoopAgain)
{
    ASSERT_EQ(read(Plan::End), Step::Nothing);

    EXPECT_EQ(shown(true), Step::Nothing);

    ASSERT_TRUE(rounds_.due());
    EXPECT_EQ(rounds_.on_due(), Step::Begin);
}

TEST_F(RoundsTest, TheSoundIsRenewedWhenTheRoundHasBeenShown)
{
    EXPECT_EQ(read(Plan::ReopenWithSound), Step::Nothing);

    EXPECT_EQ(shown(), Step::ReopenWithSound);
}

TEST_F(RoundsTest, ARoundThatWasShownAlreadyIsRenewedAtOnce)
{
    EXPECT_EQ(read(Plan::ReopenWithSound, true), Step::ReopenWithSound);
}

TEST_F(RoundsTest, ASeekForgetsTheRoundsBefore)
{
    now_ += 2s;
    read(Plan::GoOn);
    rounds_.on_begun(true, now_);
    read(Plan::ReopenWithSound);

    rounds_.reset();

    EXPECT_FALSE(rounds_.due());
    EXPECT_EQ(shown(), Step::Nothing);
    EXPECT_TRUE(rounds_.due()) << "no round is ahead";
}

TEST_F(RoundsTest, ANewRoundThatWasSoughtIsNotAhead)
{
    now_ += 2s;
    ASSERT_EQ(rounds_.on_ended(Plan::GoOn, now_), Step::Begin);
    rounds_.on_begun(false, now_);

    shown();

    EXPECT_TRUE(rounds_.due());
}

TEST_F(RoundsTest, TheEndOfAReaderWithoutRoundsIsFollowedAsPlanned)
{
    now_ += 2s;

    EXPECT_EQ(rounds_.on_ended(Plan::End, now_), Step::Complete);
    EXPECT_EQ(rounds_.on_ended(Plan::ReopenWithSound, now_), Step::ReopenWithSound);
    EXPECT_EQ(rounds_.on_ended(Plan::GoOn, now_), Step::Begin);
}

} // namespace
