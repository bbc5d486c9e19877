// When a file whose frames do not come is given up, and when one is nearly over.

#include <algorithm>

#include <gtest/gtest.h>

#include "media_player/progress_watch.h"

namespace {

using namespace std::chrono_literals;
using platform::BreakWatch;
using platform::EndWatch;
using platform::StallWatch;
using Stall = StallWatch::Verdict;
using Verdict = BreakWatch::Verdict;

class StallWatchTest : public testing::Test {
  protected:
    void SetUp() override
    {
        progress_.shown = 100;
        progress_.position = 2s;
        progress_.length = 600s;
        progress_.clock = 1h;
        progress_.arrivals = 100;
        progress_.coded = 110;
        progress_.sound = 50;
        watch_.start(now_);
        look_after(1s); // the first frames
    }

    /** Looks once, after a time in which the clock of the play went on. */
    Stall look_after(std::chrono::milliseconds time)
    {
        now_ += time;
        if (progress_.clock)
            *progress_.clock += time;
        return watch_.check(progress_, now_);
    }

    /** Looks once a second. @return what was said first, or at last */
    Stall look_for(std::chrono::milliseconds time)
    {
        Stall verdict = Stall::Wait;
        for (; time > 0s && verdict == Stall::Wait; time -= 1s)
            verdict = look_after(std::min<std::chrono::milliseconds>(time, 1s));
        return verdict;
    }

