#include "player_fixture.h"

#include <utility>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class PhotoPlaybackTest : public PlayerTest {
  protected:
    PhotoPlaybackTest()
    {
        make_window();
        fill_play_list({"a.jpg", "b.jpg"});
    }
};

// ---- OnPlayPhoto ----

TEST_F(PhotoPlaybackTest, TheFirstPhotoInitializesTheDisplay)
{
    EXPECT_TRUE(player_.OnPlayPhoto("/demo/a.jpg"));

    EXPECT_THAT(fake_.lines(), LinesAre("I \"/demo/a.jpg\"", "pictrel_init_display(window#1)",
                                        "pictrel_create_from_url(\"/demo/a.jpg\")",
                                        "pictrel_set_window(picture#1, 1)",
                                        "pictrel_set_geometry_size(picture#1, 4)",
                                        "pictrel_add_event_callback(picture#1, 4, picture#1)",
                                        "pictrel_add_event_callback(picture#1, 0, null)",
                                        "pictrel_parse(picture#1)"));
    EXPECT_EQ(player_.m_pPictureDisplay, 1);
    EXPECT_EQ(player_.m_pPicture, fake_.pictures.last());
}

TEST_F(PhotoPlaybackTest, ThePictureKnowsTheControllerAndIsMarkedSetUp)
{
    player_.OnPlayPhoto("/demo/a.jpg");

    EXPECT_EQ(player_.m_pPicture->user_data, controller_.get());
    EXPECT_EQ(player_.m_pPicture->render_state, 0);
}

TEST_F(PhotoPlaybackTest, TheNextPhotoKeepsTheDisplayAndReplacesThePicture)
{
    player_.OnPlayPhoto("/demo/a.jpg");
    fake_.forget();

    EXPECT_TRUE(player_.OnPlayPhoto("/demo/b.jpg"));

    EXPECT_THAT(
        fake_.lines(),
        LinesAre("I \"/demo/b.jpg\"", "I \"Already init display,not init again\"",
                 "pictrel_destroy(picture#1)", "pictrel_create_from_url(\"/demo/b.jpg\")",
                 "pictrel_set_window(picture#2, 1)", "pictrel_set_geometry_size(picture#2, 4)",
                 "pictrel_add_event_callback(picture#2, 4, picture#2)",
                 "pictrel_add_event_callback(picture#2, 0, null)", "pictrel_parse(picture#2)"));
}

TEST_F(PhotoPlaybackTest, AFailedDisplayIsNotInitializedAgain)
{
    fake_.fail("pictrel_init_display");

    EXPECT_FALSE(player_.OnPlayPhoto("/demo/a.jpg"));
    EXPECT_THAT(fake_.lines(), LinesAre("I \"/demo/a.jpg\"", "pictrel_init_display(window#1)",
                                        "E \"InitDisplayHandle false\""));
    EXPECT_EQ(player_.m_pPictureDisplay, 1);

    EXPECT_TRUE(player_.OnPlayPhoto("/demo/a.jpg"));
    EXPECT_EQ(fake_.transcript.count("pictrel_init_display"), 1);
}

TEST_F(PhotoPlaybackTest, APictureThatFailedIsReleasedByTheNext)
{
    fake_.fail("pictrel_parse");
    player_.OnPlayPhoto("/demo/a.jpg");
    fake_.forget();

    EXPECT_TRUE(player_.OnPlayPhoto("/demo/b.jpg"));

    EXPECT_EQ(fake_.calls().front(), "pictrel_destroy(picture#1)");
}

struct PhotoFailure {
    const char *function;
    const char *error;
    const char *picture; /**< what is kept until the next photo */
};

class PhotoFailureTest : public PhotoPlaybackTest,
                         public testing::WithParamInterface<PhotoFailure> {};

TEST_P(PhotoFailureTest, EndsTheAttempt)
{
    fake_.fail(GetParam().function);

    EXPECT_FALSE(player_.OnPlayPhoto("/demo/a.jpg"));

    EXPECT_EQ(fake_.calls().back().rfind(GetParam().function, 0), 0U);
    EXPECT_EQ(fake_.logs().back(), std::string("E \"") + GetParam().error + "\"");
    EXPECT_EQ(fake_.registry.describe(player_.m_pPicture), GetParam().picture);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, PhotoFailureTest,
    testing::Values(PhotoFailure{"pictrel_create_from_url", "PICTURE_ERROR_CREATE", "null"},
                    PhotoFailure{"pictrel_set_window", "PICTURE_ERROR_INIT", "picture#1"},
                    PhotoFailure{"pictrel_set_geometry_size", "Set Picture size Error",
                                 "picture#1"},
                    PhotoFailure{"pictrel_parse", "PICTURE_ERROR_PARSE", "picture#1"}));

