// Events of the players: errors, ends and results.

#include "event_dispatcher_test.h"

#include <cstdio>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// ---- Records ----

TEST_F(EventDispatcherTest, EveryRecordIsLogged)
{
    stPipeRecord record = {4, 9, 0, 0, 0, 0};
    char pointer[64];
    std::snprintf(pointer, sizeof pointer, "I \"pEvent = %p\"", static_cast<void *>(&record));

    CPlayerInspector::m_OnHandleEcorePipeCB(controller_.get(), &record, sizeof record);

    EXPECT_THAT(fake_.lines(), LinesAre(pointer, "I \"EventID = 4,iParam1 = 9\""));
}

TEST_F(EventDispatcherTest, AMissingRecordIsDroppedAfterItsTrace)
{
    CPlayerInspector::m_OnHandleEcorePipeCB(controller_.get(), nullptr, 0);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"pEvent = (nil)\""));
}

TEST_F(EventDispatcherTest, ARecordWithoutControllerIsDroppedAfterItsTrace)
{
    stPipeRecord record = {1, 0, 0, 0, 0, 0};

    CPlayerInspector::m_OnHandleEcorePipeCB(nullptr, &record, sizeof record);

    ASSERT_EQ(fake_.lines().size(), 1U);
    EXPECT_EQ(fake_.lines()[0].rfind("I \"pEvent = ", 0), 0U);
}

class IgnoredEventTest : public EventDispatcherTest, public testing::WithParamInterface<int> {};

TEST_P(IgnoredEventTest, DoesNothing)
{
    dispatch(GetParam());

    EXPECT_EQ(fake_.lines().size(), 2U);
    EXPECT_EQ(fake_.lines()[1], "I \"EventID = " + std::to_string(GetParam()) + ",iParam1 = 0\"");
}

INSTANTIATE_TEST_SUITE_P(Ids, IgnoredEventTest,
                         testing::Values(INT32_MIN, -1, 0, 6, 9, 11, 12, 1000, INT32_MAX));

// ---- 1: player error ----

TEST_F(EventDispatcherTest, APlayerErrorEndsTheProgram)
{
    dispatch(ENDEMO_EVENT_PLAYER_ERROR);

    EXPECT_EQ(lines(),
              join({{"I \"\"", "I \"\"", "player_unprepare()", "I \"\"", "I \"Destroy end\""},
                    closed_down(),
                    {writes(ConfigKey::PLAYBACK_STATUS, 3)},
                    exit_lines()}));
}

TEST_F(EventDispatcherTest, APlayerErrorReleasesPopupAndPhoto)
{
    open_popup();
    make_picture();

    dispatch(ENDEMO_EVENT_PLAYER_ERROR);

    EXPECT_THAT(fake_.of({"evas_object_hide", "player_unprepare", "pictrel_destroy"}),
                LinesAre("evas_object_hide(popup#1)", "player_unprepare()",
                         "pictrel_destroy(picture#1)", "pictrel_destroy_display(1)",
                         "evas_object_hide(window#1)"));
}

// ---- 2: player completed ----

TEST_F(EventDispatcherTest, ACompletedVideoIsFollowedByTheNext)
{
    fake_.media.state = PLAYER_STATE_READY;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
    EXPECT_EQ(lines(),
              Lines({"I \"m_uiCurPlayIndex: 0, iPlayIndex: 0, m_vdcPlayList.size: 3\"",
                     "D \"Repeat Mode is on\"", "I \"/opt/data/demo_movie/b.mp4 \"", "I \"\"",
                     "player_stop()", "player_unprepare()",
                     "player_set_uri(\"/opt/data/demo_movie/b.mp4\")",
                     "player_set_display(0, window#1)", "player_prepare_async(controller)",
                     "player_set_looping(false)", "I \"player_set_looping false finish\""}));
    EXPECT_EQ(player_.m_strPlayPath, "/opt/data/demo_movie/b.mp4");
    EXPECT_EQ(player_.m_strSubtitlePath, "");
}