    StallWatch watch_{10s};
    StallWatch::Progress progress_;
    StallWatch::Time now_ = StallWatch::Time(1h);
};

TEST_F(StallWatchTest, LooksTenTimesInAStallUntilItIsStopped)
{
    EXPECT_EQ(watch_.due(), now_ + 1s);
    look_after(1500ms);
    EXPECT_EQ(watch_.due(), now_ + 1s);

    watch_.stop();

    EXPECT_FALSE(watch_.due());
}

TEST_F(StallWatchTest, TenSecondsWithoutAFrameAreAStall)
{
    ASSERT_EQ(look_for(9999ms), Stall::Wait);

    EXPECT_EQ(look_after(1ms), Stall::Restart);
}

TEST_F(StallWatchTest, TheWaitForTheFirstFrameBeginsWithTheStart)
{
    StallWatch watch(10s);
    watch.start(now_);
    for (int second = 1; second <= 9; second++)
        ASSERT_EQ(watch.check({}, now_ + second * 1s), Stall::Wait) << second;

    EXPECT_EQ(watch.check({}, now_ + 10s), Stall::Restart);
}

TEST_F(StallWatchTest, AFileIsOpenedAnewOnceInAPlay)
{
    ASSERT_EQ(look_for(10s), Stall::Restart);
    progress_.arrivals++;
    ASSERT_EQ(look_after(1s), Stall::Wait);

    EXPECT_EQ(look_for(9s), Stall::Wait);
    EXPECT_EQ(look_after(1s), Stall::GiveUp);

    watch_.start(now_);
    EXPECT_EQ(look_for(10s), Stall::Restart);
}

TEST_F(StallWatchTest, ARoundThatCameToItsEndLetsTheNextBeOpenedAnewAsWell)
{
    ASSERT_EQ(look_for(10s), Stall::Restart);

    watch_.forgive();

    EXPECT_EQ(look_for(10s), Stall::Restart);
    EXPECT_EQ(look_for(10s), Stall::GiveUp);
}

TEST_F(StallWatchTest, AFrameThatWaitsForItsTimeIsNoStall)
{
    progress_.in_hand = true;

    EXPECT_EQ(look_for(5min), Stall::Wait);
}

TEST_F(StallWatchTest, AFrameThatWaitsForAClockThatDoesNotGoIsAStall)
{
    progress_.in_hand = true;
    progress_.clock.reset();

    EXPECT_EQ(look_for(9s), Stall::Wait);
    EXPECT_EQ(look_after(1s), Stall::Restart);

    for (int look = 0; look <= 10; look++) {
        progress_.clock = 1h - 1s; // which it does not leave
        EXPECT_EQ(look_after(1s), look < 10 ? Stall::Wait : Stall::GiveUp) << look;
    }
}

TEST_F(StallWatchTest, AMachineThatIsSlowToDecodeIsNoStall)
{
    for (int frame = 0; frame < 20; frame++) {
        progress_.arrivals++; // too late to be shown
        EXPECT_EQ(look_for(3s), Stall::Wait) << frame;
    }
}

TEST_F(StallWatchTest, SoundWithoutPicturesIsNoStall)
{
    for (int second = 0; second < 60; second++) {
        progress_.sound++;
        ASSERT_EQ(look_after(1s), Stall::Wait);
        ASSERT_EQ(look_after(1s), Stall::Wait) << "a long piece";
    }
}

TEST_F(StallWatchTest, SoundThatWaitsForItsTimeIsNoStallEitherForTenMinutes)
{
    progress_.length.reset();
    progress_.sounding = true;
    ASSERT_EQ(look_for(10min + 8s), Stall::Wait);
    ASSERT_EQ(look_after(1s), Stall::Restart);
    progress_.arrivals++;
    ASSERT_EQ(look_after(1s), Stall::Wait);

    progress_.decoding = true;
    EXPECT_EQ(look_for(9s), Stall::Wait);
    EXPECT_EQ(look_after(1s), Stall::GiveUp);
}

TEST_F(StallWatchTest, ADecoderThatMakesNoPictureOfWhatItGetsIsAStallWhateverIsHeard)
{
    struct Fault {
        const char *what;
        void (*make)(StallWatch::Progress &);
    };
    for (const Fault &fault :
         {Fault{"hangs", [](StallWatch::Progress &progress) { progress.decoding = true; }},
          Fault{"swallows", [](StallWatch::Progress &progress) { progress.coded++; }}}) {
        SCOPED_TRACE(fault.what);
        watch_.start(now_);
        progress_.decoding = false;
        for (int second = 1; second <= 10; second++) {
            progress_.sound++;
            fault.make(progress_);
            EXPECT_EQ(look_after(1s), second < 10 ? Stall::Wait : Stall::Restart) << second;
        }
    }
}

TEST_F(StallWatchTest, AFileThatDoesNotComeBackIsAStallAtOnceAlsoWhereNoFrameIsExpected)
{
    progress_.held = true;
    ASSERT_EQ(look_after(1s), Stall::Wait);
    progress_.hangs = true;
    EXPECT_EQ(look_after(1ms), Stall::Restart);

    progress_.hangs = false;
    EXPECT_EQ(look_for(1min), Stall::Wait);
    progress_.hangs = true;
    EXPECT_EQ(look_after(1ms), Stall::GiveUp);
}

TEST_F(StallWatchTest, NothingIsExpectedOfAHeldFile)
{
    ASSERT_EQ(look_for(9s), Stall::Wait);
    progress_.held = true;
    progress_.clock.reset();
    EXPECT_EQ(look_for(1min), Stall::Wait);
    progress_.held = false;

    EXPECT_EQ(look_for(9s), Stall::Wait);
    EXPECT_EQ(look_after(1s), Stall::Restart);
}

TEST_F(StallWatchTest, AMinuteInWhichTheMachineStoodStillIsNoStall)
{
    progress_.position = 599s;
    progress_.shown++;
    ASSERT_EQ(look_after(1s), Stall::Wait);

    EXPECT_EQ(look_after(1min), Stall::Wait);

    progress_.position = 2s;
    EXPECT_EQ(look_for(7s), Stall::Wait) << "two seconds of the minute count";
    EXPECT_EQ(look_after(1s), Stall::Restart);
}

TEST_F(StallWatchTest, AFileThatShouldBeAtItsEndIsGivenUp)
{
    progress_.length = 10s;
    ASSERT_EQ(look_for(8s), Stall::Wait);

    EXPECT_EQ(look_after(1s), Stall::AtEnd);
}

TEST_F(StallWatchTest, AFileNearItsEndHasFourSeconds)
{
    progress_.position = 599900ms;

    ASSERT_EQ(look_for(3999ms), Stall::Wait);

    EXPECT_EQ(look_after(1ms), Stall::AtEnd);
}

TEST_F(StallWatchTest, TheEndComesSoonerAtDoubleSpeed)
{
    progress_.length = 10s;
    progress_.rate = 2.0;

    EXPECT_EQ(look_for(4s), Stall::Wait);
    EXPECT_EQ(look_after(1ms), Stall::AtEnd);
}

TEST_F(StallWatchTest, WhatIsSeenOrHeardBeginsTheWaitForTheEndAnew)
{
    struct News {
        const char *what;
        uint64_t StallWatch::Progress::*count;
    };
    for (const News &news : {News{"a picture", &StallWatch::Progress::shown},
                             News{"one that cannot be shown", &StallWatch::Progress::arrivals},
                             News{"sound after the last", &StallWatch::Progress::sound}}) {
        SCOPED_TRACE(news.what);
        watch_.start(now_);
        progress_.position = 599900ms;
        look_for(3s);
        (progress_.*news.count)++;
        EXPECT_EQ(look_after(1s), Stall::Wait);

        EXPECT_EQ(look_for(3s), Stall::Wait);
        EXPECT_EQ(look_after(1s), Stall::AtEnd);
    }
}

TEST_F(StallWatchTest, ALastFrameWhoseTimeIsFarPastTheEndIsNotWaitedFor)
{
    progress_.position = 599s;
    progress_.in_hand = true;

    EXPECT_EQ(look_for(4s), Stall::AtEnd);
}

TEST_F(StallWatchTest, WhereNothingTellsTheEndNoneIsNear)
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
        watch_.start(now_);
        progress_.rate = 1.0;
        progress_.position = 599s;
        progress_.length = 600s;
        unknown.make(progress_);

        EXPECT_EQ(look_for(9s), Stall::Wait);
        EXPECT_EQ(look_after(1s), Stall::Restart);
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
