// Events of the players: errors, ends and results.

#include "event_dispatcher_fixture.h"

#include <cstdio>

#include "player_lines.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// ---- Records ----

class RecordTest : public EventDispatcherTest, public testing::WithParamInterface<int> {
  protected:
    static std::string trace_of(const stPipeRecord *record)
    {
        char text[64];
        std::snprintf(text, sizeof text, "I \"pEvent = %p\"", static_cast<const void *>(record));
        return text;
    }

    stPipeRecord record_ = {GetParam(), 9, 0, 0, 0, 0};
};

TEST_P(RecordTest, WithoutAControllerItIsDroppedAfterItsTrace)
{
    CPlayerInspector::m_OnHandleEcorePipeCB(nullptr, &record_, sizeof record_);

    EXPECT_THAT(fake_.lines(), LinesAre(trace_of(&record_)));
}

INSTANTIATE_TEST_SUITE_P(Ids, RecordTest, testing::Range(-1, 13));

// The numbers between those that mean something, and those far out.
class IgnoredEventTest : public EventDispatcherTest, public testing::WithParamInterface<int> {};

TEST_P(IgnoredEventTest, DoesNothing)
{
    for (const int parameter : {INT32_MIN, -1, 0, 1, 3, INT32_MAX}) {
        dispatch(GetParam(), parameter);

        EXPECT_THAT(rest(), IsEmpty()) << parameter;
    }
}

INSTANTIATE_TEST_SUITE_P(Ids, IgnoredEventTest,
                         testing::Values(INT32_MIN, -1, 0, 6, 9, 11, 12, 1000, INT32_MAX));

TEST_F(EventDispatcherTest, AMissingRecordIsDroppedAfterItsTrace)
{
    CPlayerInspector::m_OnHandleEcorePipeCB(controller_.get(), nullptr, 0);
    CPlayerInspector::m_OnHandleEcorePipeCB(nullptr, nullptr, 24);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"pEvent = (nil)\"", "I \"pEvent = (nil)\""));
}

// ---- 1: player error ----

TEST_F(EventDispatcherTest, APlayerErrorEndsTheProgram)
{
    dispatch(ENDEMO_EVENT_PLAYER_ERROR);

    EXPECT_EQ(rest(), join({{"I \"\""},
                            video_stopping_lines(PLAYER_STATE_IDLE),
                            {"I \"\"", "I \"Destroy end\""},
                            closed_down(),
                            {writes(ConfigKey::PLAYBACK_STATUS, 3)},
                            exit_lines()}));
}

TEST_F(EventDispatcherTest, APlayerErrorReleasesPopupAndPhoto)
{
    open_popup();
    make_picture();
    fake_.media.state = PLAYER_STATE_PLAYING;

    dispatch(ENDEMO_EVENT_PLAYER_ERROR);

    EXPECT_EQ(rest(), join({popup_closing_lines("popup#1"),
                            video_stopping_lines(PLAYER_STATE_PLAYING),
                            {"I \"\"", "pictrel_destroy(picture#1)", "pictrel_destroy_display(1)",
                             "I \"Destroy end\""},
                            closed_down(),
                            {writes(ConfigKey::PLAYBACK_STATUS, 3)},
                            exit_lines()}));
}

TEST_F(EventDispatcherTest, AnErrorThatCannotBeStoredEndsTheProgramAllTheSame)
{
    fake_.fail("vconf_set_int");

    dispatch(ENDEMO_EVENT_PLAYER_ERROR);

    const Lines lines = rest();
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
              join({{writes(ConfigKey::PLAYBACK_STATUS, 3),
                     "E \"SetConfigInt key memory/ostrel-demo-player-tv/playback_status,fail\""},
                    exit_lines()}));
}

// ---- 2: player completed ----

