// How long a list in which nothing can be played is waited with, and when that is given up.

#include <string>

#include <gmock/gmock.h>

#include "unplayable_files/fruitless_rounds.h"

namespace {

using namespace std::chrono_literals;
using platform::FruitlessRounds;
using testing::HasSubstr;

constexpr bool OWN_FAULT = true;

class FruitlessRoundsTest : public testing::Test {
  protected:
    std::chrono::milliseconds pause_for(const std::string &path, uint64_t shown = 7)
    {
        const FruitlessRounds::Verdict verdict = rounds_.on_passed_over(path, OWN_FAULT, shown);
        EXPECT_FALSE(verdict.give_up) << path;
        return verdict.pause;
    }

    bool gives_up_at(const std::string &path, bool own_fault, uint64_t shown = 7)
    {
        return rounds_.on_passed_over(path, own_fault, shown).give_up;
    }

    /** Rounds of files that are to blame themselves, up to a minute of waits in all. */
    void wait_through_short_pauses(const std::string &path = "/a.mp4")
    {
        while (rounds_.on_passed_over(path, OWN_FAULT, 7).pause < 32s)
            ;
    }

    FruitlessRounds rounds_;
};

TEST_F(FruitlessRoundsTest, BecomeRarer)
{
    EXPECT_EQ(pause_for("/a.mp4"), 0s);
    EXPECT_EQ(pause_for("/b.mp4"), 0s);
    testing::internal::CaptureStderr();

    for (const auto &pause : {1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s}) {
        EXPECT_EQ(pause_for("/a.mp4"), pause);
        EXPECT_EQ(pause_for("/b.mp4"), 0s) << "of the same round";
    }

    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("nothing that is to be played can be opened; "
                               "the player looks again in 2 s"));
    EXPECT_EQ(log.find("in 60 s"), log.rfind("in 60 s")) << "said once: " << log;
}

TEST_F(FruitlessRoundsTest, TellWhenAWaitBeginsAndNotWhenTheyAreGivenUp)
{
    int told = 0;
    rounds_.set_listener([&told] { ++told; });
    gives_up_at("/a.mp4", OWN_FAULT);
    gives_up_at("/b.mp4", !OWN_FAULT);
    EXPECT_EQ(told, 0) << "in the first round";
    gives_up_at("/a.mp4", OWN_FAULT);
    EXPECT_EQ(told, 1);
    wait_through_short_pauses();
    EXPECT_EQ(told, 6);
    gives_up_at("/b.mp4", !OWN_FAULT);

    EXPECT_TRUE(gives_up_at("/a.mp4", OWN_FAULT));
    EXPECT_EQ(told, 6);
}

TEST_F(FruitlessRoundsTest, EndWithAnythingThatIsShown)
{
    for (int round = 0; round < 3; ++round)
        pause_for("/a.mp4", 7);

    EXPECT_EQ(pause_for("/a.mp4", 8), 0s);
    EXPECT_EQ(pause_for("/a.mp4", 8), 1s);
}

TEST_F(FruitlessRoundsTest, HaveOneWaitEachHoweverLongTheListIs)
{
    for (const auto &pause : {0s, 1s, 2s}) {
        EXPECT_EQ(pause_for("/0"), pause);
        for (int number = 1; number < 5000; ++number)
            ASSERT_EQ(pause_for("/" + std::to_string(number)), 0s) << number;
    }
}

TEST_F(FruitlessRoundsTest, AreGivenUpAfterAMinuteForAnotherFaultThanTheFiles)
{
    for (const auto &pause : {0s, 1s, 2s, 4s, 8s, 16s, 32s}) {
        EXPECT_EQ(pause_for("/a.mp4"), pause) << "names and reasons stand on the screen";
        EXPECT_FALSE(gives_up_at("/b.mp4", !OWN_FAULT));
    }

    EXPECT_TRUE(gives_up_at("/a.mp4", OWN_FAULT));
}

TEST_F(FruitlessRoundsTest, AreGivenUpForAFaultThatComesLater)
{
    wait_through_short_pauses();
    EXPECT_FALSE(gives_up_at("/a.mp4", !OWN_FAULT)) << "of the round before";

    EXPECT_TRUE(gives_up_at("/a.mp4", OWN_FAULT));
}

TEST_F(FruitlessRoundsTest, AreNotGivenUpForAFaultThatHasPassed)
{
    gives_up_at("/a.mp4", !OWN_FAULT);
    wait_through_short_pauses();

    EXPECT_FALSE(gives_up_at("/a.mp4", OWN_FAULT));
}

TEST_F(FruitlessRoundsTest, AreNotGivenUpWhereSomethingIsShownBetween)
{
    for (uint64_t time = 0; time < 50; ++time)
        EXPECT_FALSE(gives_up_at("/a.mp4", !OWN_FAULT, time / 7));
}

} // namespace
