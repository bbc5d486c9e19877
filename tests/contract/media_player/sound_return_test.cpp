// A file that plays over and over gets its sound back without a restart.

#include <future>

#include <gmock/gmock.h>

#include "player_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace player_test {
namespace {

class SoundReturn : public PlayerTest {
  protected:
    platform::PlayerOptions sound_options()
    {
        platform::PlayerOptions options = usual_options();
        options.sound_retry_interval = std::chrono::milliseconds(100);
        options.find_sound = [this] { return there_is_sound_.load(); };
        options.make_audio_sink = [this] {
            platform::ElementPtr sink = platform::make_element("fakeaudiosink");
            g_object_set(sink.get(), "sync", TRUE, nullptr);
            device_ = sink.get();
            sinks_++;
            return sink;
        };
        return options;
    }

    testing::AssertionResult playing_in_a_loop(const std::string &file)
    {
        player_->set_looping(true);
        return playing(file);
    }

    bool goes_round()
    {
        return wait_for([this] { return position() > 1500; }) &&
               wait_for([this] { return position() < 500; });
    }

    std::atomic<bool> there_is_sound_{true};
    std::atomic<int> sinks_{0};
    std::atomic<GstElement *> device_{nullptr};
};

TEST_F(SoundReturn, ALoopThatLostItsDevicePlaysWithSoundAgain)
{
    for (const char *name : {"rounds.mp4", "seeks.ts"}) {
        SCOPED_TRACE(name);
        make_player(sound_options());
        testing::internal::CaptureStderr();
        ASSERT_TRUE(playing_in_a_loop(clip(name)));
        ASSERT_TRUE(wait_for([this] { return position() > 300; }));
        const int before = sinks_;
        platform::ElementPtr lost(GST_ELEMENT(gst_object_ref(device_.load())));

        GST_ELEMENT_ERROR(lost.get(), RESOURCE, WRITE, ("the device is gone"), (nullptr));

        EXPECT_TRUE(wait_for([&] { return sinks_ > before; }));
        EXPECT_TRUE(goes_round());
        const std::string log = testing::internal::GetCapturedStderr();
        EXPECT_THAT(log, HasSubstr("plays in silence: the device is gone"));
        EXPECT_THAT(log, HasSubstr("plays with sound again"));
        EXPECT_EQ(sinks_, before + 1);
    }
    EXPECT_EQ(count("completed"), 0);
}

TEST_F(SoundReturn, ALoopThatBeganWithoutADeviceTakesOneUpThatComesLater)
{
    there_is_sound_ = false;
    make_player(sound_options());
    ASSERT_TRUE(playing_in_a_loop(clip("a.mp4")));
    ASSERT_TRUE(goes_round());
    EXPECT_EQ(sinks_, 1);
    testing::internal::CaptureStderr();

    there_is_sound_ = true;

    EXPECT_TRUE(wait_for([this] { return sinks_ == 2; }));
    EXPECT_TRUE(goes_round());
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("plays with sound again"));
    EXPECT_EQ(sinks_, 2);
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

TEST_F(SoundReturn, ASoundServerThatHangsHoldsNoRoundUp)
{
    platform::PlayerOptions options = sound_options();
    there_is_sound_ = false;
    std::promise<void> answer;
    // Who searches may outlive the test.
    const auto questions = std::make_shared<std::atomic<int>>(0);
    options.find_sound = [questions, answered = answer.get_future().share()] {
        if ((*questions)++ > 0) // the first one is asked before the film
            answered.wait();
        return false;
    };
    make_player(options);
    ASSERT_TRUE(playing_in_a_loop(clip("a.mp4")));
    ASSERT_TRUE(wait_for([&] { return *questions > 1; }));

    EXPECT_TRUE(goes_round());
    EXPECT_TRUE(goes_round());

    answer.set_value();
}

TEST_F(SoundReturn, ADeviceThatBreaksEachTimeDoesNotStopTheLoop)
{
    platform::PlayerOptions options = sound_options();
    options.make_audio_sink = [this] {
        sinks_++;
        platform::ElementPtr sink = platform::make_element("alsasink");
        g_object_set(sink.get(), "device", "no such device", nullptr);
        return sink;
    };
    make_player(options);
    ASSERT_TRUE(playing_in_a_loop(clip("a.mp4")));

    EXPECT_TRUE(wait_for([this] { return sinks_ >= 3; }));

    EXPECT_TRUE(goes_round());
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

} // namespace
} // namespace player_test
