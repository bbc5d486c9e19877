// When a file whose frames do not come is given up.

#include <gtest/gtest.h>

#include "media_player/progress_watch.h"

namespace {

using namespace std::chrono_literals;
using platform::BreakWatch;
using platform::StallWatch;
using Verdict = BreakWatch::Verdict;

class StallWatchTest : public testing::Test {
  protected:
    void SetUp() override
    {
        sight_.shown = 100;
        sight_.position = 2s;
        sight_.length = 10s;
        watch_.start(now_);
        look_after(1s); // the first frames
    }

    std::string look_after(std::chrono::milliseconds time)
    {
        now_ += time;
        const char *why = watch_.look(sight_, now_);
        return why ? why : "";
    }

    StallWatch watch_;
    StallWatch::Sight sight_;
    StallWatch::Time now_ = StallWatch::Time(1h);
};

TEST_F(StallWatchTest, LooksOnceASecondUntilItIsStopped)
{
    EXPECT_EQ(watch_.due(), now_ + 1s);
    look_after(1500ms);
    EXPECT_EQ(watch_.due(), now_ + 1s);

    watch_.stop();

    EXPECT_FALSE(watch_.due());
}

TEST_F(StallWatchTest, ASlideThatStandsInTheMiddleIsNoStall)
{
    for (int second = 1; second <= 7; second++)
        EXPECT_EQ(look_after(1s), "") << second;
}

TEST_F(StallWatchTest, AFileThatShouldBeAtItsEndIsGivenUp)
{
    ASSERT_EQ(look_after(8s), "");

    EXPECT_EQ(look_after(1s), "it stands still near its end");
}

TEST_F(StallWatchTest, AFileNearItsEndHasFourSeconds)
{
    sight_.position = 9900ms;

    ASSERT_EQ(look_after(3999ms), "");

    EXPECT_EQ(look_after(1ms), "it stands still near its end");
}

TEST_F(StallWatchTest, TheEndComesSoonerAtDoubleSpeed)
{
    sight_.rate = 2.0;

    EXPECT_EQ(look_after(4001ms), "it stands still near its end");
}

TEST_F(StallWatchTest, AFrameBeginsTheWaitAnew)
{
    sight_.position = 9900ms;
    look_after(3s);
    sight_.shown++;
    EXPECT_EQ(look_after(1s), "");

    EXPECT_EQ(look_after(3s), "");
    EXPECT_NE(look_after(1s), "");
}

TEST_F(StallWatchTest, NothingIsExpectedOfAHeldFile)
{
    sight_.held = true;
    EXPECT_EQ(look_after(1h), "");
    sight_.held = false;

    EXPECT_EQ(look_after(8s), "");
}

TEST_F(StallWatchTest, WhereNoLengthTellsTheEndThirtySecondsAreGiven)
{
    struct Unknown {
        const char *what;
        void (*make)(StallWatch::Sight &);
    };
    for (const Unknown &unknown :
         {Unknown{"length", [](StallWatch::Sight &sight) { sight.length.reset(); }},
          Unknown{"position", [](StallWatch::Sight &sight) { sight.position.reset(); }},
          Unknown{"direction", [](StallWatch::Sight &sight) { sight.rate = -2.0; }}}) {
        SCOPED_TRACE(unknown.what);
        sight_ = {sight_.shown + 1, false, 1.0, 2s, 10s};
        unknown.make(sight_);
        ASSERT_EQ(look_after(1s), "");

        EXPECT_EQ(look_after(30s), "");
        EXPECT_EQ(look_after(1ms), "no frame comes any more");
    }
}

class BreakWatchTest : public testing::Test {
  protected:
    void SetUp() override
    {
        sight_.shown = 10;
        sight_.playing = true;
        sight_.position = 1000ms;
    }

    Verdict look_after(std::chrono::milliseconds time)
    {
        now_ += time;
        return watch_.look(sight_, now_);
    }

    /** The file breaks and has shown what it had. */
    Verdict breaks()
    {
        watch_.on_broken(sight_.shown, now_);
        return look_after(700ms);
    }

    BreakWatch watch_;
    BreakWatch::Sight sight_;
    BreakWatch::Time now_ = BreakWatch::Time(1h);
};

TEST_F(BreakWatchTest, ASoundFileIsNotLookedAt)
{
    EXPECT_FALSE(watch_.broken());
    EXPECT_FALSE(watch_.due());
    watch_.on_start(now_);
    EXPECT_FALSE(watch_.due());
}

TEST_F(BreakWatchTest, WhatWasDecodedIsShownToItsEnd)
{
    EXPECT_TRUE(watch_.on_broken(sight_.shown, now_));
    EXPECT_EQ(watch_.due(), now_ + 700ms);
    sight_.shown += 5;
    EXPECT_EQ(look_after(700ms), Verdict::Wait);
    EXPECT_EQ(watch_.due(), now_ + 700ms);

    EXPECT_EQ(look_after(700ms), Verdict::End);

    EXPECT_FALSE(watch_.due());
    EXPECT_TRUE(watch_.broken());
}

TEST_F(BreakWatchTest, ASecondErrorMeanwhileIsNoNews)
{
    watch_.on_broken(sight_.shown, now_);
    now_ += 500ms;

    EXPECT_FALSE(watch_.on_broken(sight_.shown, now_));

    EXPECT_EQ(watch_.due(), now_ + 200ms);
}

TEST_F(BreakWatchTest, AFileThatIsNotPlayingIsWaitedFor)
{
    watch_.on_broken(sight_.shown, now_);
    sight_.playing = false;

    EXPECT_EQ(look_after(1min), Verdict::Wait);
}

TEST_F(BreakWatchTest, AFileThatBrokeBeforeItsStartHasASecondForItsFirstFrame)
{
    watch_.on_broken(sight_.shown, now_);

    watch_.on_start(now_);

    EXPECT_EQ(watch_.due(), now_ + 1000ms);
}

TEST_F(BreakWatchTest, ALoopingFileIsBegunAnewEachTime)
{
    sight_.looping = true;
    for (int round = 0; round < 3; round++) {
        SCOPED_TRACE(round);
        EXPECT_EQ(breaks(), Verdict::BeginAnew);
        watch_.on_begun_anew(sight_.shown);
        watch_.on_new_pipeline();
        EXPECT_FALSE(watch_.broken());
        sight_.shown += 30;
    }
}

TEST_F(BreakWatchTest, ALoopingFileWithLessThanASecondToShowEnds)
{
    sight_.looping = true;
    sight_.position = 999ms;
    EXPECT_EQ(breaks(), Verdict::End);

    sight_.position.reset();
    EXPECT_EQ(breaks(), Verdict::End);
}

TEST_F(BreakWatchTest, ALoopingFileThatShowsNothingWhenBegunAnewEnds)
{
    sight_.looping = true;
    ASSERT_EQ(breaks(), Verdict::BeginAnew);
    watch_.on_begun_anew(sight_.shown);
    watch_.on_new_pipeline();

    EXPECT_EQ(breaks(), Verdict::End);
}

TEST_F(BreakWatchTest, ANewPipelineIsNotJudgedByTheOldOnesBreak)
{
    watch_.on_broken(sight_.shown, now_);

    watch_.on_new_pipeline();

    EXPECT_FALSE(watch_.broken());
    EXPECT_FALSE(watch_.due());
}

} // namespace