TEST_F(EventDispatcherTest, TheFirstFollowsTheLast)
{
    player_.m_uiCurPlayIndex = 2;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/a.mp4");
}

TEST_F(EventDispatcherTest, AChosenEntryIsPlayedAgain)
{
    player_.m_iPlayIndex = 3;
    player_.m_uiCurPlayIndex = 0;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(player_.m_uiCurPlayIndex, 2U);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/c.mp4");
}

TEST_F(EventDispatcherTest, TheFirstEntryMayBeTheChosenOne)
{
    player_.m_iPlayIndex = 1;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/a.mp4");
}

TEST_F(EventDispatcherTest, AChosenEntryBeyondTheListBecomesTheFirst)
{
    player_.m_iPlayIndex = 4;
    player_.m_uiCurPlayIndex = 1;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_THAT(fake_.of({"vconf_set_int"}), IsEmpty());
}

TEST_F(EventDispatcherTest, WithoutASelectionTheCurrentEntryStays)
{
    player_.m_iPlayIndex = -1;
    player_.m_uiCurPlayIndex = 1;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);
    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);

    player_.m_uiCurPlayIndex = 7;
    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);
    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U) << "an index outside the list becomes the first";
}

TEST_F(EventDispatcherTest, TheNextVideosSubtitleIsTaken)
{
    player_.m_vdcPlayList[1].strSubtitleName = "b.srt";

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(fake_.media.subtitle_path, "/opt/data/demo_movie/b.srt");
    EXPECT_EQ(player_.m_strSubtitlePath, "/opt/data/demo_movie/b.srt");
}

TEST_F(EventDispatcherTest, APhotoAfterAVideoStopsTheVideo)
{
    fake_.media.state = PLAYER_STATE_READY;
    fill_play_list({"a.mp4", "b.jpg"});

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(player_.m_iPlayingType, 1);
    EXPECT_EQ(lines(),
              Lines({"I \"m_uiCurPlayIndex: 0, iPlayIndex: 0, m_vdcPlayList.size: 2\"", "I \"\"",
                     "player_stop()", "player_unprepare()", "D \"Repeat Mode is on\"",
                     "I \"/opt/data/demo_movie/b.jpg\"", "pictrel_init_display(window#1)",
                     "pictrel_create_from_url(\"/opt/data/demo_movie/b.jpg\")",
                     "pictrel_set_window(picture#1, 1)", "pictrel_set_geometry_size(picture#1, 4)",
                     "pictrel_add_event_callback(picture#1, 4)",
                     "pictrel_add_event_callback(picture#1, 0)", "pictrel_parse(picture#1)"}));
}

TEST_F(EventDispatcherTest, AVideoAfterAPhotoReleasesThePhoto)
{
    make_picture();
    player_.m_iPlayingType = 1;
    fill_play_list({"a.jpg", "b.mp4"});

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(player_.m_iPlayingType, 0);
    EXPECT_THAT(fake_.of({"pictrel_", "player_prepare"}),
                LinesAre("pictrel_destroy(picture#1)", "pictrel_destroy_display(1)",
                         "player_prepare_async(controller)"));
}

TEST_F(EventDispatcherTest, WithRepeatOffTheProgramEndsAfterTheFirst)
{
    player_.m_bRepeat = false;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(lines(), join({{"I \"m_uiCurPlayIndex: 0, iPlayIndex: 0, m_vdcPlayList.size: 3\"",
                              "D \"Repeat Mode is off\""},
                             exit_lines()}));
    EXPECT_EQ(status(), -1) << "the status is left as it is";
    EXPECT_EQ(player_.m_strPlayPath, "/opt/data/demo_movie/b.mp4");
}

TEST_F(EventDispatcherTest, WithRepeatOffTheKindIsSwitchedBeforeTheEnd)
{
    player_.m_bRepeat = false;
    fill_play_list({"a.mp4", "b.jpg"});

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(player_.m_iPlayingType, 1);
    EXPECT_EQ(lines(), join({{"I \"m_uiCurPlayIndex: 0, iPlayIndex: 0, m_vdcPlayList.size: 2\"",
                              "I \"\"", "player_unprepare()", "D \"Repeat Mode is off\""},
                             exit_lines()}));
}

