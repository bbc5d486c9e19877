#include "event_dispatcher_fixture.h"
#include "player_lines.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/** The key event of the dispatcher, one key type after the other. */
class RemoteKeyActionsTest : public EventDispatcherTest {
  protected:
    RemoteKeyActionsTest() { fake_.media.state = PLAYER_STATE_PLAYING; }

    void key(int type) { dispatch(ENDEMO_EVENT_KEY, type); }

    void show_photo()
    {
        player_.StopVideo();
        EventDispatcherTest::show_photo();
    }

    void show_nothing() { player_.m_vdcPlayList.clear(); }

    int stored(const char *config_key) { return fake_.store.get(config_key); }
};

TEST_F(RemoteKeyActionsTest, TypesWithoutActionDoNothing)
{
    fake_.rotator.supported = true;
    player_.m_bFolderContentsPlayer = true;
    for (const int type : {-1, 11, 17, 18, 100}) {
        key(type);
        EXPECT_THAT(rest(), IsEmpty()) << type;
    }
}

// ---- 0: back ----

TEST_F(RemoteKeyActionsTest, BackClosesAnOpenPopup)
{
    open_popup();

    key(KEY_TYPE_BACK);

    EXPECT_EQ(rest(), popup_closing_lines("popup#1"));
    EXPECT_EQ(fake_.app.exit_requests, 0);
}

TEST_F(RemoteKeyActionsTest, BackLeavesThePlayer)
{
    key(KEY_TYPE_BACK);

    EXPECT_EQ(rest(), join({{"I \"\"", "I \"exit ostrel demo player\"", "I \"\""},
                            video_stopping_lines(PLAYER_STATE_PLAYING),
                            {"I \"\"", "I \"Destroy end\""},
                            closed_down(),
                            {writes(ConfigKey::PLAYBACK_STATUS, 0)},
                            exit_lines()}));
}

TEST_F(RemoteKeyActionsTest, BackOnAPhotoReleasesIt)
{
    show_photo();
    player_.StartSlideShow();

    key(KEY_TYPE_BACK);

    EXPECT_THAT(fake_.of({"ecore_timer_del", "pictrel_"}),
                LinesAre("ecore_timer_del(timer#1)", "pictrel_destroy(picture#1)",
                         "pictrel_destroy_display(1)"));
    EXPECT_EQ(fake_.app.exit_requests, 1);
}

TEST_F(RemoteKeyActionsTest, BackWhileThePopupIsTornDownDoesNotLeaveYet)
{
    open_popup();
    key(KEY_TYPE_BACK);
    key(KEY_TYPE_BACK);
    EXPECT_EQ(fake_.app.exit_requests, 0);

    fake_.loop.advance(0.5);
    key(KEY_TYPE_BACK);
    EXPECT_EQ(fake_.app.exit_requests, 1);
}

// ---- 1: enter ----

TEST_F(RemoteKeyActionsTest, EnterOpensThePopup)
{
    key(KEY_TYPE_ENTER);

    ASSERT_NE(player_.m_pPopup, nullptr);
    EXPECT_TRUE(fake_.widgets.visible(player_.m_pPopup));
    EXPECT_EQ(fake_.media.state, PLAYER_STATE_PLAYING) << "a video plays on";
}

TEST_F(RemoteKeyActionsTest, ASecondEnterClosesThePopup)
{
    key(KEY_TYPE_ENTER);

    key(KEY_TYPE_ENTER);

    EXPECT_EQ(rest(), popup_closing_lines("popup#1"));
}

TEST_F(RemoteKeyActionsTest, EnterWhileThePopupIsTornDownOpensNone)
{
    show_photo();
    player_.StartSlideShow();
    open_popup();
    player_.DestroyPopup();

    key(KEY_TYPE_ENTER);

    EXPECT_EQ(rest(), popup_closing_lines("popup#1", "timer#2"));
    EXPECT_TRUE(player_.m_bSlideShowStarted) << "the slide show goes on";
}

TEST_F(RemoteKeyActionsTest, EnterWhileThePanelTurnsOpensNothing)
{
    player_.m_bRotating = true;

    key(KEY_TYPE_ENTER);

    EXPECT_EQ(player_.m_pPopup, nullptr);
    EXPECT_EQ(rest(), Lines({"I \"\""}));
}

TEST_F(RemoteKeyActionsTest, EnterOnAPhotoStopsTheSlideShow)
{
    show_photo();
    player_.StartSlideShow();

    key(KEY_TYPE_ENTER);

    EXPECT_FALSE(player_.m_bSlideShowStarted);
    EXPECT_EQ(fake_.calls().front(), "ecore_timer_del(timer#1)");
    EXPECT_NE(player_.m_pPopup, nullptr);
}

