// What an ordinary file does from preparation to its end.

#include <gmock/gmock.h>

#include "player_fixture.h"

using testing::Contains;
using testing::ElementsAre;

namespace player_test {
namespace {

class Playing : public PlayerTest {};

TEST_F(Playing, AFileIsPreparedOncePlaysAndCompletesOnce)
{
    ASSERT_TRUE(playing(clip("a.mp4")));
    EXPECT_EQ(player_->state(), PLAYER_STATE_PLAYING);

    ASSERT_TRUE(wait_for_event("completed"));

    EXPECT_EQ(player_->state(), PLAYER_STATE_READY);
    EXPECT_TRUE(stays([this] { return events().size() == 2; }, 0.3));
    EXPECT_THAT(events(), ElementsAre("prepared", "completed"));
    EXPECT_GE(due(), 45u);
    EXPECT_LE(shown(), 60u);
}

TEST_F(Playing, NothingIsShownBeforeTheStart)
{
    ASSERT_TRUE(prepared(clip("a.mp4")));

    EXPECT_TRUE(stays([this] { return shown() == 0; }, 0.3));
}

TEST_F(Playing, CallbacksComeFromAThreadOfThePlayersOwn)
{
    ASSERT_TRUE(prepared(clip("a.mp4")));

    EXPECT_NE(callback_thread_.load(), std::this_thread::get_id());
}

TEST_F(Playing, NothingIsToldBeforeTheMainLoopHasComeBackToItself)
{
    ASSERT_EQ(prepare(path("missing.mp4")), PLAYER_ERROR_NONE);
    EXPECT_FALSE(told_without_main_loop(0.3));

    EXPECT_TRUE(wait_for_event("error -2"));
}

TEST_F(Playing, ACompletedFilePlaysAgainFromTheStart)
{
    ASSERT_TRUE(playing(clip("a.mp4")));
    ASSERT_TRUE(wait_for_event("completed"));
    const uint64_t due_once = due();

    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for([this] { return count("completed") == 2; }));
    EXPECT_GE(due(), due_once + 45);
}

TEST_F(Playing, AStoppedFileKeepsItsLastFrameAndStartsFromTheBeginning)
{
    ASSERT_TRUE(playing(clip("a.mp4")));
    ASSERT_TRUE(wait_for([this] { return position() > 1000; }));
    ASSERT_EQ(player_->stop(), PLAYER_ERROR_NONE);
    EXPECT_EQ(player_->state(), PLAYER_STATE_READY);
    EXPECT_EQ(picture().quarters(), "rgbw");

    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for([this] { return position() < 500; }));
    EXPECT_TRUE(wait_for_event("completed"));
}

TEST_F(Playing, APausedFileHoldsItsPictureAndGoesOn)
{
    ASSERT_TRUE(playing(clip("a.mp4")));
    ASSERT_TRUE(wait_for([this] { return position() > 500; }));
    ASSERT_EQ(player_->pause(), PLAYER_ERROR_NONE);
    EXPECT_EQ(player_->state(), PLAYER_STATE_PAUSED);

    uint64_t held = 0;
    EXPECT_TRUE(wait_for([&] {
        held = shown();
        return stays([&] { return shown() == held; }, 0.4);
    }));
    EXPECT_EQ(count("completed"), 0);
    ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);

    EXPECT_TRUE(wait_for_event("completed"));
    EXPECT_GT(shown(), held + 5);
}

TEST_F(Playing, ALoopingFileGoesRoundWithoutCompleting)
{
    Clip short_clip;
    short_clip.frames = 12;
    for (const char *name :
         {"a.mp4", "a.mkv", "a.ts", "a.avi", "a.flv", "a.ogg", "a.asf", "a.mpeg"}) {
        SCOPED_TRACE(name);
        ASSERT_EQ(prepare(clip(name, short_clip)), PLAYER_ERROR_NONE);
        const int before = count("prepared");
        player_->set_looping(true);
        ASSERT_TRUE(wait_for([&] { return count("prepared") > before; }));
        ASSERT_EQ(player_->start(), PLAYER_ERROR_NONE);
        int rounds = 0;
        int64_t last = 0;
        EXPECT_TRUE(wait_for([&] {
            const int64_t now = position();
            rounds += now + 200 < last;
            last = now;
            return rounds == 2;
        })) << "after "
            << rounds << " rounds, at " << last;
        EXPECT_EQ(count("completed"), 0);
        player_->unprepare();
    }
}

TEST_F(Playing, AFileThatLoopsNoMoreCompletesAtItsEnd)
{
    ASSERT_EQ(prepare(clip("a.mp4")), PLAYER_ERROR_NONE);
    player_->set_looping(true);
    ASSERT_TRUE(wait_for_event("prepared"));
    player_->start();
    ASSERT_TRUE(wait_for([this] { return position() > 500; }));

    player_->set_looping(false);

    EXPECT_TRUE(wait_for_event("completed"));
}

TEST_F(Playing, AFileThatIsToldToLoopWhilePlayingDoesNotComplete)
{
    ASSERT_TRUE(playing(clip("a.mp4")));
    ASSERT_TRUE(wait_for([this] { return position() > 500; }));

    player_->set_looping(true);

    EXPECT_TRUE(wait_for([this] { return position() > 1500; }));
    EXPECT_TRUE(wait_for([this] { return position() < 500; }));
    EXPECT_EQ(count("completed"), 0);
}

TEST_F(Playing, TheStatusTellsWhatIsBeingPlayed)
{
    const std::string file = clip("a.mp4");
    ASSERT_TRUE(playing(file));

    const platform::PlayerStatus status = platform::current_player_status();

    EXPECT_EQ(status.state, PLAYER_STATE_PLAYING);
    EXPECT_EQ(status.path, file);
    EXPECT_NEAR(static_cast<double>(status.duration_ms), 2000, 60);
    EXPECT_EQ(status.rate, 1.0);
    EXPECT_FALSE(status.has_subtitle);
}

} // namespace
} // namespace player_test
