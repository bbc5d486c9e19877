// Which sink the sound goes to, and when it is looked for again.

#include <chrono>
#include <future>
#include <set>
#include <thread>

#include <gmock/gmock.h>

#include "media_player/audio_choice.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class AudioChoiceTest : public testing::Test {
  protected:
    std::string wanted_;
    std::set<std::string> devices_;
    std::set<std::string> mixing_;
    std::vector<std::string> looked_at_;
    std::vector<std::string> tried_twice_;
    std::chrono::steady_clock::time_point now_{};
    platform::AudioChoice choice_{{[this] { return wanted_; },
                                   [this](const std::string &sink) {
                                       looked_at_.push_back(sink);
                                       return devices_.count(sink) > 0;
                                   },
                                   [this](const std::string &sink) {
                                       tried_twice_.push_back(sink);
                                       return mixing_.count(sink) > 0;
                                   },
                                   [this] { return now_; }}};

    std::vector<std::string> looked_at() { return std::exchange(looked_at_, {}); }
};

TEST_F(AudioChoiceTest, ASoundServerComesBeforeADevice)
{
    devices_ = {"alsasink", "pulsesink"};
    EXPECT_EQ(choice_.sink(), "pulsesink");
    EXPECT_TRUE(choice_.is_shared());
    EXPECT_THAT(tried_twice_, IsEmpty()) << "a server mixes";
}

TEST_F(AudioChoiceTest, WhatWasFoundStandsWithoutAnotherLook)
{
    devices_ = {"alsasink"};
    EXPECT_EQ(choice_.sink(), "alsasink");
    EXPECT_THAT(looked_at(), ElementsAre("pulsesink", "alsasink"));

    now_ += std::chrono::hours(24);
    EXPECT_EQ(choice_.sink(), "alsasink");
    EXPECT_THAT(looked_at(), IsEmpty());
}

TEST_F(AudioChoiceTest, ADeviceIsSharedWhereItOpensTwice)
{
    for (const bool mixes : {false, true}) {
        devices_ = {"alsasink"};
        mixing_ = mixes ? devices_ : std::set<std::string>();
        choice_.forget();
        EXPECT_FALSE(choice_.is_shared()) << "nothing is known of it yet";
        EXPECT_EQ(choice_.sink(), "alsasink");
        EXPECT_EQ(choice_.is_shared(), mixes);
    }
    EXPECT_THAT(tried_twice_, ElementsAre("alsasink", "alsasink"));
}

TEST_F(AudioChoiceTest, WhereNoneWasFoundItIsLookedForAgainOnceAMinute)
{
    EXPECT_EQ(choice_.sink(), "");
    EXPECT_TRUE(choice_.is_shared());
    looked_at();
    devices_ = {"pulsesink"};

    now_ += std::chrono::seconds(59);
    EXPECT_EQ(choice_.sink(), "");
    EXPECT_THAT(looked_at(), IsEmpty());

    now_ += std::chrono::seconds(1);
    EXPECT_EQ(choice_.sink(), "pulsesink");
}

TEST_F(AudioChoiceTest, ALostDeviceIsReplacedAtOnce)
{
    devices_ = {"pulsesink", "alsasink"};
    EXPECT_EQ(choice_.sink(), "pulsesink");
    devices_ = {"alsasink"};
    choice_.forget();
    EXPECT_EQ(choice_.sink(), "alsasink");
}

TEST_F(AudioChoiceTest, ADeviceThatDoesNotAnswerIsNotLookedForAtOnce)
{
    devices_ = {"pulsesink"};
    EXPECT_EQ(choice_.sink(), "pulsesink");
    choice_.on_hang();

    EXPECT_EQ(choice_.sink(), "");
    EXPECT_TRUE(choice_.is_shared());
    now_ += std::chrono::minutes(1);
    EXPECT_EQ(choice_.sink(), "pulsesink");
}

TEST(AudioChoice, ASearchThatTakesLongIsNotWaitedForAndItsResultCounts)
{
    std::promise<void> answer;
    const auto opens = [answered = answer.get_future().share()](const std::string &) {
        answered.wait();
        return true;
    };
    platform::AudioChoice choice{{[] { return std::string(); }, opens, opens,
                                  std::chrono::steady_clock::now, std::chrono::milliseconds(50)}};
    EXPECT_EQ(choice.sink(), "");
    EXPECT_EQ(choice.sink(), "") << "and neither is there a second one";
    choice.forget();

    answer.set_value();
    while (choice.sink().empty())
        std::this_thread::yield();

    EXPECT_EQ(choice.sink(), "pulsesink");
}

TEST_F(AudioChoiceTest, ASinkThatIsAskedForIsTakenUnseen)
{
    wanted_ = "fakesink";
    EXPECT_EQ(choice_.sink(), "fakesink");
    EXPECT_THAT(looked_at(), IsEmpty());
    EXPECT_TRUE(choice_.is_shared());
}

TEST_F(AudioChoiceTest, SilenceAndTheReturnOfSoundAreToldOnceEach)
{
    testing::internal::CaptureStderr();
    for (int look = 0; look < 3; ++look) {
        choice_.sink();
        now_ += std::chrono::minutes(1);
    }
    std::string log = testing::internal::GetCapturedStderr();
    const std::string silence = "there is no sound device; videos play in silence";
    EXPECT_THAT(log, HasSubstr(silence));
    EXPECT_EQ(log.find(silence), log.rfind(silence)) << log;

    testing::internal::CaptureStderr();
    devices_ = {"pulsesink"};
    for (int look = 0; look < 3; ++look) {
        choice_.sink();
        now_ += std::chrono::minutes(1);
    }
    log = testing::internal::GetCapturedStderr();
    const std::string back = "there is sound again; it goes to pulsesink";
    EXPECT_THAT(log, HasSubstr(back));
    EXPECT_EQ(log.find(back), log.rfind(back)) << log;
}

} // namespace
