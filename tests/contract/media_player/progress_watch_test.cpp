// When a file whose frames do not come is given up, and when one is nearly over.

#include <gtest/gtest.h>

#include "media_player/progress_watch.h"

namespace {

using namespace std::chrono_literals;
using platform::BreakWatch;
using platform::EndWatch;
using platform::StallWatch;
using Verdict = BreakWatch::Verdict;

class StallWatchTest : public testing::Test {
  protected:
    void SetUp() override
    {
        progress_.shown = 100;
        progress_.position = 2s;
        progress_.length = 10s;
        watch_.start(now_);
        look_after(1s); // the first frames
    }

    std::string look_after(std::chrono::milliseconds time)
    {
        now_ += time;
        const char *why = watch_.check(progress_, now_);
        return why ? why : "";
    }

    StallWatch watch_;
    StallWatch::Progress progress_;
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

TEST_F(StallWatchTest, TheWaitForTheFirstFrameBeginsWithTheStart)
{
    StallWatch watch;
    const StallWatch::Progress nothing = {};
    watch.start(now_);
    EXPECT_EQ(watch.due(), now_ + 1s);
    EXPECT_EQ(watch.check(nothing, now_ + 30s), nullptr);
    EXPECT_STREQ(watch.check(nothing, now_ + 31s), "no frame comes any more");
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
    progress_.position = 9900ms;

    ASSERT_EQ(look_after(3999ms), "");

    EXPECT_EQ(look_after(1ms), "it stands still near its end");
}

TEST_F(StallWatchTest, TheEndComesSoonerAtDoubleSpeed)
{
    progress_.rate = 2.0;

    EXPECT_EQ(look_after(4001ms), "it stands still near its end");
}

TEST_F(StallWatchTest, AFrameBeginsTheWaitAnew)
{
    progress_.position = 9900ms;
    look_after(3s);
    progress_.shown++;
    EXPECT_EQ(look_after(1s), "");

    EXPECT_EQ(look_after(3s), "");
    EXPECT_NE(look_after(1s), "");
}

TEST_F(StallWatchTest, NothingIsExpectedOfAHeldFile)
{
    progress_.held = true;
    EXPECT_EQ(look_after(1h), "");
    progress_.held = false;

    EXPECT_EQ(look_after(8s), "");
}

TEST_F(StallWatchTest, WhereNoLengthTellsTheEndThirtySecondsAreGiven)
{
    struct Unknown {
        const char *what;
        void (*make)(StallWatch::Progress &);
    };
    for (const Unknown &unknown :
         {Unknown{"length", [](StallWatch::Progress &progress) { progress.length.reset(); }},
          Unknown{"position", [](StallWatch::Progress &progress) { progress.position.reset(); }},
          Unknown{"direction", [](StallWatch::Progress &progress) { progress.rate = -2.0; }}}) {
        SCOPED_TRACE(unknown.what);
        progress_ = {progress_.shown + 1, false, 1.0, 2s, 10s};
        unknown.make(progress_);
        ASSERT_EQ(look_after(1s), "");

        EXPECT_EQ(look_after(30s), "");
        EXPECT_EQ(look_after(1ms), "no frame comes any more");
    }
}

class BreakWatchTest : public testing::Test {
  protected:
    void SetUp() override
    {
        progress_.shown = 10;
        progress_.playing = true;
        progress_.position = 1000ms;
    }

    Verdict look_after(std::chrono::milliseconds time)
    {
        now_ += time;
        return watch_.check(progress_, now_);
    }

    /** The file breaks and has shown what it had. */
    Verdict breaks()
    {
        watch_.on_broken(progress_.shown, now_);
        return look_after(700ms);
    }

    BreakWatch watch_;
    BreakWatch::Progress progress_;
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
    EXPECT_TRUE(watch_.on_broken(progress_.shown, now_));
    EXPECT_EQ(watch_.due(), now_ + 700ms);
    progress_.shown += 5;
    EXPECT_EQ(look_after(700ms), Verdict::Wait);
    EXPECT_EQ(watch_.due(), now_ + 700ms);

    EXPECT_EQ(look_after(700ms), Verdict::End);

