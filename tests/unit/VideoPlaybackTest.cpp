#include "player_fixture.h"

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

struct Registration {
    const char *function;
    const char *error;
};

class RegistrationTest : public VideoPlaybackTest,
                         public testing::WithParamInterface<Registration> {};

TEST_P(RegistrationTest, WithoutItThereIsNoPlaybackAndWhatWasMadeStays)
{
    fake_.fail(GetParam().function);

    EXPECT_FALSE(player_.m_CreateVideoPlayer());

    EXPECT_EQ(fake_.calls().back(), std::string(GetParam().function) + "(controller)");
    EXPECT_THAT(fake_.logs(), LinesAre("I \"\"", std::string("E \"") + GetParam().error + "\""));
    EXPECT_NE(player_.m_hPlayer, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Callbacks, RegistrationTest,
    testing::Values(Registration{"player_set_completed_cb", "player_set_completed_cb error"},
                    Registration{"player_set_interrupted_cb", "player_set_interrupted_cb error"},
                    Registration{"player_set_error_cb", "player_set_error_cb error"}));

TEST_F(VideoPlaybackTest, WithoutAMediaPlayerNothingIsRegistered)
{
    fake_.fail("player_create");

    EXPECT_FALSE(player_.m_CreateVideoPlayer());

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "player_create()", "E \"player create error\""));
    EXPECT_EQ(player_.m_hPlayer, nullptr);
}

TEST_F(VideoPlaybackTest, PlaybackGoesWithoutNewsOfSubtitles)
{
    fake_.fail("player_set_subtitle_updated_cb_ex");

    EXPECT_TRUE(player_.m_CreateVideoPlayer());

    EXPECT_EQ(fake_.lines().back(), "E \"player_set_subtitle_updated_cb failed\"");
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

TEST_F(PlayVideoTest, ASubtitleThatIsRefusedDoesNotStopTheVideo)
{
    fake_.fail("player_set_subtitle_path");

    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", "/demo/a.srt"));

    EXPECT_THAT(fake_.logs(), testing::Contains("E \"player_set_subtitle_path failed\""));
    EXPECT_TRUE(fake_.media.preparing());
}

TEST_F(PlayVideoTest, AWindowThatIsRefusedDoesNotStopTheVideo)
{
    fake_.fail("player_set_display");

    EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", ""));

    EXPECT_THAT(fake_.logs(), testing::Contains("E \"player_set_display error\""));
    EXPECT_TRUE(fake_.media.preparing());
}

TEST_F(PlayVideoTest, AVideoThatIsRefusedIsNotPrepared)
{
    player_.m_iVideoPlayerState = VIDEO_STATE_PREPARED;
    fake_.fail("player_set_uri");

    EXPECT_FALSE(player_.OnPlayVideo("/demo/a.mp4", ""));

    EXPECT_EQ(fake_.lines().back(), "E \"player_set_uri error\"");
    EXPECT_EQ(player_.m_iVideoPlayerState, VIDEO_STATE_STOPPED);
}

TEST_F(PlayVideoTest, AVideoThatCannotBePreparedIsNotWaitedFor)
{
    fake_.fail("player_prepare_async");

    EXPECT_FALSE(player_.OnPlayVideo("/demo/a.mp4", ""));

    EXPECT_EQ(fake_.lines().back(), "E \"player_prepare_async failed\"");
    EXPECT_EQ(player_.m_iVideoPlayerState, VIDEO_STATE_STOPPED);
}

TEST_F(PlayVideoTest, LoopingThatIsRefusedIsLoggedByItsValue)
{
    for (const std::string looping : {"false", "true"}) {
        fake_.fail("player_set_looping");

        EXPECT_TRUE(player_.OnPlayVideo("/demo/a.mp4", ""));

        const Lines logs = fake_.logs();
        EXPECT_EQ(Lines(logs.end() - 2, logs.end()),
                  Lines({"E \"player_set_looping " + looping + " failed\"",
                         "I \"player_set_looping " + looping + " finish\""}));
        EXPECT_EQ(player_.m_iVideoPlayerState, VIDEO_STATE_PREPARING);
        fill_play_list({"a.mp4"});
    }
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

// ---- m_GetPlayerState, m_GetPlayBackStatus, m_SetTrickSpeed ----

TEST_F(VideoPlaybackTest, ThePlayersStateIsAskedAndToldByTwoOperations)
{
    make_video_player_in(PLAYER_STATE_PAUSED);

    EXPECT_EQ(player_.m_GetPlayerState(), PLAYER_STATE_PAUSED);
    EXPECT_EQ(player_.m_GetPlayBackStatus(), PLAYER_STATE_PAUSED);

    EXPECT_THAT(fake_.logs(), LinesAre("D \"\"", "D \"\"", "I \"4 \""));
}

TEST_F(VideoPlaybackTest, AStateThatCannotBeAskedIsNoneForOneAndIdleForTheOther)
{
    make_video_player_in(PLAYER_STATE_PLAYING);
    fake_.script.fail_always("player_get_state");

    EXPECT_EQ(player_.m_GetPlayerState(), PLAYER_STATE_NONE);
    EXPECT_EQ(player_.m_GetPlayBackStatus(), PLAYER_STATE_IDLE);

    EXPECT_THAT(fake_.logs(), LinesAre("D \"\"", "E \"player_get_state error\"", "D \"\"",
                                       "E \"player_get_state error\""));
}

TEST_F(VideoPlaybackTest, OnlyOneOfThemAsksAPlayerThatIsNotThere)
{
    EXPECT_EQ(player_.m_GetPlayerState(), PLAYER_STATE_NONE);
    EXPECT_THAT(fake_.logs(), LinesAre("D \"\"", "W \"hPlayer is null\""));
    EXPECT_THAT(fake_.of({"player_get_state"}), IsEmpty());

    EXPECT_EQ(player_.m_GetPlayBackStatus(), PLAYER_STATE_IDLE);
    EXPECT_THAT(fake_.of({"player_get_state"}), LinesAre("player_get_state(null)"));
}

TEST_F(VideoPlaybackTest, ASpeedIsSetOrRefused)
{
    make_video_player_in(PLAYER_STATE_PLAYING);

    EXPECT_TRUE(player_.m_SetTrickSpeed(-2.0));
    fake_.fail("player_set_playback_rate");
    EXPECT_FALSE(player_.m_SetTrickSpeed(2.0));

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"-2.000000\"", "player_set_playback_rate(-2)", "I \"2.000000\"",
                         "player_set_playback_rate(2)", "E \"player_set_playback_rate error\""));
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
              join({{"D \"\""}, speed_lines(1), {"player_pause()"}}));
}