TEST_F(PhotoPlaybackTest, APictureThatCannotBeReleasedOrFollowedHoldsNothingUp)
{
    make_picture();
    fake_.fail("pictrel_destroy");
    fake_.script.fail_always("pictrel_add_event_callback");

    EXPECT_TRUE(player_.OnPlayPhoto("/demo/b.jpg"));

    EXPECT_EQ(fake_.calls().back(), "pictrel_parse(picture#2)");
}

// Before that nobody could be told of it.
TEST_F(PhotoPlaybackTest, APictureIsMarkedOnceItHasItsSize)
{
    fake_.fail("pictrel_set_geometry_size");

    player_.OnPlayPhoto("/demo/a.jpg");

    EXPECT_EQ(player_.m_pPicture->render_state, fake::Pictures::FRESH);
    EXPECT_EQ(player_.m_pPicture->user_data, nullptr);
}

// ---- DecodePicture ----

TEST_F(PhotoPlaybackTest, DecodingFollowsTheResultAndStarts)
{
    make_picture();

    player_.DecodePicture(player_.m_pPicture);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "pictrel_add_event_callback(picture#1, 1, null)",
                                        "pictrel_decode(picture#1, 0)"));
}

TEST_F(PhotoPlaybackTest, ADecodingThatFailsIsLoggedWithoutAText)
{
    make_picture();
    fake_.fail("pictrel_decode");

    player_.DecodePicture(player_.m_pPicture);

    EXPECT_THAT(fake_.logs(), LinesAre("I \"\"", "E \"\""));
}

TEST_F(PhotoPlaybackTest, WithoutAPictureNothingIsDecodedOrRendered)
{
    player_.DecodePicture(nullptr);
    player_.RenderPicture(nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

// ---- RenderPicture ----

TEST_F(PhotoPlaybackTest, AnUprightPictureIsRenderedPlainly)
{
    make_picture();

    player_.RenderPicture(player_.m_pPicture);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"Start Render Picture\"", "pictrel_render(picture#1)"));
    EXPECT_EQ(player_.m_pPicture->render_state, 1);
}

TEST_F(PhotoPlaybackTest, InAnyOtherPositionThePictureIsMixedAndTurned)
{
    make_picture();
    for (const auto &[type, degrees] : {std::make_pair(ROTATION_TYPE_PORTRAIT, "270"),
                                        std::make_pair(ROTATION_TYPE_LANDSCAPE_REVERSE, "180"),
                                        std::make_pair(ROTATION_TYPE_PORTRAIT_REVERSE, "90")}) {
        set_panel(type);

        player_.RenderPicture(player_.m_pPicture);

        EXPECT_THAT(fake_.calls(),
                    LinesAre("pictrel_set_mixer_render(picture#1, 1)", "pictrel_render(picture#1)",
                             "pictrel_set_mixer_render(picture#1, 0)",
                             std::string("pictrel_rotate(picture#1, ") + degrees + ")"));
    }
}

TEST_F(PhotoPlaybackTest, AnUnknownPositionIsRenderedPlainly)
{
    make_picture();
    for (const int type : {-1, 4}) {
        set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type));

        player_.RenderPicture(player_.m_pPicture);

        EXPECT_THAT(fake_.calls(), LinesAre("pictrel_render(picture#1)"));
    }
}

// ---- m_DestroyPhoto ----

TEST_F(PhotoPlaybackTest, DestroyingNothingReleasesNothing)
{
    player_.m_DestroyPhoto();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"Destroy end\""));
}

TEST_F(PhotoPlaybackTest, DestroyingReleasesTimerPictureAndDisplay)
{
    make_picture();
    player_.StartSlideShow();
    fake_.forget();

    player_.m_DestroyPhoto();

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "ecore_timer_del(timer#1)", "pictrel_destroy(picture#1)",
                         "pictrel_destroy_display(1)", "I \"Destroy end\""));
    EXPECT_EQ(player_.m_pSlideShowTimer, nullptr);
    EXPECT_EQ(player_.m_pPicture, nullptr);
    EXPECT_EQ(player_.m_pPictureDisplay, 0);
    EXPECT_TRUE(player_.m_bSlideShowStarted) << "the flag is left as it is";
}

