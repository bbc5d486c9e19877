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

struct CreationFailure {
    const char *function;
    const char *text;
    size_t calls_made;
};

class CreationFailureTest : public VideoPlaybackTest,
                            public testing::WithParamInterface<CreationFailure> {};

TEST_P(CreationFailureTest, EndsTheCreationAndLeavesWhatIsThere)
{
    fake_.fail(GetParam().function);

    EXPECT_FALSE(player_.m_CreateVideoPlayer());

    EXPECT_EQ(fake_.calls().size(), GetParam().calls_made);
    EXPECT_EQ(fake_.logs().back(), std::string("E \"") + GetParam().text + "\"");
    EXPECT_EQ(player_.m_hPlayer != nullptr, GetParam().calls_made > 1);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, CreationFailureTest,
    testing::Values(CreationFailure{"player_create", "player create error", 1},
                    CreationFailure{"player_set_completed_cb", "player_set_completed_cb error", 2},
                    CreationFailure{"player_set_interrupted_cb", "player_set_interrupted_cb error",
                                    3},
                    CreationFailure{"player_set_error_cb", "player_set_error_cb error", 4}));

TEST_F(VideoPlaybackTest, APlayerWithoutSubtitleCallbackIsGoodEnough)
{
    fake_.fail("player_set_subtitle_updated_cb_ex");

    EXPECT_TRUE(player_.m_CreateVideoPlayer());

    EXPECT_THAT(fake_.logs(), LinesAre("I \"\"", "E \"player_set_subtitle_updated_cb failed\""));
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

TEST_F(PlayVideoTest, AFailedLoopingIsLoggedAndPlaybackGoesOn)
{
    fake_.fail("player_set_looping");
    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", ""));
    Lines logs = fake_.logs();
    ASSERT_GE(logs.size(), 2U);
    EXPECT_EQ(logs[logs.size() - 2], "E \"player_set_looping false failed\"");
    EXPECT_EQ(logs.back(), "I \"player_set_looping false finish\"");
    EXPECT_EQ(player_.m_iVideoPlayerState, 1);

    fill_play_list({"a.mp4"});
    fake_.fail("player_set_looping");
    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", ""));
    logs = fake_.logs();
    EXPECT_EQ(logs[logs.size() - 2], "E \"player_set_looping true failed\"");
    EXPECT_EQ(logs.back(), "I \"player_set_looping true finish\"");
}

TEST_F(PlayVideoTest, ARefusedSubtitleDoesNotStopTheVideo)
{
    fake_.fail("player_set_subtitle_path");

    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", "/demo/a.srt"));

    EXPECT_THAT(fake_.logs(), testing::Contains("E \"player_set_subtitle_path failed\""));
    EXPECT_TRUE(fake_.media.preparing());
}

TEST_F(PlayVideoTest, ARefusedFileEndsTheAttempt)
{
    fake_.fail("player_set_uri");

    EXPECT_FALSE(player_.OnPlayVideo("/demo/a.mp4", ""));

    EXPECT_EQ(fake_.logs().back(), "E \"player_set_uri error\"");
    EXPECT_EQ(fake_.calls().back(), "player_set_uri(\"/demo/a.mp4\")");
    EXPECT_EQ(player_.m_iVideoPlayerState, 0);
}

TEST_F(PlayVideoTest, ARefusedDisplayDoesNotStopTheVideo)
{
    fake_.fail("player_set_display");

    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", ""));

    EXPECT_THAT(fake_.logs(), testing::Contains("E \"player_set_display error\""));
    EXPECT_TRUE(fake_.media.preparing());
}

TEST_F(PlayVideoTest, ARefusedPreparationEndsTheAttempt)
{
    fake_.fail("player_prepare_async");

    EXPECT_FALSE(player_.OnPlayVideo("/demo/a.mp4", ""));

    EXPECT_EQ(fake_.logs().back(), "E \"player_prepare_async failed\"");
    EXPECT_EQ(fake_.calls().back(), "player_prepare_async(controller)");
    EXPECT_EQ(player_.m_iVideoPlayerState, 0);
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

// ---- m_GetPlayerState, m_GetPlayBackStatus ----

TEST_F(VideoPlaybackTest, ThePlayersStateIsReturned)
{
    make_video_player_in(PLAYER_STATE_PAUSED);

    EXPECT_EQ(player_.m_GetPlayerState(), 4);
    EXPECT_THAT(fake_.lines(), LinesAre("D \"\""));
}

TEST_F(VideoPlaybackTest, WithoutAPlayerTheStateIsZero)
{
    EXPECT_EQ(player_.m_GetPlayerState(), 0);

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "W \"hPlayer is null\""));
    EXPECT_THAT(fake_.of({"player_get_state"}), IsEmpty());
}

