#include "player_fixture.h"

#include <atomic>
#include <thread>

using testing::ElementsAreArray;

namespace {

class PlayerCallbackTest : public PlayerTest {
  protected:
    PlayerCallbackTest()
    {
        make_event_pipe();
        make_window();
        make_video_player();
    }

    static Lines posted(const char *own_log, int event)
    {
        const std::string id = std::to_string(event);
        return {own_log, "I \"iEventID = " + id + " iParam1 = 0\"",
                "ecore_pipe_write(" + id + ", 0)"};
    }
};

TEST_F(PlayerCallbackTest, PreparedStoresTheStateAndPosts)
{
    player_.OnPlayVideo("/demo/a.mp4", "");
    fake_.forget();

    fake_.media.fire_prepared();

    EXPECT_EQ(player_.m_iVideoPlayerState, 2);
    EXPECT_THAT(fake_.lines(), ElementsAreArray(posted("I \"\"", 3)));
}

// The report comes from a thread of the media player's, whatever the main loop is looking at.
TEST_F(PlayerCallbackTest, PreparedMayComeWhileTheMainLoopReadsTheState)
{
    player_.OnPlayVideo("/demo/a.mp4", "");
    std::atomic<bool> reported{false};
    std::thread reporter([this, &reported] {
        fake_.media.fire_prepared();
        reported = true;
    });

    while (!reported)
        EXPECT_THAT(player_.m_iVideoPlayerState.load(), testing::AnyOf(1, 2));
    reporter.join();

    EXPECT_EQ(player_.m_iVideoPlayerState, 2);
}

TEST_F(PlayerCallbackTest, PreparedWithoutAControllerStillPosts)
{
    CPlayerInspector::m_PlayerPreparedCB(nullptr);

    EXPECT_EQ(player_.m_iVideoPlayerState, 0);
    EXPECT_THAT(fake_.lines(), ElementsAreArray(posted("I \"\"", 3)));
}

TEST_F(PlayerCallbackTest, CompletedPosts)
{
    fake_.media.fire_completed();

    EXPECT_THAT(fake_.lines(), ElementsAreArray(posted("I \"\"", 2)));
}

TEST_F(PlayerCallbackTest, AResourceConflictPostsAnError)
{
    fake_.media.fire_interrupted(PLAYER_INTERRUPTED_BY_RESOURCE_CONFLICT);

    EXPECT_THAT(fake_.lines(), ElementsAreArray(posted("W \"\"", 1)));
}

TEST_F(PlayerCallbackTest, OtherInterruptionsAreOnlyLogged)
{
    for (const auto code : {PLAYER_INTERRUPTED_COMPLETED, PLAYER_INTERRUPTED_BY_MEDIA,
                            PLAYER_INTERRUPTED_BY_CALL, PLAYER_INTERRUPTED_BY_EARJACK_UNPLUG}) {
        fake_.forget();
        fake_.media.fire_interrupted(code);
        EXPECT_THAT(fake_.lines(), LinesAre("W \"\"")) << code;
    }
}

TEST_F(PlayerCallbackTest, APreparationErrorPostsAnError)
{
    for (const int code : {int(PLAYER_ERROR_NO_SUCH_FILE), -26476495, 0}) {
        fake_.forget();
        fake_.media.fire_error(code);
        const std::string own = "I \"" + std::to_string(code) + "\"";
        EXPECT_THAT(fake_.lines(), ElementsAreArray(posted(own.c_str(), 1)));
    }
}

TEST_F(PlayerCallbackTest, SoundWithoutDecoderIsOnlyLogged)
{
    fake_.media.fire_error(-26476496);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"-26476496\""));
}

TEST_F(PlayerCallbackTest, SubtitlesAreOnlyLogged)
{
    fake_.media.fire_subtitle(1000, "hello");

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\""));
}

} // namespace
