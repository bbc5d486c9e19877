// The readable cases; PhotoTranscriptTest.cpp goes through all of them.

#include "player_test.h"

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

// ---- DecodePicture ----

TEST_F(PhotoPlaybackTest, DecodingFollowsTheResultAndStarts)
{
    make_picture();

    player_.DecodePicture(player_.m_pPicture);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "pictrel_add_event_callback(picture#1, 1, null)",
                                        "pictrel_decode(picture#1, 0)"));
}

// ---- RenderPicture ----

TEST_F(PhotoPlaybackTest, AnUprightPictureIsRenderedPlainly)
{
    make_picture();

    player_.RenderPicture(player_.m_pPicture);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"Start Render Picture\"", "pictrel_render(picture#1)"));
    EXPECT_EQ(player_.m_pPicture->render_state, 1);
}

// ---- m_DestroyPhoto ----

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

TEST_F(PhotoPlaybackTest, StartingTwiceArmsOneTimer)
{
    player_.StartSlideShow();
    fake_.forget();

    player_.StartSlideShow();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"slideshow timer already started\""));
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(5.0));
}

// ---- Timers ----

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

} // namespace