    EXPECT_FALSE(watch_.due());
    EXPECT_TRUE(watch_.broken());
}

TEST_F(BreakWatchTest, ASecondErrorMeanwhileIsNoNews)
{
    watch_.on_broken(progress_.shown, now_);
    now_ += 500ms;

    EXPECT_FALSE(watch_.on_broken(progress_.shown, now_));

    EXPECT_EQ(watch_.due(), now_ + 200ms);
}

TEST_F(BreakWatchTest, AFileThatIsNotPlayingIsWaitedFor)
{
    watch_.on_broken(progress_.shown, now_);
    progress_.playing = false;

    EXPECT_EQ(look_after(1min), Verdict::Wait);
}

TEST_F(BreakWatchTest, AFileThatBrokeBeforeItsStartHasASecondForItsFirstFrame)
{
    watch_.on_broken(progress_.shown, now_);

    watch_.on_start(now_);

    EXPECT_EQ(watch_.due(), now_ + 1000ms);
}

TEST_F(BreakWatchTest, ALoopingFileIsBegunAnewEachTime)
{
    progress_.looping = true;
    for (int round = 0; round < 3; round++) {
        SCOPED_TRACE(round);
        EXPECT_EQ(breaks(), Verdict::Restart);
        watch_.on_restart(progress_.shown);
        watch_.on_new_pipeline();
        EXPECT_FALSE(watch_.broken());
        progress_.shown += 30;
    }
}

TEST_F(BreakWatchTest, ALoopingFileWithLessThanASecondToShowEnds)
{
    progress_.looping = true;
    progress_.position = 999ms;
    EXPECT_EQ(breaks(), Verdict::End);

    progress_.position.reset();
    EXPECT_EQ(breaks(), Verdict::End);
}

TEST_F(BreakWatchTest, ALoopingFileThatShowsNothingWhenBegunAnewEnds)
{
    progress_.looping = true;
    ASSERT_EQ(breaks(), Verdict::Restart);
    watch_.on_restart(progress_.shown);
    watch_.on_new_pipeline();

    EXPECT_EQ(breaks(), Verdict::End);
}

TEST_F(BreakWatchTest, ANewPipelineIsNotJudgedByTheOldOnesBreak)
{
    watch_.on_broken(progress_.shown, now_);

    watch_.on_new_pipeline();

    EXPECT_FALSE(watch_.broken());
    EXPECT_FALSE(watch_.due());
}

class EndWatchTest : public testing::Test {
  protected:
    void SetUp() override { watch_.start(now_); }

    bool check_at(std::chrono::nanoseconds position, std::chrono::nanoseconds length)
    {
        return watch_.check({position, length}, now_);
    }

    EndWatch watch_;
    const EndWatch::Time now_ = EndWatch::Time(1h);
};

TEST_F(EndWatchTest, LooksAtOnceAndThenFourSecondsBeforeTheEnd)
{
    EXPECT_EQ(watch_.due(), now_);
    EXPECT_FALSE(check_at(10s, 60s));
    EXPECT_EQ(watch_.due(), now_ + 46s);

    EXPECT_TRUE(check_at(56s, 60s));

    EXPECT_FALSE(watch_.due()) << "it is told once";
}

TEST_F(EndWatchTest, AShortFilmIsNearlyOverAtItsHalf)
{
    EXPECT_FALSE(check_at(0s, 3s));
    EXPECT_EQ(watch_.due(), now_ + 1500ms);

    EXPECT_TRUE(check_at(1500ms, 3s));
}

TEST_F(EndWatchTest, LooksAgainWhenThePlayStoodStill)
{
    ASSERT_FALSE(check_at(10s, 60s));

    EXPECT_FALSE(check_at(11s, 60s));

    EXPECT_EQ(watch_.due(), now_ + 45s);
}

TEST_F(EndWatchTest, DoesNotHurryWhileTheNewestFrameStands)
{
    EXPECT_FALSE(check_at(10s, 14s + 1us));

    EXPECT_EQ(watch_.due(), now_ + 100ms);
}

TEST_F(EndWatchTest, OneThatHasShownNothingIsAtItsBeginning)
{
    EXPECT_FALSE(watch_.check({std::nullopt, 60s}, now_));
    EXPECT_EQ(watch_.due(), now_ + 56s);
}

TEST_F(EndWatchTest, OneOfUnknownLengthIsLookedAtAgain)
{
    EXPECT_FALSE(watch_.check({10s, std::nullopt}, now_));
    EXPECT_EQ(watch_.due(), now_ + 2s);
}

TEST_F(EndWatchTest, DoesNotLookWhenItIsStopped)
{
    watch_.stop();

    EXPECT_FALSE(watch_.due());
}

} // namespace
