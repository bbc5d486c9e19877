// The readable cases; VideoTranscriptTest.cpp goes through all combinations.

#include "player_test.h"

using testing::IsEmpty;

namespace {

class VideoPlaybackTest : public PlayerTest {};

// ---- m_CreateVideoPlayer ----

TEST_F(VideoPlaybackTest, CreatingThePlayerRegistersFourCallbacks)
{
    EXPECT_TRUE(player_.m_CreateVideoPlayer());

    EXPECT_NE(player_.m_hPlayer, nullptr);
    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "player_create()", "player_set_completed_cb(controller)",
                         "player_set_interrupted_cb(controller)", "player_set_error_cb(controller)",
                         "player_set_subtitle_updated_cb_ex(controller)"));
}

// ---- OnPlayVideo ----

class PlayVideoTest : public VideoPlaybackTest {
  protected:
    PlayVideoTest()
    {
        make_window();
        make_video_player();
        fill_play_list({"a.mp4", "b.mp4"});
    }
};

TEST_F(PlayVideoTest, AVideoIsSetUpAndPrepared)
{
    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", ""));

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"/demo/a.mp4 \"", "I \"\"", "player_unprepare()",
                         "player_set_uri(\"/demo/a.mp4\")", "player_set_display(0, window#1)",
                         "player_prepare_async(controller)", "player_set_looping(false)",
                         "I \"player_set_looping false finish\""));
    EXPECT_EQ(player_.m_iVideoPlayerState, 1);
    EXPECT_TRUE(fake_.media.preparing());
}

TEST_F(PlayVideoTest, ASubtitleIsNamedBeforeTheVideo)
{
    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", "/demo/a.srt"));

    EXPECT_THAT(fake_.calls(),
                LinesAre("player_unprepare()", "player_set_subtitle_path(\"/demo/a.srt\")",
                         "player_set_uri(\"/demo/a.mp4\")", "player_set_display(0, window#1)",
                         "player_prepare_async(controller)", "player_set_looping(false)"));
    EXPECT_EQ(fake_.logs().front(), "I \"/demo/a.mp4 /demo/a.srt\"");
}

TEST_F(PlayVideoTest, TheVideoBeforeIsStoppedAndLetGo)
{
    fake_.media.state = PLAYER_STATE_PLAYING;
    player_.m_iVideoPlayerState = 2;

    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", ""));

    EXPECT_THAT(fake_.calls(),
                LinesAre("player_stop()", "player_unprepare()", "player_set_uri(\"/demo/a.mp4\")",
                         "player_set_display(0, window#1)", "player_prepare_async(controller)",
                         "player_set_looping(false)"));
    EXPECT_EQ(player_.m_iVideoPlayerState, 1);
}

TEST_F(PlayVideoTest, AOneEntryListLoops)
{
    fill_play_list({"a.mp4"});

    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", ""));

    EXPECT_EQ(fake_.calls().back(), "player_set_looping(true)");
    EXPECT_EQ(fake_.logs().back(), "I \"player_set_looping true finish\"");
}

// ---- StopVideo, m_DestroyVideo ----

TEST_F(VideoPlaybackTest, StoppingWithoutAPlayerOnlyClearsTheState)
{
    player_.m_iVideoPlayerState = 2;

    player_.StopVideo();

    EXPECT_EQ(player_.m_iVideoPlayerState, 0);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
    EXPECT_THAT(fake_.of({"player_get_state"}), IsEmpty());
}

TEST_F(VideoPlaybackTest, AnIdlePlayerIsOnlyUnprepared)
{
    make_video_player();

    player_.StopVideo();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "player_unprepare()"));
}

TEST_F(VideoPlaybackTest, APlayerInAnyOtherStateIsStoppedFirst)
{
    make_video_player();
    for (const auto state : {PLAYER_STATE_READY, PLAYER_STATE_PLAYING, PLAYER_STATE_PAUSED}) {
        fake_.media.state = state;
        player_.m_iVideoPlayerState = 2;
        fake_.forget();

        player_.StopVideo();

        EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "player_stop()", "player_unprepare()"));
        EXPECT_EQ(player_.m_iVideoPlayerState, 0);
    }
}

TEST_F(VideoPlaybackTest, AnUnknownStateIsNotStoppedButUnprepared)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.fail("player_get_state");

    player_.StopVideo();

    EXPECT_THAT(fake_.calls(), LinesAre("player_unprepare()"));
}

// The media player tells of a preparation on a thread of its own.
TEST_F(VideoPlaybackTest, APreparationReportedWhileStoppingDoesNotCount)
{
    make_event_pipe();
    make_window();
    make_video_player();
    ASSERT_TRUE(player_.OnPlayVideo("/demo/a.mp4", ""));
    fake_.media.before_unprepare = [this] { fake_.media.fire_prepared(); };

    player_.StopVideo();
    fake_.forget();
    fake_.loop.drain_pipe();

    EXPECT_EQ(player_.m_iVideoPlayerState, 0);
    EXPECT_EQ(fake_.transcript.count("player_start"), 0);
}