TEST_F(VideoPlaybackTest, AnUnreadableStateIsZero)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.fail("player_get_state");

    EXPECT_EQ(player_.m_GetPlayerState(), 0);

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "E \"player_get_state error\""));
}

TEST_F(VideoPlaybackTest, ThePlayBackStatusIsTheStateAndLogged)
{
    make_video_player_in(PLAYER_STATE_PLAYING);

    EXPECT_EQ(player_.m_GetPlayBackStatus(), 3);

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "I \"3 \""));
}

TEST_F(VideoPlaybackTest, AnUnreadablePlayBackStatusIsOne)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.fail("player_get_state");

    EXPECT_EQ(player_.m_GetPlayBackStatus(), 1);

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "E \"player_get_state error\""));
}

TEST_F(VideoPlaybackTest, ThePlayBackStatusIsAskedEvenWithoutAPlayer)
{
    EXPECT_EQ(player_.m_GetPlayBackStatus(), 1);

    EXPECT_THAT(fake_.of({"player_get_state"}), LinesAre("player_get_state(null)"));
}

// ---- m_SetTrickSpeed ----

TEST_F(VideoPlaybackTest, ASpeedIsSetAndLogged)
{
    make_video_player_in(PLAYER_STATE_PLAYING);

    EXPECT_TRUE(player_.m_SetTrickSpeed(-2.0));

    EXPECT_THAT(fake_.lines(), LinesAre("I \"-2.000000\"", "player_set_playback_rate(-2)"));
}

TEST_F(VideoPlaybackTest, ARefusedSpeedIsLogged)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.fail("player_set_playback_rate");

    EXPECT_FALSE(player_.m_SetTrickSpeed(2.0));

    EXPECT_THAT(fake_.logs(), LinesAre("I \"2.000000\"", "E \"player_set_playback_rate error\""));
}

// ---- OnPause ----

TEST_F(VideoPlaybackTest, APlayingVideoIsPausedAtNormalSpeed)
{
    make_video_player_in(PLAYER_STATE_PLAYING);

    EXPECT_TRUE(player_.OnPause());

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "D \"\"", "I \"1.000000\"",
                                        "player_set_playback_rate(1)", "player_pause()"));
}

TEST_F(VideoPlaybackTest, PausingWhilePausedIsRefused)
{
    make_video_player_in(PLAYER_STATE_PAUSED);

    EXPECT_FALSE(player_.OnPause());

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "D \"\"", "I \"playerState is not PLAYING\""));
}

TEST_F(VideoPlaybackTest, AFailedPauseIsLogged)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.fail("player_pause");

    EXPECT_FALSE(player_.OnPause());

    EXPECT_EQ(fake_.logs().back(), "E \"player_pause error\"");
}

// ---- OnResume ----

TEST_F(VideoPlaybackTest, APausedVideoResumesAtNormalSpeed)
{
    make_video_player_in(PLAYER_STATE_PAUSED);

    EXPECT_TRUE(player_.OnResume());

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "D \"\"", "D \"playerState:4\"", "I \"1.000000\"",
                                        "player_set_playback_rate(1)", "player_start()"));
    EXPECT_THAT(fake_.of({"player_get_playback_rate"}), IsEmpty());
}

TEST_F(VideoPlaybackTest, AFastVideoReturnsToNormalSpeedAndStartsAgain)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.media.rate = 2.0F;

    EXPECT_TRUE(player_.OnResume());

    EXPECT_THAT(fake_.lines(),
                LinesAre("D \"\"", "D \"\"", "D \"playerState:3\"", "D \"dSpeed:2.000000\"",
                         "I \"1.000000\"", "player_set_playback_rate(1)", "player_start()"));
}

TEST_F(VideoPlaybackTest, AVideoAtNormalSpeedHasNothingToResume)
{
    make_video_player_in(PLAYER_STATE_PLAYING);

    EXPECT_FALSE(player_.OnResume());

    EXPECT_THAT(fake_.lines(),
                LinesAre("D \"\"", "D \"\"", "D \"playerState:3\"", "D \"dSpeed:1.000000\"",
                         "I \"playerState is not PAUSED\""));
}