TEST_F(PhotoPlaybackTest, WhatCannotBeDestroyedIsForgotten)
{
    make_picture();
    fake_.fail("pictrel_destroy");
    fake_.fail("pictrel_destroy_display");

    player_.m_DestroyPhoto();

    EXPECT_EQ(player_.m_pPicture, nullptr);
    EXPECT_EQ(player_.m_pPictureDisplay, 0);
}

TEST_F(PhotoPlaybackTest, DestroyingLeavesTheEndTimer)
{
    fake_.rotator.supported = true;
    player_.m_uiCurPlayIndex = 1;
    player_.StartSlideShow();
    Ecore_Timer *timer = player_.m_pPhotoPlayEndTimer;
    ASSERT_NE(timer, nullptr);

    player_.m_DestroyPhoto();

    EXPECT_EQ(player_.m_pPhotoPlayEndTimer, timer);
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(180.0));
}

TEST_F(PhotoPlaybackTest, AfterDestroyingTheDisplayIsInitializedAfresh)
{
    make_picture();
    player_.m_DestroyPhoto();
    fake_.forget();

    EXPECT_TRUE(player_.OnPlayPhoto("/demo/a.jpg"));

    EXPECT_EQ(fake_.transcript.count("pictrel_init_display"), 1);
}

// ---- StartSlideShow, StopSlideShow ----

TEST_F(PhotoPlaybackTest, WithoutARotatorEveryPhotoStaysFiveSeconds)
{
    for (const unsigned int index : {0U, 1U}) {
        player_.m_uiCurPlayIndex = index;
        fake_.forget();

        player_.StartSlideShow();

        EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "ecore_timer_add(5, controller)")) << index;
        EXPECT_NE(player_.m_pSlideShowTimer, nullptr);
        EXPECT_EQ(player_.m_pPhotoPlayEndTimer, nullptr);
        EXPECT_TRUE(player_.m_bSlideShowStarted);
        player_.StopSlideShow();
    }
}

TEST_F(PhotoPlaybackTest, WithARotatorTheLastPhotoRunsTheEndTimer)
{
    fake_.rotator.supported = true;
    player_.m_uiCurPlayIndex = 1;

    player_.StartSlideShow();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "ecore_timer_add(180, controller)"));
    EXPECT_EQ(player_.m_pSlideShowTimer, nullptr);
    EXPECT_NE(player_.m_pPhotoPlayEndTimer, nullptr);
}

TEST_F(PhotoPlaybackTest, WithARotatorAnyOtherPhotoStaysThreeMinutes)
{
    fake_.rotator.supported = true;
    // The last place may lie behind the end of a list that was rebuilt.
    for (const unsigned int index : {0U, 2U}) {
        player_.m_uiCurPlayIndex = index;

        player_.StartSlideShow();

        EXPECT_THAT(fake_.loop.timers(), ElementsAre(180.0)) << index;
        EXPECT_NE(player_.m_pSlideShowTimer, nullptr);
        EXPECT_EQ(player_.m_pPhotoPlayEndTimer, nullptr);
        player_.StopSlideShow();
    }
}

TEST_F(PhotoPlaybackTest, ARotatorInTroubleIsNoRotator)
{
    fake_.rotator.supported = true;
    fake_.rotator.status = DISPLAY_ROTATOR_ERROR;

    player_.StartSlideShow();

    EXPECT_THAT(fake_.loop.timers(), ElementsAre(5.0));
}

TEST_F(PhotoPlaybackTest, StoppingDeletesTheTimerAndMayBeRepeated)
{
    player_.StartSlideShow();
    fake_.forget();

    player_.StopSlideShow();
    player_.StopSlideShow();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "ecore_timer_del(timer#1)", "I \"\"",
                                        "I \"slideshow not started\""));
    EXPECT_FALSE(player_.m_bSlideShowStarted);
    EXPECT_EQ(player_.m_pSlideShowTimer, nullptr);
}

// So it is between the decoding of a photo and the start of its own time.
TEST_F(PhotoPlaybackTest, ATimerOfAShowThatIsNotStartedRunsOn)
{
    player_.StartSlideShow();
    player_.m_bSlideShowStarted = false;

    player_.StopSlideShow();

    EXPECT_NE(player_.m_pSlideShowTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(5.0));
}

TEST_F(PhotoPlaybackTest, StoppingLeavesTheEndTimer)
{
    fake_.rotator.supported = true;
    player_.m_uiCurPlayIndex = 1;
    player_.StartSlideShow();

    player_.StopSlideShow();

    EXPECT_FALSE(player_.m_bSlideShowStarted);
    EXPECT_NE(player_.m_pPhotoPlayEndTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(180.0));
}