TEST_F(VideoControlTest, PausingWhilePausedIsRefused)
{
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::OnPause, false,
              {"D \"\"", "I \"playerState is not PLAYING\""});
}

TEST_F(VideoControlTest, APausedVideoResumesAtNormalSpeed)
{
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::OnResume, true,
              join({{"D \"\"", "D \"playerState:4\""}, speed_lines(1), {"player_start()"}}));
    EXPECT_THAT(fake_.of({"player_get_playback_rate"}), IsEmpty());
}

TEST_F(VideoControlTest, AFastVideoReturnsToNormalSpeedAndStartsAgain)
{
    rate_ = 2.0F;
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnResume, true,
              join({{"D \"\"", "D \"playerState:3\"", "D \"dSpeed:2.000000\""},
                    speed_lines(1),
                    {"player_start()"}}));
}

TEST_F(VideoControlTest, AVideoAtNormalSpeedHasNothingToResume)
{
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnResume, false,
              {"D \"\"", "D \"playerState:3\"", "D \"dSpeed:1.000000\"",
               "I \"playerState is not PAUSED\""});
}

TEST_F(VideoControlTest, TheToggleResumesAPausedVideo)
{
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::OnResumeOrPause, true,
              join({{"D \"\""}, speed_lines(1), {"player_start()"}}));
}

TEST_F(VideoControlTest, TheTogglePausesAPlayingVideo)
{
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnResumeOrPause, true,
              join({{"D \"\""}, speed_lines(1), {"player_pause()"}}));
}