TEST_F(RemoteKeyActionsTest, EnterOnAPhotoStopsTheSlideShowEvenWhileThePanelTurns)
{
    show_photo();
    player_.StartSlideShow();
    player_.m_bRotating = true;

    key(KEY_TYPE_ENTER);

    EXPECT_FALSE(player_.m_bSlideShowStarted);
    EXPECT_EQ(player_.m_pPopup, nullptr);
}

// ---- 2, 3, 5: play, pause, toggle ----

TEST_F(RemoteKeyActionsTest, PlayResumesAVideo)
{
    fake_.media.state = PLAYER_STATE_PAUSED;

    key(KEY_TYPE_PLAY);

    EXPECT_THAT(fake_.calls(), LinesAre("player_set_playback_rate(1)", "player_start()"));
}

TEST_F(RemoteKeyActionsTest, PlayOnAPhotoPlaysTheWholeListOn)
{
    show_photo();
    fake_.store.values[ConfigKey::DEMO_MODE] = 2;
    player_.m_iPlayIndex = 2;

    key(KEY_TYPE_PLAY);

    EXPECT_EQ(rest(),
              Lines({writes(ConfigKey::DEMO_MODE, 0), "I \"\"", "ecore_timer_add(5, controller)"}));
    EXPECT_EQ(player_.m_iPlayIndex, 0);
}

TEST_F(RemoteKeyActionsTest, PausePausesAVideo)
{
    key(KEY_TYPE_PAUSE);

    EXPECT_THAT(fake_.calls(), LinesAre("player_set_playback_rate(1)", "player_pause()"));
}

TEST_F(RemoteKeyActionsTest, PauseOnAPhotoStopsTheSlideShow)
{
    show_photo();
    player_.StartSlideShow();

    key(KEY_TYPE_PAUSE);

    EXPECT_EQ(rest(), Lines({"I \"\"", "ecore_timer_del(timer#1)"}));
}

TEST_F(RemoteKeyActionsTest, TheToggleWorksOnVideosOnly)
{
    key(KEY_TYPE_PLAY_PAUSE);
    EXPECT_EQ(fake_.media.state, PLAYER_STATE_PAUSED);
    key(KEY_TYPE_PLAY_PAUSE);
    EXPECT_EQ(fake_.media.state, PLAYER_STATE_PLAYING);

    show_photo();
    key(KEY_TYPE_PLAY_PAUSE);
    EXPECT_THAT(rest(), IsEmpty());
}

// ---- 4: stop ----

TEST_F(RemoteKeyActionsTest, StopEndsTheProgramWithoutWritingAStatus)
{
    key(KEY_TYPE_STOP);

    EXPECT_EQ(rest(),
              join({video_stopping_lines(PLAYER_STATE_PLAYING), closed_down(), exit_lines()}));
    EXPECT_EQ(stored(ConfigKey::PLAYBACK_STATUS), -1);
}

TEST_F(RemoteKeyActionsTest, StopOnAPhotoDoesNothing)
{
    show_photo();

    key(KEY_TYPE_STOP);

    EXPECT_THAT(rest(), IsEmpty());
}

TEST_F(RemoteKeyActionsTest, WithNothingOnTheScreenMediaKeysDoNothing)
{
    show_nothing();

    for (const int type : {KEY_TYPE_PLAY, KEY_TYPE_PAUSE, KEY_TYPE_STOP, KEY_TYPE_PLAY_PAUSE,
                           KEY_TYPE_PREVIOUS, KEY_TYPE_NEXT}) {
        key(type);
        EXPECT_THAT(fake_.calls(), IsEmpty()) << type;
    }
}

// ---- 6: sound output ----

TEST_F(RemoteKeyActionsTest, TheSoundOutputIsToggled)
{
    key(KEY_TYPE_SOUND_OUTPUT);
    EXPECT_EQ(fake_.system.sound_route, 8);
    key(KEY_TYPE_SOUND_OUTPUT);
    EXPECT_EQ(fake_.system.sound_route, 0);
}

// ---- 7, 8: rewind, forward ----

TEST_F(RemoteKeyActionsTest, RewindAndForwardNeedFolderContentsMode)
{
    key(KEY_TYPE_REWIND);
    EXPECT_THAT(rest(), IsEmpty());
    key(KEY_TYPE_FORWARD);
    EXPECT_THAT(rest(), IsEmpty());

    player_.m_bFolderContentsPlayer = true;
    key(KEY_TYPE_REWIND);
    EXPECT_THAT(fake_.calls(), LinesAre("player_set_playback_rate(-2)"));
    key(KEY_TYPE_FORWARD);
    EXPECT_THAT(fake_.calls(), LinesAre("player_set_playback_rate(2)"));
}

// ---- 9, 10: previous, next ----