class CompletedTest : public EventDispatcherTest {
  protected:
    // Ends the current entry, with a choice in force, and tells which one is played.
    std::string next_after(unsigned int current, int chosen)
    {
        player_.m_uiCurPlayIndex = current;
        player_.m_iPlayIndex = chosen;
        fake_.media.uri.clear();
        dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);
        EXPECT_EQ(player_.m_iPlayIndex, chosen);
        EXPECT_EQ(status(), -1);
        return fake_.media.uri;
    }
};

TEST_F(CompletedTest, TheNextEntryIsPlayedAndAfterTheLastTheFirst)
{
    EXPECT_EQ(next_after(0, 0), "/opt/data/demo_movie/b.mp4");
    EXPECT_EQ(next_after(1, 0), "/opt/data/demo_movie/c.mp4");
    EXPECT_EQ(next_after(2, 0), "/opt/data/demo_movie/a.mp4");
}

TEST_F(CompletedTest, AChosenEntryIsPlayedAgain)
{
    EXPECT_EQ(next_after(0, 3), "/opt/data/demo_movie/c.mp4");
    EXPECT_EQ(next_after(2, 3), "/opt/data/demo_movie/c.mp4");
    EXPECT_EQ(next_after(1, 1), "/opt/data/demo_movie/a.mp4");
}

TEST_F(CompletedTest, AChoiceBeyondTheListIsTheFirstEntry)
{
    EXPECT_EQ(next_after(1, 4), "/opt/data/demo_movie/a.mp4");
}

TEST_F(CompletedTest, WithoutAChoiceTheSameEntryIsPlayedAgain)
{
    EXPECT_EQ(next_after(1, -1), "/opt/data/demo_movie/b.mp4");
    EXPECT_EQ(next_after(7, -1), "/opt/data/demo_movie/a.mp4") << "of a list that grew shorter";
}

TEST_F(CompletedTest, TheNextVideoIsSetUpWithItsSubtitle)
{
    player_.m_vdcPlayList[1].strSubtitleName = "b.srt";
    fake_.media.state = PLAYER_STATE_PLAYING;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(rest(), join({{"I \"m_uiCurPlayIndex: 0, iPlayIndex: 0, m_vdcPlayList.size: 3\"",
                             "D \"Repeat Mode is on\""},
                            video_lines("/opt/data/demo_movie/b.mp4", "/opt/data/demo_movie/b.srt",
                                        PLAYER_STATE_PLAYING, false)}));
    EXPECT_EQ(player_.m_strPlayPath, "/opt/data/demo_movie/b.mp4");

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);
    EXPECT_EQ(player_.m_strSubtitlePath, "") << "the third has none";
}

TEST_F(CompletedTest, PathsAreMadeOfTheFolderInForce)
{
    player_.m_bFolderContentsPlayer = true;
    player_.m_strFolderPath = "/demo/show/";
    player_.m_vdcPlayList[1].strSubtitleName = "b.srt";

    EXPECT_EQ(next_after(0, 0), "/demo/show/b.mp4");
    EXPECT_EQ(fake_.media.subtitle_path, "/demo/show/b.srt");
}

TEST_F(CompletedTest, WithoutTheStickTheNextEntryHasNoFolder)
{
    player_.m_bFolderContentsPlayer = true;
    player_.m_bUsbLocation = true;
    fake_.script.fail_always("usb_device_get_device_list");

    EXPECT_EQ(next_after(0, 0), "b.mp4");

    const Lines logs = fake_.logs();
    EXPECT_EQ(Lines(logs.begin() + 2, logs.begin() + 5),
              Lines({"E \"failed\"", "E \"failed\"",
                     "I \"m_uiCurPlayIndex: 0, iPlayIndex: 0, m_vdcPlayList.size: 3\""}));
}