TEST_F(EventDispatcherTest, ACompletionWithAnEmptyListDoesNotCrash)
{
    player_.m_vdcPlayList.clear();
    player_.m_uiCurPlayIndex = 5;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_THAT(fake_.of({"player_set_uri"}), IsEmpty());
}

TEST_F(EventDispatcherTest, WithRepeatOffTheProgramEndsEvenWithAnEmptyList)
{
    player_.m_vdcPlayList.clear();
    player_.m_bRepeat = false;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_THAT(fake_.logs(), testing::Contains("D \"Repeat Mode is off\""));
    EXPECT_EQ(fake_.app.exit_requests, 1);
}

// ---- 3: player prepared ----

TEST_F(EventDispatcherTest, APreparedVideoIsStarted)
{
    fake_.media.state = PLAYER_STATE_READY;
    player_.m_iVideoPlayerState = 2;
    player_.m_uiCurPlayIndex = 1;

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_EQ(lines(),
              Lines({"I \"1 b.mp4\"", "I \"\"", "player_set_display_rotation(0)",
                     "I \"enNextRotation =0\"", "player_start()", writes(ConfigKey::FILE_MODE, 1),
                     "I \"player_start successful\"", writes(ConfigKey::PLAYBACK_STATUS, 1)}));
}

TEST_F(EventDispatcherTest, InPortraitTheStoredOrientationFollows)
{
    fake_.media.state = PLAYER_STATE_READY;
    player_.m_iVideoPlayerState = 2;
    set_panel(ROTATION_TYPE_PORTRAIT);

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_THAT(fake_.calls(),
                LinesAre("player_set_display_rotation(2)", "player_start()",
                         writes(ConfigKey::FILE_MODE, 2), writes(ConfigKey::PLAYBACK_STATUS, 1)));
}

TEST_F(EventDispatcherTest, AStartedVideoShowsTheDisclaimer)
{
    fake_.system.has_disclaimer = true;
    player_.m_CreateDisclaimer();
    fake_.media.state = PLAYER_STATE_READY;
    player_.m_iVideoPlayerState = 2;

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_TRUE(fake_.widgets.visible(player_.m_pDisclaimerImageBox));
    EXPECT_THAT(fake_.of({"player_start", "ecore_timer_add", "vconf_set_int"}),
                LinesAre("player_start()", "ecore_timer_add(5)", writes(ConfigKey::FILE_MODE, 1),
                         writes(ConfigKey::PLAYBACK_STATUS, 1)));
}

TEST_F(EventDispatcherTest, AFailedStartEndsTheProgram)
{
    fake_.media.state = PLAYER_STATE_READY;
    player_.m_iVideoPlayerState = 2;
    fake_.fail("player_start");

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_EQ(lines(),
              join({{"I \"0 a.mp4\"", "I \"\"", "player_set_display_rotation(0)",
                     "I \"enNextRotation =0\"", "player_start()", "E \"player_start error\"",
                     "I \"\"", "player_stop()", "player_unprepare()"},
                    closed_down(),
                    {writes(ConfigKey::PLAYBACK_STATUS, 0)},
                    exit_lines()}));
}

TEST_F(EventDispatcherTest, AVideoThatWasStoppedMeanwhileIsNotStarted)
{
    for (const int state : {0, 1}) {
        player_.m_iVideoPlayerState = state;
        dispatch(ENDEMO_EVENT_PLAYER_PREPARED);
        EXPECT_THAT(lines(), IsEmpty());
    }
}

TEST_F(EventDispatcherTest, WithoutAPlayerNothingIsStarted)
{
    player_.m_DestroyVideo();
    player_.m_iVideoPlayerState = 2;

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_THAT(lines(), IsEmpty());
}

// ---- 4: photo parsed ----