TEST_F(VideoPlaybackTest, FailuresOfStoppingAreLogged)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.fail("player_stop");
    fake_.fail("player_unprepare");

    player_.StopVideo();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "player_stop()", "E \"player_stop error\"",
                                        "player_unprepare()", "E \"player_unprepare error\""));
}

TEST_F(VideoPlaybackTest, DestroyingReleasesThePlayer)
{
    make_video_player();

    player_.m_DestroyVideo();

    EXPECT_EQ(player_.m_hPlayer, nullptr);
    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "player_destroy()"));
}

TEST_F(VideoPlaybackTest, AFailedDestructionIsLoggedAndTheHandleForgotten)
{
    make_video_player();
    fake_.fail("player_destroy");

    player_.m_DestroyVideo();

    EXPECT_EQ(player_.m_hPlayer, nullptr);
    EXPECT_THAT(fake_.logs(), LinesAre("D \"\"", "E \"player_destroy error\""));
}

TEST_F(VideoPlaybackTest, DestroyingWithoutAPlayerDoesNothing)
{
    player_.m_DestroyVideo();

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\""));
}

// ---- OnPause, OnResume, OnResumeOrPause, m_Forward, m_Rewind ----

class VideoControlTest : public VideoPlaybackTest {
  protected:
    using Operation = bool (CPlayerInspector::*)();

    void expect_in(player_state_e state, Operation operation, bool succeeds, const Lines &expected)
    {
        make_video_player_in(state);
        fake_.media.rate = rate_;
        EXPECT_EQ((player_.*operation)(), succeeds);
        EXPECT_EQ(fake_.lines(), expected);
    }

    // Setting a speed, a whole number.
    static Lines speed_lines(int speed)
    {
        return {"I \"" + std::to_string(speed) + ".000000\"",
                "player_set_playback_rate(" + std::to_string(speed) + ")"};
    }

    float rate_ = 1.0F;
};

TEST_F(VideoControlTest, APlayingVideoIsPausedAtNormalSpeed)
{
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnPause, true,
              join({{"D \"\"", "D \"\""}, speed_lines(1), {"player_pause()"}}));
}

TEST_F(VideoControlTest, PausingWhilePausedIsRefused)
{
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::OnPause, false,
              {"D \"\"", "D \"\"", "I \"playerState is not PLAYING\""});
}

TEST_F(VideoControlTest, APausedVideoResumesAtNormalSpeed)
{
    expect_in(
        PLAYER_STATE_PAUSED, &CPlayerInspector::OnResume, true,
        join({{"D \"\"", "D \"\"", "D \"playerState:4\""}, speed_lines(1), {"player_start()"}}));
    EXPECT_THAT(fake_.of({"player_get_playback_rate"}), IsEmpty());
}

TEST_F(VideoControlTest, AFastVideoReturnsToNormalSpeedAndStartsAgain)
{
    rate_ = 2.0F;
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnResume, true,
              join({{"D \"\"", "D \"\"", "D \"playerState:3\"", "D \"dSpeed:2.000000\""},
                    speed_lines(1),
                    {"player_start()"}}));
}

TEST_F(VideoControlTest, AVideoAtNormalSpeedHasNothingToResume)
{
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnResume, false,
              {"D \"\"", "D \"\"", "D \"playerState:3\"", "D \"dSpeed:1.000000\"",
               "I \"playerState is not PAUSED\""});
}

TEST_F(VideoControlTest, TheToggleResumesAPausedVideo)
{
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::OnResumeOrPause, true,
              join({{"D \"\"", "D \"\""}, speed_lines(1), {"player_start()"}}));
}

TEST_F(VideoControlTest, TheTogglePausesAPlayingVideo)
{
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnResumeOrPause, true,
              join({{"D \"\"", "D \"\""}, speed_lines(1), {"player_pause()"}}));
}

TEST_F(VideoControlTest, ForwardAndRewindSetTheirSpeeds)
{
    make_video_player_in(PLAYER_STATE_PLAYING);

    EXPECT_TRUE(player_.m_Forward());
    EXPECT_TRUE(player_.m_Rewind());

    EXPECT_THAT(fake_.calls(),
                LinesAre("player_set_playback_rate(2)", "player_set_playback_rate(-2)"));
}

// Asking for the status, and then what resuming leaves.
const Lines RESUMED = {"D \"\"",
                       "I \"4 \"",
                       "D \"\"",
                       "D \"\"",
                       "D \"playerState:4\"",
                       "I \"1.000000\"",
                       "player_set_playback_rate(1)",
                       "player_start()"};

TEST_F(VideoControlTest, ForwardWhilePausedResumesFirst)
{
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::m_Forward, true,
              join({RESUMED, speed_lines(2)}));
}

TEST_F(VideoControlTest, RewindWhilePausedResumesFirst)
{
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::m_Rewind, true,
              join({RESUMED, speed_lines(-2)}));
}

} // namespace