TEST_F(CompletedTest, FromVideoToPhotoTheVideoIsStopped)
{
    fill_play_list({"a.mp4", "b.jpg"});
    fake_.media.state = PLAYER_STATE_PLAYING;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(rest(), join({{"I \"m_uiCurPlayIndex: 0, iPlayIndex: 0, m_vdcPlayList.size: 2\""},
                            video_stopping_lines(PLAYER_STATE_PLAYING),
                            {"D \"Repeat Mode is on\""},
                            photo_lines("/opt/data/demo_movie/b.jpg", 1, false, false)}));
    EXPECT_EQ(player_.m_iPlayingType, PLAYING_TYPE_PHOTO);
}

// A late report while a photo is on the screen.
TEST_F(CompletedTest, FromPhotoToVideoThePhotoIsReleased)
{
    show_photo();
    fill_play_list({"a.jpg", "b.mp4"});

    EXPECT_EQ(next_after(0, 0), "/opt/data/demo_movie/b.mp4");

    EXPECT_THAT(fake_.of({"pictrel_"}),
                LinesAre("pictrel_destroy(picture#1)", "pictrel_destroy_display(1)"));
    EXPECT_EQ(player_.m_iPlayingType, PLAYING_TYPE_VIDEO);
}

TEST_F(CompletedTest, WithRepeatOffTheProgramEndsOnceTheKindHasChanged)
{
    fill_play_list({"a.mp4", "b.jpg"});
    player_.m_bRepeat = false;

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(rest(), join({{"I \"m_uiCurPlayIndex: 0, iPlayIndex: 0, m_vdcPlayList.size: 2\""},
                            video_stopping_lines(PLAYER_STATE_IDLE),
                            {"D \"Repeat Mode is off\""},
                            exit_lines()}));
    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
    EXPECT_EQ(player_.m_iPlayingType, PLAYING_TYPE_PHOTO);
}

// The list is empty while the panel turns to the orientation that has content.
TEST_F(CompletedTest, AnEmptyListPlaysNothing)
{
    fill_play_list({});
    for (const int chosen : {-1, 0, 2}) {
        EXPECT_EQ(next_after(1, chosen), "");
        EXPECT_EQ(fake_.lines().back(), "W \"play list is empty\"");
        EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
        EXPECT_EQ(player_.m_strPlayPath, FOLDER);
        EXPECT_EQ(player_.m_strSubtitlePath, "");
    }
    EXPECT_EQ(fake_.app.exit_requests, 0);
}

TEST_F(EventDispatcherTest, AVideoThatIsRefusedIsNotReplacedByAnother)
{
    fake_.media.state = PLAYER_STATE_READY;
    fake_.fail("player_set_uri");

    dispatch(ENDEMO_EVENT_PLAYER_COMPLETED);

    EXPECT_EQ(rest(), join({{"I \"m_uiCurPlayIndex: 0, iPlayIndex: 0, m_vdcPlayList.size: 3\"",
                             "D \"Repeat Mode is on\"", "I \"/opt/data/demo_movie/b.mp4 \""},
                            video_stopping_lines(PLAYER_STATE_READY),
                            {"player_set_uri(\"/opt/data/demo_movie/b.mp4\")",
                             "E \"player_set_uri error\""}}));
    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
    EXPECT_EQ(fake_.app.exit_requests, 0);
}

// ---- 3: player prepared ----

class PreparedTest : public EventDispatcherTest {
  protected:
    PreparedTest()
    {
        fake_.media.state = PLAYER_STATE_READY;
        player_.m_iVideoPlayerState = 2;
        player_.m_uiCurPlayIndex = 1;
    }

    static Lines turned_and_started()
    {
        return {"I \"1 b.mp4\"", "I \"\"", "player_set_display_rotation(0)",
                "I \"enNextRotation =0\"", "player_start()"};
    }

    static Lines told(int file_mode = 1)
    {
        return {writes(ConfigKey::FILE_MODE, file_mode), "I \"player_start successful\"",
                writes(ConfigKey::PLAYBACK_STATUS, 1)};
    }
};

TEST_F(PreparedTest, TheVideoIsStarted)
{
    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_EQ(rest(), join({turned_and_started(), told()}));
    EXPECT_EQ(fake_.media.state, PLAYER_STATE_PLAYING);
}