TEST_F(VideoControlTest, ForwardAndRewindSetTheirSpeeds)
{
    make_video_player_in(PLAYER_STATE_PLAYING);

    EXPECT_TRUE(player_.m_Forward());
    EXPECT_TRUE(player_.m_Rewind());

    EXPECT_THAT(fake_.calls(),
                LinesAre("player_set_playback_rate(2)", "player_set_playback_rate(-2)"));
}

const Lines RESUMED = {"D \"\"", "D \"playerState:4\"", "I \"1.000000\"",
                       "player_set_playback_rate(1)", "player_start()"};

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

TEST_F(VideoControlTest, AFailedPauseIsToldAndLogged)
{
    fake_.fail("player_pause");
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnPause, false,
              join({{"D \"\""}, speed_lines(1), {"player_pause()", "E \"player_pause error\""}}));
}

TEST_F(VideoControlTest, AFailedStartIsToldAndLogged)
{
    fake_.fail("player_start");
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::OnResume, false,
              join({{"D \"\"", "D \"playerState:4\""},
                    speed_lines(1),
                    {"player_start()", "E \"player_start error\""}}));
}

TEST_F(VideoControlTest, TheToggleTellsOfFailuresToo)
{
    fake_.fail("player_start");
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::OnResumeOrPause, false,
              join({{"D \"\""}, speed_lines(1), {"player_start()", "E \"player_start error\""}}));

    fake_.fail("player_pause");
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnResumeOrPause, false,
              join({{"D \"\""}, speed_lines(1), {"player_pause()", "E \"player_pause error\""}}));
}

TEST_F(VideoControlTest, ASpeedThatIsRefusedHoldsNothingUp)
{
    fake_.script.fail_always("player_set_playback_rate");
    const Lines refused = {"I \"1.000000\"", "player_set_playback_rate(1)",
                           "E \"player_set_playback_rate error\""};
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnPause, true,
              join({{"D \"\""}, refused, {"player_pause()"}}));
    expect_in(PLAYER_STATE_PAUSED, &CPlayerInspector::OnResume, true,
              join({{"D \"\"", "D \"playerState:4\""}, refused, {"player_start()"}}));
}

TEST_F(VideoControlTest, AVideoThatIsNotPreparedIsNotToggled)
{
    for (const auto state : {PLAYER_STATE_IDLE, PLAYER_STATE_READY})
        expect_in(state, &CPlayerInspector::OnResumeOrPause, true, {"D \"\""});
}

TEST_F(VideoControlTest, AnUnknownSpeedIsNotResumed)
{
    fake_.fail("player_get_playback_rate");
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnResume, false,
              {"D \"\"", "D \"playerState:3\"", "E \"player_get_playback_rate error\""});
}

TEST_F(VideoControlTest, ABackwardVideoReturnsToNormalSpeedToo)
{
    rate_ = -2.0F;
    expect_in(PLAYER_STATE_PLAYING, &CPlayerInspector::OnResume, true,
              join({{"D \"\"", "D \"playerState:3\"", "D \"dSpeed:-2.000000\""},
                    speed_lines(1),
                    {"player_start()"}}));
}

TEST_F(VideoControlTest, AVideoThatDoesNotPlayIsNotResumedWhateverItsSpeed)
{
    rate_ = 2.0F;
    expect_in(PLAYER_STATE_READY, &CPlayerInspector::OnResume, false,
              {"D \"\"", "D \"playerState:2\"", "D \"dSpeed:2.000000\"",
               "I \"playerState is not PAUSED\""});
}

TEST_F(VideoControlTest, AVideoThatDoesNotResumeIsSkimmedAllTheSame)
{
    make_video_player_in(PLAYER_STATE_PAUSED);
    fake_.script.fail_always("player_start");

    EXPECT_TRUE(player_.m_Forward());
    EXPECT_TRUE(player_.m_Rewind());

    EXPECT_THAT(fake_.of({"player_set_playback_rate"}),
                LinesAre("player_set_playback_rate(1)", "player_set_playback_rate(2)",
                         "player_set_playback_rate(1)", "player_set_playback_rate(-2)"));
}

} // namespace
