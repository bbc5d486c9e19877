// A machine that has no thread to give loses a video, a subtitle or some time, and goes on.

#include <gmock/gmock.h>

#include "base/worker_thread.h"
#include "player_fixture.h"
#include "store_support/thread_shortage.h"

using store_test::threads_left;
using testing::ElementsAre;
using testing::HasSubstr;

namespace player_test {
namespace {

class ThreadShortage : public PlayerTest {
  protected:
    void TearDown() override
    {
        threads_left = -1;
        PlayerTest::TearDown();
    }
};

// The caller of a call that fails is told nothing more, and would wait with its show for ever.
TEST_F(ThreadShortage, AFileWithoutAThreadHasFailedOnceTheCallIsOverAndTheNextOnePlays)
{
    const std::string file = clip("a.mp4");
    threads_left = 0;

    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);

    EXPECT_EQ(threads_left, -1);
    EXPECT_EQ(player_->prepare_async(nullptr, nullptr), PLAYER_ERROR_INVALID_OPERATION);
    EXPECT_THAT(events(), ElementsAre());
    ASSERT_TRUE(wait_for([this] { return !events().empty(); }));
    EXPECT_THAT(events(), ElementsAre("error -26476532"));
    EXPECT_EQ(player_->state(), PLAYER_STATE_IDLE);
    EXPECT_TRUE(playing(file));
}

TEST_F(ThreadShortage, AFileWithoutAThreadThatIsLetGoOfIsNotHeardOf)
{
    const std::string file = clip("a.mp4");
    threads_left = 0;
    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);

    player_->unprepare();

    EXPECT_TRUE(playing(file));
    EXPECT_THAT(events(), ElementsAre("prepared"));
}

TEST_F(ThreadShortage, AFileThatNobodyCanOpenHasFailed)
{
    const std::string file = clip("a.mp4");
    threads_left = 1;
    testing::internal::CaptureStderr();

    ASSERT_EQ(prepare(file), PLAYER_ERROR_NONE);

    ASSERT_TRUE(wait_for([this] { return !events().empty(); }));
    EXPECT_THAT(events(), ElementsAre("error -26476532"));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("a.mp4 cannot be played: there is no thread to open it"));
    EXPECT_TRUE(playing(file));
}

TEST_F(ThreadShortage, WhatMightHangIsDoneByTheCaller)
{
    std::thread::id ran;
    threads_left = 0;

    EXPECT_TRUE(platform::WorkerThread::run_apart(
        "test", [&ran] { ran = std::this_thread::get_id(); }, std::chrono::milliseconds(0)));

    EXPECT_EQ(ran, std::this_thread::get_id());
}

TEST_F(ThreadShortage, ASubtitleWithoutAThreadIsGoneWithout)
{
    write_file(path("a.srt"), "1\n00:00:00,000 --> 00:00:10,000\nHello shop\n");
    platform::PlayerOptions options = usual_options();
    // The last thing that is done before the subtitle is begun: looking whether the file is there.
    options.set_up = [](const std::atomic<bool> &) {
        threads_left = 0;
        return true;
    };
    // The pipeline's own threads come later, so that none of them takes the refusal.
    options.make_audio_sink = [] {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (threads_left >= 0 && std::chrono::steady_clock::now() < limit)
            std::this_thread::yield();
        return platform::make_audio_sink();
    };
    make_player(options);
    player_->set_subtitle_path(path("a.srt"));
    testing::internal::CaptureStderr();

    EXPECT_TRUE(playing(clip("a.mp4")));

    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("there is no thread to read it"));
    EXPECT_FALSE(player_->status().has_subtitle);
}

} // namespace
} // namespace player_test