TEST_F(VideoPlaybackTest, AStoppedVideoHasNothingToResumeWhateverItsSpeed)
{
    make_video_player_in(PLAYER_STATE_READY);
    fake_.media.rate = 2.0F;

    EXPECT_FALSE(player_.OnResume());

    EXPECT_THAT(fake_.calls(), IsEmpty());
    EXPECT_EQ(fake_.logs().back(), "I \"playerState is not PAUSED\"");
}

TEST_F(VideoPlaybackTest, AnUnreadableSpeedRefusesToResume)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.fail("player_get_playback_rate");

    EXPECT_FALSE(player_.OnResume());

    EXPECT_THAT(fake_.calls(), IsEmpty());
    EXPECT_EQ(fake_.logs().back(), "E \"player_get_playback_rate error\"");
}

TEST_F(VideoPlaybackTest, AFailedStartRefusesToResume)
{
    make_video_player_in(PLAYER_STATE_PAUSED);
    fake_.fail("player_start");
    EXPECT_FALSE(player_.OnResume());
    EXPECT_EQ(fake_.logs().back(), "E \"player_start error\"");

    fake_.media.state = PLAYER_STATE_PLAYING;
    fake_.media.rate = -2.0F;
    fake_.fail("player_start");
    EXPECT_FALSE(player_.OnResume());
    EXPECT_EQ(fake_.logs().back(), "E \"player_start error\"");
}

// ---- OnResumeOrPause ----

TEST_F(VideoPlaybackTest, TheToggleResumesAPausedVideo)
{
    make_video_player_in(PLAYER_STATE_PAUSED);

    EXPECT_TRUE(player_.OnResumeOrPause());

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "D \"\"", "I \"1.000000\"",
                                        "player_set_playback_rate(1)", "player_start()"));
}

TEST_F(VideoPlaybackTest, TheTogglePausesAPlayingVideo)
{
    make_video_player_in(PLAYER_STATE_PLAYING);

    EXPECT_TRUE(player_.OnResumeOrPause());

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\"", "D \"\"", "I \"1.000000\"",
                                        "player_set_playback_rate(1)", "player_pause()"));
}

TEST_F(VideoPlaybackTest, TheToggleLeavesAnyOtherStateAlone)
{
    make_video_player_in(PLAYER_STATE_READY);

    EXPECT_TRUE(player_.OnResumeOrPause());

    EXPECT_THAT(fake_.calls(), IsEmpty());
}

TEST_F(VideoPlaybackTest, TheToggleTellsFailures)
{
    make_video_player_in(PLAYER_STATE_PAUSED);
    fake_.fail("player_start");
    EXPECT_FALSE(player_.OnResumeOrPause());
    EXPECT_EQ(fake_.logs().back(), "E \"player_start error\"");

    fake_.media.state = PLAYER_STATE_PLAYING;
    fake_.fail("player_pause");
    EXPECT_FALSE(player_.OnResumeOrPause());
    EXPECT_EQ(fake_.logs().back(), "E \"player_pause error\"");
}

// ---- m_Forward, m_Rewind ----

TEST_F(VideoPlaybackTest, ForwardAndRewindSetTheirSpeeds)
{
    make_video_player_in(PLAYER_STATE_PLAYING);

    EXPECT_TRUE(player_.m_Forward());
    EXPECT_TRUE(player_.m_Rewind());

    EXPECT_THAT(fake_.calls(),
                LinesAre("player_set_playback_rate(2)", "player_set_playback_rate(-2)"));
}

TEST_F(VideoPlaybackTest, ForwardWhilePausedResumesFirst)
{
    make_video_player_in(PLAYER_STATE_PAUSED);

    EXPECT_TRUE(player_.m_Forward());

    EXPECT_THAT(fake_.calls(), LinesAre("player_set_playback_rate(1)", "player_start()",
                                        "player_set_playback_rate(2)"));
}

TEST_F(VideoPlaybackTest, RewindWhilePausedResumesFirst)
{
    make_video_player_in(PLAYER_STATE_PAUSED);

    EXPECT_TRUE(player_.m_Rewind());

    EXPECT_THAT(fake_.calls(), LinesAre("player_set_playback_rate(1)", "player_start()",
                                        "player_set_playback_rate(-2)"));
}

TEST_F(VideoPlaybackTest, ForwardAndRewindAlwaysSucceed)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.script.fail_always("player_set_playback_rate");

    EXPECT_TRUE(player_.m_Forward());
    EXPECT_TRUE(player_.m_Rewind());
}

} // namespace
