// When a file that plays over and over in silence tries to get its sound back.

#include <gtest/gtest.h>

#include "media_player/player_options.h"
#include "media_player/sound_recovery.h"

namespace {

using namespace std::chrono_literals;
using platform::SoundRecovery;

class SoundRecoveryTest : public testing::Test {
  protected:
    /** The device breaks; the pipeline is made anew without it. */
    void lose_device()
    {
        sound_.on_device_lost(now_);
        sound_.go_silent();
        sound_.on_pipeline(false, now_);
    }

    /** A try that finds a device; the pipeline is made anew with it. */
    void find_device()
    {
        sound_.on_device_found();
        sound_.on_pipeline(true, now_);
    }

    bool try_is_due() { return sound_.try_is_due(false, now_); }

    SoundRecovery sound_{platform::PlayerOptions().sound_retry_interval};
    SoundRecovery::Time now_ = SoundRecovery::Time(1h);
};

TEST_F(SoundRecoveryTest, AFileWithItsSoundTriesNothing)
{
    sound_.on_pipeline(true, now_);
    now_ += 1h;

    EXPECT_FALSE(sound_.try_is_due(true, now_));
    EXPECT_FALSE(sound_.silent());
}

TEST_F(SoundRecoveryTest, ALostDeviceIsTriedAgainOnceAPause)
{
    sound_.on_pipeline(true, now_);
    lose_device();
    EXPECT_TRUE(sound_.silent());

    now_ += 1min - 1ms;
    EXPECT_FALSE(try_is_due());
    now_ += 1ms;
    EXPECT_TRUE(try_is_due());
    EXPECT_FALSE(try_is_due()) << "that was the try";
    now_ += 1min;
    EXPECT_TRUE(try_is_due());
}

TEST_F(SoundRecoveryTest, WhatASearchFoundStandsUntilThePipelineIsMadeAnew)
{
    lose_device();
    EXPECT_TRUE(sound_.lost_device());
    EXPECT_FALSE(sound_.found_device());

    sound_.on_search_over(true);
    EXPECT_TRUE(sound_.found_device());

    find_device();
    EXPECT_FALSE(sound_.found_device());
    EXPECT_FALSE(sound_.lost_device());

    sound_.on_search_over(true);
    EXPECT_FALSE(sound_.found_device()) << "it has its sound already";
}

TEST_F(SoundRecoveryTest, ADeviceThatIsFoundEndsTheSilence)
{
    sound_.on_pipeline(true, now_);
    lose_device();

    find_device();

    EXPECT_FALSE(sound_.silent());
    now_ += 24h;
    EXPECT_FALSE(try_is_due());
}

TEST_F(SoundRecoveryTest, AFileThatBeganWithoutADeviceTriesForItsTrackOnly)
{
    sound_.on_pipeline(false, now_);
    now_ += 1min;

    EXPECT_FALSE(sound_.try_is_due(false, now_)) << "it has no sound to bring back";
    EXPECT_TRUE(sound_.try_is_due(true, now_));
}

TEST_F(SoundRecoveryTest, ATrackThatCannotBeDecodedIsNotTriedAgain)
{
    sound_.on_pipeline(true, now_);
    sound_.go_silent();
    sound_.on_pipeline(false, now_);
    now_ += 24h;

    EXPECT_FALSE(try_is_due());
}

TEST_F(SoundRecoveryTest, OnlyTheFirstSilenceIsNews)
{
    EXPECT_TRUE(sound_.go_silent());
    EXPECT_FALSE(sound_.go_silent());
}

TEST_F(SoundRecoveryTest, ADeviceThatBreaksEachTimeIsTriedMoreAndMoreRarelyUpToAnHour)
{
    sound_.on_pipeline(true, now_);
    lose_device();
    for (const auto pause : {1min, 2min, 4min, 8min, 16min, 32min, 60min, 60min}) {
        SCOPED_TRACE(std::chrono::minutes(pause).count());
        now_ += pause - 1ms;
        ASSERT_FALSE(try_is_due());
        now_ += 1ms;
        ASSERT_TRUE(try_is_due());
        find_device();
        now_ += 1s;
        lose_device();
    }
}

TEST_F(SoundRecoveryTest, ADeviceThatWasGoodForAWhileIsTriedSoonAgain)
{
    sound_.on_pipeline(true, now_);
    lose_device();
    now_ += 1min;
    ASSERT_TRUE(try_is_due());
    find_device();

    now_ += 2min + 1ms;
    lose_device();

    now_ += 1min;
    EXPECT_TRUE(try_is_due());
}

TEST_F(SoundRecoveryTest, AReturnThatFailedIsTriedAgain)
{
    sound_.on_pipeline(true, now_);
    lose_device();
    find_device();

    sound_.on_failed_return();
    sound_.go_silent();
    sound_.on_pipeline(false, now_);

    now_ += 2min;
    EXPECT_TRUE(try_is_due());
}

} // namespace