TEST_F(EventDispatcherTest, AParsedPhotoIsDecoded)
{
    show_photo();

    dispatch(ENDEMO_EVENT_PHOTO_PARSED, 0);

    EXPECT_EQ(lines(), Lines({"I \"\"", "pictrel_add_event_callback(picture#1, 1)",
                              "pictrel_decode(picture#1, 0)"}));
}

TEST_F(EventDispatcherTest, APhotoThatCannotBeParsedIsSkipped)
{
    show_photo();

    dispatch(ENDEMO_EVENT_PHOTO_PARSED, 1);

    EXPECT_EQ(status(), 3);
    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
    EXPECT_EQ(fake_.calls().front(), writes(ConfigKey::PLAYBACK_STATUS, 3));
    EXPECT_THAT(fake_.calls(),
                testing::Contains("pictrel_create_from_url(\"/opt/data/demo_movie/b.jpg\")"));
}

TEST_F(EventDispatcherTest, OtherParseResultsDoNothing)
{
    show_photo();

    for (const int result : {-1, 2, 3, 10}) {
        dispatch(ENDEMO_EVENT_PHOTO_PARSED, result);
        EXPECT_THAT(lines(), IsEmpty()) << result;
    }
}

// ---- 5: photo decoded ----

TEST_F(EventDispatcherTest, ADecodedPhotoIsRenderedAndTheSlideShowStarts)
{
    show_photo();
    player_.m_bSlideShowStarted = true;

    dispatch(ENDEMO_EVENT_PHOTO_DECODED, 3);

    EXPECT_EQ(lines(), Lines({"I \"decode success\"", writes(ConfigKey::PLAYBACK_STATUS, 1),
                              "I \"Start Render Picture\"", "pictrel_render(picture#1)", "I \"\"",
                              "ecore_timer_add(5)"}));
    EXPECT_TRUE(player_.m_bSlideShowStarted);
}

TEST_F(EventDispatcherTest, AChosenPhotoStartsNoSlideShow)
{
    show_photo();
    fake_.store.values[ConfigKey::DEMO_MODE] = 1;
    player_.m_bSlideShowStarted = true;

    dispatch(ENDEMO_EVENT_PHOTO_DECODED, 3);

    EXPECT_EQ(lines(), Lines({"I \"decode success\"", writes(ConfigKey::PLAYBACK_STATUS, 1),
                              "E \"eMode=0 iMenuType=1\"", "I \"Start Render Picture\"",
                              "pictrel_render(picture#1)"}));
    EXPECT_FALSE(player_.m_bSlideShowStarted);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(EventDispatcherTest, AChoiceForTheOtherOrientationDoesNotCount)
{
    show_photo();
    fake_.store.values[ConfigKey::DEMO_MODE] = 0x0100;

    dispatch(ENDEMO_EVENT_PHOTO_DECODED, 3);

    EXPECT_THAT(fake_.loop.timers(), ElementsAre(5.0));
}

TEST_F(EventDispatcherTest, APhotoThatIsGoneIsNotRendered)
{
    fill_play_list({"a.jpg", "b.jpg"});
    player_.m_iPlayingType = 1;

    dispatch(ENDEMO_EVENT_PHOTO_DECODED, 3);

    EXPECT_EQ(lines(), Lines({"I \"decode success\"", writes(ConfigKey::PLAYBACK_STATUS, 1),
                              "I \"\"", "ecore_timer_add(5)"}));
}

TEST_F(EventDispatcherTest, APhotoThatCannotBeDecodedIsSkipped)
{
    for (const int result : {0, 1, 4, -1}) {
        show_photo();
        player_.m_uiCurPlayIndex = 0;
        player_.m_bSlideShowStarted = true;

        dispatch(ENDEMO_EVENT_PHOTO_DECODED, result);

        EXPECT_EQ(lines()[0], "E \"decode failed\"") << result;
        EXPECT_EQ(lines()[1], writes(ConfigKey::PLAYBACK_STATUS, 3));
        EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
        EXPECT_FALSE(player_.m_bSlideShowStarted);
    }
}

} // namespace