TEST_F(PhotoPlaybackTest, StartingTwiceArmsOneTimer)
{
    player_.StartSlideShow();
    fake_.forget();

    player_.StartSlideShow();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"slideshow timer already started\""));
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(5.0));
}

// ---- Timers ----

TEST_F(PhotoPlaybackTest, AfterFiveSecondsTheNextPhotoIsShown)
{
    player_.m_iPlayingType = PLAYING_TYPE_PHOTO;
    make_picture();
    player_.StartSlideShow();
    fake_.forget();

    fake_.loop.advance(4.9);
    EXPECT_THAT(fake_.lines(), IsEmpty());
    fake_.loop.advance(0.1);

    EXPECT_EQ(fake_.pictures.path(), "/opt/data/demo_movie/b.jpg");
    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
    EXPECT_EQ(player_.m_pSlideShowTimer, nullptr);
    EXPECT_TRUE(player_.m_bSlideShowStarted) << "until the next photo is decoded";
}

TEST_F(PhotoPlaybackTest, AfterTheLastPhotoTheEndTimerShowsTheFirst)
{
    fake_.rotator.supported = true;
    player_.m_iPlayingType = PLAYING_TYPE_PHOTO;
    player_.m_uiCurPlayIndex = 1;
    make_picture();
    player_.StartSlideShow();

    fake_.loop.advance(180.0);

    EXPECT_EQ(fake_.pictures.path(), "/opt/data/demo_movie/a.jpg");
    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_EQ(player_.m_pPhotoPlayEndTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty()) << "each timer fires once";
}

TEST_F(PhotoPlaybackTest, TheTimerMayLeadToAVideoThatReleasesIt)
{
    fill_play_list({"a.jpg", "b.mp4"});
    make_video_player();
    player_.m_iPlayingType = 1;
    make_picture();
    player_.StartSlideShow();
    fake_.forget();

    fake_.loop.advance(5.0);

    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/b.mp4");
    EXPECT_EQ(player_.m_pSlideShowTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(PhotoPlaybackTest, TheSlideShowTimerWithoutAControllerOnlyWarns)
{
    EXPECT_EQ(CPlayerInspector::m_OnStartSlideShowCB(nullptr), ECORE_CALLBACK_CANCEL);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "W \"pThis is null\""));
}

TEST_F(PhotoPlaybackTest, WithTimedRotationTheEndTimerDoesNotAdvance)
{
    fake_.rotator.supported = true;
    player_.m_bRotationAutoMode = true;
    player_.m_iPlayingType = 1;
    player_.m_uiCurPlayIndex = 1;
    player_.StartSlideShow();
    Ecore_Timer *stale = player_.m_pPhotoPlayEndTimer;
    fake_.forget();

    fake_.loop.advance(180.0);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
    EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
    EXPECT_EQ(player_.m_pPhotoPlayEndTimer, stale);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty()) << "each timer fires once";
}

TEST_F(PhotoPlaybackTest, TheEndTimerWithoutAControllerDoesNothing)
{
    EXPECT_EQ(CPlayerInspector::m_OnPhotoPlayEndCB(nullptr), ECORE_CALLBACK_CANCEL);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

// ---- Picture callbacks ----

TEST_F(PhotoPlaybackTest, ResultsArePostedAsTheyCome)
{
    make_event_pipe();
    make_picture();
    player_.DecodePicture(player_.m_pPicture);
    fake_.forget();

    fake_.pictures.fire_parsed(PICTREL_RESULT_PARSE_FAILED);
    fake_.pictures.fire_decoded(PICTREL_RESULT_DECODED);

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "I \"iEventID = 4 iParam1 = 1\"", "ecore_pipe_write(4, 1)",
                         "I \"result_code:3\"", "I \"iEventID = 5 iParam1 = 3\"",
                         "ecore_pipe_write(5, 3)"));
}

TEST_F(PhotoPlaybackTest, OnlyALostPictureEndsTheProgramAndWithoutAnEvent)
{
    make_event_pipe();
    make_picture();
    for (const int result : {9, 10, 11}) {
        fake_.forget();

        fake_.pictures.fire_conflict(result);

        const Lines warned = {"W \"OstrelDemo player is terminated by Resource Conflict "
                              "result_code:" +
                              std::to_string(result) + "\""};
        EXPECT_EQ(fake_.lines(), result == 10 ? join({warned, exit_lines()}) : warned);
    }
}

} // namespace