TEST_F(RemoteKeyActionsTest, PreviousAndNextStepThroughTheList)
{
    key(KEY_TYPE_NEXT);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/b.mp4");
    key(KEY_TYPE_PREVIOUS);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/a.mp4");
    key(KEY_TYPE_PREVIOUS);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/c.mp4");
}

TEST_F(RemoteKeyActionsTest, AOneEntryListHasNoPreviousAndNext)
{
    fill_play_list({"a.mp4"});

    key(KEY_TYPE_PREVIOUS);
    EXPECT_THAT(rest(), IsEmpty());
    key(KEY_TYPE_NEXT);
    EXPECT_THAT(rest(), IsEmpty());
}

TEST_F(RemoteKeyActionsTest, SteppingOnAPhotoStopsTheSlideShowFirst)
{
    for (const int type : {KEY_TYPE_PREVIOUS, KEY_TYPE_NEXT}) {
        show_photo();
        player_.StartSlideShow();

        key(type);

        EXPECT_EQ(fake_.calls().front().rfind("ecore_timer_del(", 0), 0U);
        EXPECT_FALSE(player_.m_bSlideShowStarted);
        EXPECT_EQ(player_.m_pSlideShowTimer, nullptr);
        EXPECT_EQ(fake_.transcript.count("pictrel_create_from_url"), 1);
    }
}

// ---- 12: timed rotation ----

TEST_F(RemoteKeyActionsTest, TimedRotationIsSwitchedOnAndOff)
{
    fake_.rotator.supported = true;
    fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = 1;

    key(KEY_TYPE_ROTATION_AUTO);
    EXPECT_EQ(stored(ConfigKey::ROTATION_AUTO_MODE), 1);
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(330.0));
    EXPECT_EQ(fake_.of({"vconf_set_int", "ecore_timer_add", "elm_velt_popup_add"}),
              Lines({writes(ConfigKey::ROTATION_AUTO_MODE, 1), "elm_velt_popup_add(window#1)",
                     "ecore_timer_add(330, controller)"}));

    key(KEY_TYPE_ROTATION_AUTO);
    EXPECT_EQ(stored(ConfigKey::ROTATION_AUTO_MODE), 0);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(RemoteKeyActionsTest, SwitchedOnInPortraitThePortraitIntervalIsArmed)
{
    fake_.rotator.supported = true;
    fake_.store.values[ConfigKey::PORTRAIT_TIMER] = 9;
    set_panel(ROTATION_TYPE_PORTRAIT);

    key(KEY_TYPE_ROTATION_AUTO);

    EXPECT_THAT(fake_.loop.timers(), ElementsAre(900.0));
}

// ---- 13: rotate ----

TEST_F(RemoteKeyActionsTest, ThePanelKeyTurnsThePanel)
{
    fake_.rotator.supported = true;
    player_.m_vdcPortraitVideos.emplace_back();

    key(KEY_TYPE_ROTATE);

    EXPECT_THAT(fake_.calls(),
                LinesAre(writes(ConfigKey::FILE_MODE, 2), "VirtualKey_Send_KeyCode(569, 2)"));
}

// ---- 14, 15, 16: intervals ----

class IntervalKeyTest : public RemoteKeyActionsTest {
  protected:
    IntervalKeyTest()
    {
        fake_.rotator.supported = true;
        fake_.system.texts = rotation_texts();
    }

    std::string toast() { return fake_.widgets.text(player_.m_pNotificationLabel); }
};

TEST_F(IntervalKeyTest, ThePortraitIntervalIsStepped)
{
    key(KEY_TYPE_PORTRAIT_TIMER);

    EXPECT_EQ(stored(ConfigKey::PORTRAIT_TIMER), 1);
    EXPECT_EQ(stored(ConfigKey::LANDSCAPE_TIMER), 0);
    EXPECT_EQ(toast(), "P 5:30");
    EXPECT_EQ(fake_.calls().front(), writes(ConfigKey::PORTRAIT_TIMER, 1));
}

TEST_F(IntervalKeyTest, TheLandscapeIntervalIsStepped)
{
    key(KEY_TYPE_LANDSCAPE_TIMER);

    EXPECT_EQ(stored(ConfigKey::LANDSCAPE_TIMER), 1);
    EXPECT_EQ(stored(ConfigKey::PORTRAIT_TIMER), 0);
    EXPECT_EQ(toast(), "L 5:30");
}

TEST_F(IntervalKeyTest, TenStepsReturnToTheStart)
{
    fake_.store.values[ConfigKey::PORTRAIT_TIMER] = 4;
    fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = 7;

    for (int i = 0; i < 10; ++i) {
        key(KEY_TYPE_PORTRAIT_TIMER);
        EXPECT_EQ(stored(ConfigKey::PORTRAIT_TIMER), (5 + i) % 10);
        key(KEY_TYPE_LANDSCAPE_TIMER);
        EXPECT_EQ(stored(ConfigKey::LANDSCAPE_TIMER), (8 + i) % 10);
    }
    EXPECT_EQ(stored(ConfigKey::PORTRAIT_TIMER), 4);
    EXPECT_EQ(stored(ConfigKey::LANDSCAPE_TIMER), 7);
}

