// Fast forward and backwards, in every container a shop's content comes in.

#include <chrono>
#include <cmath>
#include <regex>

#include <fcntl.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "player_fixture.h"

using testing::Contains;
using testing::Not;

namespace player_test {
namespace {

class TrickPlay : public PlayerTest {
  protected:
    /** Plays four seconds with a key frame in each half. */
    testing::AssertionResult play(const std::string &name)
    {
        Clip facts;
        facts.frames = 120;
        facts.key_distance = 15;
        return playing(clip(name, facts));
    }

    /** Waits until the clip has played to a place. */
    bool reach(int64_t milliseconds)
    {
        return wait_for([=, this] { return position() >= milliseconds; });
    }

    /** The same, in less time, but not so fast that the end is there before it is noticed. */
    bool hurry_to(int64_t milliseconds)
    {
        return player_->set_rate(2.0) == PLAYER_ERROR_NONE && reach(milliseconds);
    }

    /** Goes on at double speed until a stretch took less time than it is long. */
    bool goes_faster_than_at_normal_speed()
    {
        for (int tries = 0; tries < 5; tries++) {
            if (!hurry_to(500))
                return false;
            const auto start = std::chrono::steady_clock::now();
            const int64_t from = position();
            if (!reach(1700))
                return false;
            const std::chrono::duration<double, std::milli> took =
                std::chrono::steady_clock::now() - start;
            // At normal speed it cannot be more than 1. A busy machine may be too slow at times.
            if (static_cast<double>(position() - from) / took.count() > 1.1)
                return true;
            player_->set_rate(-2.0);
            if (!wait_for([this] { return position() < 500; }))
                return false;
        }
        return false;
    }
};

class EveryContainer : public TrickPlay, public testing::WithParamInterface<const char *> {};

TEST_P(EveryContainer, IsFasterAtDoubleSpeed)
{
    ASSERT_TRUE(play(std::string("a.") + GetParam()));
    ASSERT_TRUE(reach(100));
    EXPECT_TRUE(goes_faster_than_at_normal_speed());
}

TEST_P(EveryContainer, GoesForwardAndBackwardsAtDoubleSpeedAndOnAtNormalSpeed)
{
    ASSERT_TRUE(play(std::string("a.") + GetParam()));
    ASSERT_TRUE(reach(100));
    ASSERT_TRUE(hurry_to(500));
    ASSERT_TRUE(reach(1700));
    EXPECT_EQ(player_->rate(), 2.0);

    ASSERT_EQ(player_->set_rate(-2.0), PLAYER_ERROR_NONE);
    EXPECT_EQ(player_->rate(), -2.0);
    ASSERT_TRUE(wait_for([this] { return position() < 900; }));

    ASSERT_EQ(player_->set_rate(1.0), PLAYER_ERROR_NONE);
    const int64_t turned = position();
    EXPECT_TRUE(reach(turned + 300));
    EXPECT_EQ(player_->rate(), 1.0);
    EXPECT_EQ(count("completed"), 0);
}

INSTANTIATE_TEST_SUITE_P(Containers, EveryContainer,
                         testing::Values("ts", "avi", "mp4", "asf", "wmv", "ogg", "flv", "mpeg",
                                         "mkv", "tp"),
                         [](const auto &container) { return container.param; });

TEST_F(TrickPlay, GoesBackwardsToTheStartAndThenForward)
{
    testing::internal::CaptureStderr();
    // The one goes backwards by itself, the other steps.
    for (const char *name : {"a.mp4", "a.ts"}) {
        SCOPED_TRACE(name);
        player_->unprepare();
        ASSERT_TRUE(play(name));
        ASSERT_TRUE(hurry_to(2800));
        ASSERT_EQ(player_->set_rate(-2.0), PLAYER_ERROR_NONE);

        // Picture after picture.
        int64_t last = position();
        int64_t lowest = last;
        int steps = 0;
        EXPECT_TRUE(wait_for([&] {
            const int64_t here = position();
            steps += here < last;
            last = here;
            lowest = std::min(lowest, here);
            return player_->rate() == 1.0;
        }));

        EXPECT_GE(steps, 2);
        EXPECT_LT(lowest, 700);
        EXPECT_EQ(player_->state(), PLAYER_STATE_PLAYING);
        EXPECT_TRUE(reach(last + 800));
    }
    EXPECT_EQ(count("completed"), 0);
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("backwards play came to the start; going on forward"));
}

TEST_F(TrickPlay, TheSameSpeedAgainChangesNothing)
{
    ASSERT_TRUE(play("a.mp4"));
    ASSERT_TRUE(reach(500));
    int64_t last = position();
    bool went_back = false;

    player_->set_rate(1.0);

    EXPECT_TRUE(wait_for([&] {
        went_back |= position() < last;
        last = position();
        return last > 1200;
    }));
    EXPECT_FALSE(went_back);
}

TEST_F(TrickPlay, PauseHoldsAndStartGoesOnInBothDirections)
{
    for (const char *name : {"a.mp4", "a.ts"}) {
        SCOPED_TRACE(name);
        player_->unprepare();
        ASSERT_TRUE(play(name));
        ASSERT_TRUE(hurry_to(2000));
        player_->set_rate(-2.0);
        ASSERT_TRUE(wait_for([this] { return position() < 1900; }));
        ASSERT_EQ(player_->pause(), PLAYER_ERROR_NONE);
        int64_t held = 0;
        // A frame that was on its way may still come.
        EXPECT_TRUE(wait_for([&] {
            held = position();
            return stays([&] { return position() == held; }, 0.4);
        }));

        ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

        EXPECT_TRUE(wait_for([&] { return position() < held; }));
    }
}

TEST_F(TrickPlay, ASpeedSetWhilePausedHoldsFromTheStartOn)
{
    ASSERT_TRUE(play("a.mp4"));
    ASSERT_TRUE(reach(500));
    player_->pause();
    player_->set_rate(2.0);
    player_->set_rate(1.0);
    player_->set_rate(2.0);

    player_->start();

    EXPECT_TRUE(wait_for_event("completed", 4));
}

TEST_F(TrickPlay, ManyChangesInARowEndWithTheLast)
{
    ASSERT_TRUE(play("a.mkv"));
    ASSERT_TRUE(reach(500));
    for (int i = 0; i < 20; i++)
        ASSERT_EQ(player_->set_rate(i % 2 ? -2.0 : 2.0), PLAYER_ERROR_NONE);
    ASSERT_EQ(player_->set_rate(1.0), PLAYER_ERROR_NONE);

    EXPECT_EQ(player_->rate(), 1.0);
    const int64_t from = position();
    EXPECT_TRUE(wait_for([&] { return position() > from + 500; }));
    EXPECT_TRUE(wait_for_event("completed"));
}

TEST_F(TrickPlay, FastForwardOfALoopingFileGoesRound)
{
    Clip facts;
    ASSERT_EQ(prepare(clip("a.mp4", facts)), PLAYER_ERROR_NONE);
    player_->set_looping(true);
    ASSERT_TRUE(wait_for_event("prepared"));
    player_->start();
    ASSERT_TRUE(reach(300));
    player_->set_rate(2.0);

    EXPECT_TRUE(reach(1500));
    EXPECT_TRUE(wait_for([this] { return position() < 500; }));
    EXPECT_TRUE(reach(1500));
    EXPECT_EQ(count("completed"), 0);
    EXPECT_EQ(player_->rate(), 2.0);
}

TEST_F(TrickPlay, AStreamThatCannotBeSoughtGoesOnAtNormalSpeed)
{
    const std::string stream = read_file(clip("a.ts"));
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_GE(fcntl(ends[0], F_SETPIPE_SZ, static_cast<int>(stream.size())),
              static_cast<int>(stream.size()));
    ASSERT_EQ(write(ends[1], stream.data(), stream.size()), static_cast<ssize_t>(stream.size()));
    close(ends[1]);
    ASSERT_TRUE(playing("fd://" + std::to_string(ends[0])));
    testing::internal::CaptureStderr();

    player_->set_rate(2.0);

    EXPECT_TRUE(wait_for([this] { return player_->rate() == 1.0; }));
    player_->set_rate(1.0);
    EXPECT_TRUE(wait_for_event("completed"));
    const std::string log = testing::internal::GetCapturedStderr();
    const std::regex refusal("cannot be sought; it plays at normal speed");
    EXPECT_EQ(std::distance(std::sregex_iterator(log.begin(), log.end(), refusal), {}), 1) << log;
    player_->unprepare();
    close(ends[0]);
}

// What reaches the sound device.

std::atomic<int> loudest{0};

platform::ElementPtr listening_sink()
{
    platform::ElementPtr bin(GST_ELEMENT(gst_object_ref_sink(gst_parse_bin_from_description(
        "audioconvert ! audio/x-raw,format=S16LE ! fakesink sync=true name=ear "
        "signal-handoffs=true",
        TRUE, nullptr))));
    GstElement *ear = gst_bin_get_by_name(GST_BIN(bin.get()), "ear");
    const auto listen = +[](GstElement *, GstBuffer *sound, GstPad *, gpointer) {
        GstMapInfo map;
        if (!gst_buffer_map(sound, &map, GST_MAP_READ))
            return;
        const auto *samples = reinterpret_cast<const int16_t *>(map.data);
        int peak = 0;
        for (size_t i = 0; i < map.size / 2; i++)
            peak = std::max(peak, std::abs(static_cast<int>(samples[i])));
        loudest = peak;
        gst_buffer_unmap(sound, &map);
    };
    g_signal_connect(ear, "handoff", G_CALLBACK(listen), nullptr);
    gst_object_unref(ear);
    return bin;
}

TEST_F(TrickPlay, SoundIsHeardAtNormalSpeedOnly)
{
    platform::PlayerOptions options = usual_options();
    options.make_audio_sink = listening_sink;
    make_player(options);
    ASSERT_TRUE(play("a.mp4"));
    EXPECT_TRUE(wait_for([] { return loudest > 1000; }));

    player_->set_rate(2.0);

    EXPECT_TRUE(wait_for([] { return loudest == 0; }));
    EXPECT_TRUE(stays([] { return loudest == 0; }, 0.3));
    player_->set_rate(1.0);
    EXPECT_TRUE(wait_for([] { return loudest > 1000; }));

    player_->set_rate(2.0);
    EXPECT_TRUE(wait_for([] { return loudest == 0; }));
    player_->stop();
    player_->start();
    EXPECT_TRUE(wait_for([] { return loudest > 1000; })) << "a new start is at normal speed";
}

TEST_F(TrickPlay, ALoopIsHeardFromItsFirstRoundOn)
{
    loudest = 0;
    platform::PlayerOptions options = usual_options();
    options.make_audio_sink = listening_sink;
    make_player(options);
    player_->set_looping(true);
    ASSERT_TRUE(play("a.mp4"));
    EXPECT_TRUE(wait_for([] { return loudest > 1000; }));
    EXPECT_LT(position(), 2000);
}

} // namespace
} // namespace player_test