TEST_F(PreparedTest, AnUprightPanelIsStoredAsPortrait)
{
    for (const auto upright : {ROTATION_TYPE_PORTRAIT, ROTATION_TYPE_PORTRAIT_REVERSE}) {
        set_panel(upright);
        fake_.media.state = PLAYER_STATE_READY;

        dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

        const Lines lines = rest();
        EXPECT_EQ(Lines(lines.end() - 3, lines.end()), told(2));
    }
}

TEST_F(PreparedTest, AStartedVideoShowsTheDisclaimer)
{
    fake_.system.has_disclaimer = true;
    player_.m_CreateDisclaimer();
    fake_.forget();
    player_.m_ShowDisclaimer();
    const Lines shown = fake_.lines();

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_THAT(shown, testing::Contains("evas_object_show(imagebox#1)"));
    EXPECT_EQ(rest(), join({turned_and_started(), shown, told()}));
}

TEST_F(PreparedTest, AFailedStartEndsTheProgram)
{
    fake_.system.has_disclaimer = true;
    fake_.fail("player_start");

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_EQ(rest(), join({turned_and_started(),
                            {"E \"player_start error\""},
                            video_stopping_lines(PLAYER_STATE_READY),
                            closed_down(),
                            {writes(ConfigKey::PLAYBACK_STATUS, 0)},
                            exit_lines()}));
}

TEST_F(PreparedTest, AVideoThatCannotBeTurnedIsStarted)
{
    fake_.fail("player_set_display_rotation");

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    Lines lines = turned_and_started();
    lines[3] = "E \"set_display_rotation failed\"";
    EXPECT_EQ(rest(), join({lines, told()}));
}

TEST_F(EventDispatcherTest, AVideoThatWasStoppedMeanwhileIsNotStarted)
{
    fake_.media.state = PLAYER_STATE_READY;
    for (const int state : {-1, 0, 1, 3}) {
        player_.m_iVideoPlayerState = state;
        dispatch(ENDEMO_EVENT_PLAYER_PREPARED);
        EXPECT_THAT(rest(), IsEmpty()) << state;
    }
}

TEST_F(EventDispatcherTest, WithoutAPlayerNothingIsStarted)
{
    player_.m_DestroyVideo();
    player_.m_iVideoPlayerState = 2;

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_THAT(rest(), IsEmpty());
}

TEST_F(EventDispatcherTest, AVideoOutsideTheListIsStartedWithoutAName)
{
    fake_.media.state = PLAYER_STATE_READY;
    player_.m_iVideoPlayerState = 2;
    player_.m_uiCurPlayIndex = 3;

    dispatch(ENDEMO_EVENT_PLAYER_PREPARED);

    EXPECT_EQ(rest().front(), "I \"3 \"");
    EXPECT_EQ(fake_.media.state, PLAYER_STATE_PLAYING);
}

// ---- 4: photo parsed ----

TEST_F(EventDispatcherTest, AParsedPhotoIsDecoded)
{
    show_photo();

    dispatch(ENDEMO_EVENT_PHOTO_PARSED, 0);

    EXPECT_EQ(rest(), Lines({"I \"\"", "pictrel_add_event_callback(picture#1, 1, null)",
                             "pictrel_decode(picture#1, 0)"}));
    EXPECT_EQ(status(), -1);
}

TEST_F(EventDispatcherTest, AParsedPhotoThatIsGoneIsNotDecoded)
{
    fill_play_list({"a.jpg", "b.jpg"});

    dispatch(ENDEMO_EVENT_PHOTO_PARSED, 0);

    EXPECT_EQ(rest(), Lines({"I \"\""}));
}