TEST_F(IntervalKeyTest, AnUnreadableIntervalIsNotStepped)
{
    fake_.store.values.erase(ConfigKey::PORTRAIT_TIMER);
    fake_.store.values.erase(ConfigKey::LANDSCAPE_TIMER);

    key(KEY_TYPE_PORTRAIT_TIMER);
    EXPECT_THAT(fake_.calls(), IsEmpty());
    key(KEY_TYPE_LANDSCAPE_TIMER);
    EXPECT_THAT(fake_.calls(), IsEmpty());
    EXPECT_EQ(player_.m_pNotificationLabel, nullptr);
}

// Other programs may write the keys as well.
TEST_F(IntervalKeyTest, AStepLeadsBackIntoTheTable)
{
    for (const int before : {-1, -42, 10, 99, INT32_MAX, INT32_MIN}) {
        fake_.store.values[ConfigKey::PORTRAIT_TIMER] = before;
        fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = before;

        key(KEY_TYPE_PORTRAIT_TIMER);
        key(KEY_TYPE_LANDSCAPE_TIMER);

        for (const char *config_key : {ConfigKey::PORTRAIT_TIMER, ConfigKey::LANDSCAPE_TIMER}) {
            EXPECT_GE(stored(config_key), 0) << before;
            EXPECT_LE(stored(config_key), 9) << before;
        }
    }
}

TEST_F(IntervalKeyTest, TheTimerFollowsTheIntervalOfThePresentOrientationOnly)
{
    player_.m_bRotationAutoMode = true;
    player_.m_UpdateZavoTimer();

    key(KEY_TYPE_PORTRAIT_TIMER);
    EXPECT_THAT(fake_.of({"ecore_timer"}), IsEmpty());

    key(KEY_TYPE_LANDSCAPE_TIMER);
    EXPECT_THAT(fake_.of({"ecore_timer"}),
                LinesAre("ecore_timer_del(timer#1)", "ecore_timer_add(330, controller)"));

    set_panel(ROTATION_TYPE_PORTRAIT);
    key(KEY_TYPE_LANDSCAPE_TIMER);
    EXPECT_THAT(fake_.of({"ecore_timer"}), IsEmpty());
    key(KEY_TYPE_PORTRAIT_TIMER);
    EXPECT_THAT(fake_.of({"ecore_timer"}),
                LinesAre("ecore_timer_del(timer#2)", "ecore_timer_add(360, controller)"));
}

TEST_F(IntervalKeyTest, TheTimerIsUpdatedBeforeTheToast)
{
    player_.m_bRotationAutoMode = true;

    key(KEY_TYPE_LANDSCAPE_TIMER);

    EXPECT_THAT(fake_.of({"vconf_set_int", "ecore_timer_add", "elm_velt_popup_toast"}),
                LinesAre(writes(ConfigKey::LANDSCAPE_TIMER, 1), "ecore_timer_add(330, controller)",
                         "elm_velt_popup_toast_text_set(popup#1, \"L 5:30\")"));
}

TEST_F(IntervalKeyTest, AResetReturnsBothToTheStart)
{
    player_.m_bRotationAutoMode = true;
    fake_.store.values[ConfigKey::PORTRAIT_TIMER] = 4;
    fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = 7;

    key(KEY_TYPE_TIMER_RESET);

    EXPECT_EQ(toast(), "Reset 5");
    EXPECT_THAT(fake_.logs(), testing::Contains("I \"enZavoMode = 2 iTimerIndex = 0\""));
    EXPECT_THAT(fake_.of({"vconf_set_int", "ecore_timer_add", "elm_velt_popup_toast"}),
                LinesAre(writes(ConfigKey::LANDSCAPE_TIMER, 0),
                         writes(ConfigKey::PORTRAIT_TIMER, 0), "ecore_timer_add(300, controller)",
                         "elm_velt_popup_toast_text_set(popup#1, \"Reset 5\")"));
}

TEST_F(RemoteKeyActionsTest, WithoutARotatorTheRotationKeysDoNothing)
{
    player_.m_vdcPortraitVideos.emplace_back();

    for (const int type : {KEY_TYPE_ROTATION_AUTO, KEY_TYPE_ROTATE, KEY_TYPE_PORTRAIT_TIMER,
                           KEY_TYPE_LANDSCAPE_TIMER, KEY_TYPE_TIMER_RESET}) {
        key(type);
        EXPECT_THAT(fake_.calls(), IsEmpty()) << type;
    }
}

} // namespace