TEST_F(EventDispatcherTest, APhotoThatCannotBeParsedIsSkipped)
{
    show_photo();

    dispatch(ENDEMO_EVENT_PHOTO_PARSED, 1);

    EXPECT_EQ(rest(), join({{writes(ConfigKey::PLAYBACK_STATUS, 3),
                             "D \"/opt/data/demo_movie/b.jpg\"", "D \"1 1\""},
                            photo_lines("/opt/data/demo_movie/b.jpg", 2, true, true)}));
    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
}

TEST_F(EventDispatcherTest, OtherParseResultsDoNothing)
{
    show_photo();

    for (const int result : {INT32_MIN, -1, 2, 3, 4, 10}) {
        dispatch(ENDEMO_EVENT_PHOTO_PARSED, result);
        EXPECT_THAT(rest(), IsEmpty()) << result;
    }
}

// ---- 5: photo decoded ----

class DecodedTest : public EventDispatcherTest {
  protected:
    static Lines told() { return {"I \"decode success\"", writes(ConfigKey::PLAYBACK_STATUS, 1)}; }

    static Lines rendered() { return {"I \"Start Render Picture\"", "pictrel_render(picture#1)"}; }

    static Lines slide_show() { return {"I \"\"", "ecore_timer_add(5, controller)"}; }
};

TEST_F(DecodedTest, ADecodedPhotoIsRenderedAndTheSlideShowStarts)
{
    show_photo();
    player_.m_bSlideShowStarted = true;

    dispatch(ENDEMO_EVENT_PHOTO_DECODED, 3);

    EXPECT_EQ(rest(), join({told(), rendered(), slide_show()}));
    EXPECT_TRUE(player_.m_bSlideShowStarted);
}

TEST_F(DecodedTest, AChosenPhotoStartsNoSlideShow)
{
    show_photo();
    fake_.store.values[ConfigKey::DEMO_MODE] = 1;
    player_.m_bSlideShowStarted = true;

    dispatch(ENDEMO_EVENT_PHOTO_DECODED, 3);

    EXPECT_EQ(rest(), join({told(), rendered()}));
    EXPECT_FALSE(player_.m_bSlideShowStarted);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(DecodedTest, LeavingStartsNoSlideShow)
{
    show_photo();
    fake_.store.values[ConfigKey::DEMO_MODE] = -1;

    dispatch(ENDEMO_EVENT_PHOTO_DECODED, 3);

    EXPECT_EQ(rest(), join({told(), rendered()}));
}

TEST_F(DecodedTest, AChoiceForTheOtherOrientationDoesNotCount)
{
    show_photo();
    fake_.store.values[ConfigKey::DEMO_MODE] = 0x0100;

    dispatch(ENDEMO_EVENT_PHOTO_DECODED, 3);

    EXPECT_EQ(rest(), join({told(), rendered(), slide_show()}));
}

TEST_F(DecodedTest, APhotoThatIsGoneIsNotRendered)
{
    fill_play_list({"a.jpg", "b.jpg"});
    player_.m_iPlayingType = 1;

    dispatch(ENDEMO_EVENT_PHOTO_DECODED, 3);

    EXPECT_EQ(rest(), join({told(), slide_show()}));
}

TEST_F(DecodedTest, APhotoThatCannotBeDecodedIsSkipped)
{
    int n = 0;
    for (const int result : {-1, 0, 1, 2, 4, 10}) {
        player_.m_DestroyPhoto();
        show_photo();
        player_.m_uiCurPlayIndex = 0;
        player_.m_bSlideShowStarted = true;

        dispatch(ENDEMO_EVENT_PHOTO_DECODED, result);

        n += 2;
        EXPECT_EQ(rest(), join({{"E \"decode failed\"", writes(ConfigKey::PLAYBACK_STATUS, 3),
                                 "D \"/opt/data/demo_movie/b.jpg\"", "D \"1 1\""},
                                photo_lines("/opt/data/demo_movie/b.jpg", n, true, true)}))
            << result;
        EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
        EXPECT_FALSE(player_.m_bSlideShowStarted);
    }
}

} // namespace
