// The end of the controller's life, and a day of it.

#include "player_test.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class OstrelDemoPlayerEndTest : public PlayerTest {
  protected:
    // A controller that was created and is ready to start.
    void created(const std::vector<std::string> &files)
    {
        ASSERT_TRUE(create(files));
        fake_.forget();
    }
};

// ---- ReleaseResource ----

TEST_F(OstrelDemoPlayerEndTest, ReleaseClosesPopupThenVideoThenPhoto)
{
    make_window();
    make_video_player_in(PLAYER_STATE_PLAYING);
    make_picture();
    open_popup();

    player_.ReleaseResource();

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "evas_object_hide(popup#1)", "I \"Block E-POP = 0 \"",
                         "app_context_manager_unset_epop_block()", "ecore_timer_add(0.5)", "I \"\"",
                         "player_stop()", "player_unprepare()", "I \"\"",
                         "pictrel_destroy(picture#1)", "pictrel_destroy_display(1)",
                         "I \"Destroy end\""));
}

TEST_F(OstrelDemoPlayerEndTest, ReleaseOfNothingOnlyLogs)
{
    player_.ReleaseResource();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"\"", "I \"\"", "I \"Destroy end\""));
}

// ---- Destructor ----

TEST_F(OstrelDemoPlayerEndTest, TheDestructorReleasesEverythingInItsOrder)
{
    fake_.rotator.supported = true;
    fake_.system.has_disclaimer = true;
    fake_.store.values[ConfigKey::ROTATION_AUTO_MODE] = 1;
    created({"a.mp4", "b.mp4"});
    player_.StartDemoPlayer();
    fake_.media.fire_prepared();
    fake_.loop.drain_pipe();
    player_.m_UpdateNotificationLabel("toast");
    open_popup();
    player_.m_hRotationDelayTimer =
        ecore_timer_add(0.8, CPlayerInspector::m_OnRotationDelayTimerCB, controller_.get());
    make_picture();

    destroy_controller();

    // Timers: 1 timed rotation, 2 disclaimer, 3 rotation delay, 4 closing of the popup.
    EXPECT_EQ(without(fake_.lines(), {"D \"\"", "I \"\""}),
              Lines({"evas_object_hide(popup#2)",
                     "I \"Block E-POP = 0 \"",
                     "app_context_manager_unset_epop_block()",
                     "ecore_timer_add(0.5)",
                     "player_stop()",
                     "player_unprepare()",
                     "pictrel_destroy(picture#1)",
                     "pictrel_destroy_display(1)",
                     "I \"Destroy end\"",
                     "player_destroy()",
                     "ecore_pipe_del(pipe#1)",
                     "display_rotator_remove_cb()",
                     "VirtualKey_Finalize()",
                     "KeyRouter_Reset_KeyList()",
                     "KeyRouter_Add_All_Key(0)",
                     "KeyRouter_UnSet_KeyList(surface#1)",
                     "KeyRouter_Finalize()",
                     "I \"Block E-POP = 0 \"",
                     "app_context_manager_unset_epop_block()",
                     "evas_object_del(popup#2)",
                     "evas_object_del(genlist#1)",
                     "evas_object_del(layout#2)",
                     "evas_object_del(popup#1)",
                     "evas_object_del(layout#1)",
                     "evas_object_del(imagebox#1)",
                     "ecore_timer_del(timer#1)",
                     "ecore_timer_del(timer#2)",
                     "ecore_timer_del(timer#3)",
                     "ecore_event_handler_del(key-down handler#1)",
                     "evas_object_del(window#1)",
                     "ui_config_manager_fini()",
                     "elm_velt_manager_fini()"}));
    EXPECT_THAT(fake_.leftovers(), LinesAre("timer#4")) << "the closing timer is left to the end";
}

TEST_F(OstrelDemoPlayerEndTest, TheDestructorLogsTheEntryOfEachStep)
{
    created({"a.mp4"});

    destroy_controller();

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"",                           // closing the popup
                         "I \"\"", "player_unprepare()",     // stopping the video
                         "I \"\"", "I \"Destroy end\"",      // releasing the photo
                         "D \"\"", "player_destroy()",       // destroying the video
                         "I \"\"", "ecore_pipe_del(pipe#1)", // the event manager
                         "display_rotator_remove_cb()",      //
                         "I \"\"", "VirtualKey_Finalize()",  // the keys
                         "KeyRouter_Reset_KeyList()", "KeyRouter_Add_All_Key(0)",
                         "KeyRouter_UnSet_KeyList(surface#1)", "KeyRouter_Finalize()",
                         "I \"Block E-POP = 0 \"", "app_context_manager_unset_epop_block()",
                         "ecore_event_handler_del(key-down handler#1)", "evas_object_del(window#1)",
                         "ui_config_manager_fini()", "elm_velt_manager_fini()"));
}

TEST_F(OstrelDemoPlayerEndTest, AControllerThatWasNeverCreatedIsDestroyedQuietly)
{
    destroy_controller();

    EXPECT_THAT(fake_.calls(), LinesAre("display_rotator_remove_cb()", "VirtualKey_Finalize()",
                                        "app_context_manager_unset_epop_block()",
                                        "ui_config_manager_fini()", "elm_velt_manager_fini()"));
    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

TEST_F(OstrelDemoPlayerEndTest, AFailedCreationIsDestroyedCompletely)
{
    fake_.rotator.supported = true;
    EXPECT_FALSE(create({}));

    destroy_controller();

    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

TEST_F(OstrelDemoPlayerEndTest, APlayingVideoIsDestroyedCompletely)
{
    fake_.rotator.supported = true;
    fake_.system.has_disclaimer = true;
    created({"a.mp4", "b.jpg"});
    fake_.widgets.change_visibility(1);
    fake_.media.fire_prepared();
    fake_.loop.drain_pipe();
    EXPECT_EQ(fake_.media.state, PLAYER_STATE_PLAYING);

    destroy_controller();

    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

TEST_F(OstrelDemoPlayerEndTest, AShownPhotoIsDestroyedCompletely)
{
    created({"a.jpg", "b.jpg"});
    fake_.widgets.change_visibility(1);
    fake_.pictures.fire_parsed(PICTREL_RESULT_PARSED);
    fake_.loop.drain_pipe();
    fake_.pictures.fire_decoded(PICTREL_RESULT_DECODED);
    fake_.loop.drain_pipe();
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(5.0));

    destroy_controller();

    EXPECT_THAT(fake_.leftovers(), IsEmpty());
}

// ---- A day in the shop ----

TEST_F(OstrelDemoPlayerEndTest, AListOfVideosAndPhotosPlaysOverAndOver)
{
    created({"a.mp4", "b.jpg", "c.mp4"});
    fake_.widgets.change_visibility(1);

    // Videos come before photos in the list.
    for (int round = 0; round < 3; ++round) {
        for (const char *video : {"a.mp4", "c.mp4"}) {
            ASSERT_EQ(fake_.media.uri, FOLDER + std::string(video));
            fake_.media.fire_prepared();
            fake_.loop.drain_pipe();
            ASSERT_EQ(fake_.media.state, PLAYER_STATE_PLAYING);
            fake_.media.fire_completed();
            fake_.loop.drain_pipe();
        }
        fake_.pictures.fire_parsed(PICTREL_RESULT_PARSED);
        fake_.loop.drain_pipe();
        fake_.pictures.fire_decoded(PICTREL_RESULT_DECODED);
        fake_.loop.drain_pipe();
        ASSERT_EQ(player_.m_pPicture->render_state, 1);
        fake_.loop.advance(5.0);
    }
    EXPECT_EQ(fake_.app.exit_requests, 0);
}

TEST_F(OstrelDemoPlayerEndTest, ThePanelIsFollowedAndTurnedByTheTimer)
{
    fake_.rotator.supported = true;
    fake_.store.values[ConfigKey::ROTATION_AUTO_MODE] = 1;
    fake_.store.values[ConfigKey::PORTRAIT_TIMER] = 2;
    created({"a.mp4", "portrait_b.mp4"});
    fake_.widgets.change_visibility(1);
    fake_.forget();

    fake_.loop.advance(300.0);
    ASSERT_THAT(fake_.of({"VirtualKey"}), LinesAre("VirtualKey_Send_KeyCode(569, 2)"));
    fake_.rotator.report(2);
    EXPECT_TRUE(player_.m_bRotating);
    fake_.widgets.turn_window(90);
    fake_.rotator.report(0);
    EXPECT_FALSE(player_.m_bRotating);
    fake_.loop.drain_pipe();

    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/portrait_b.mp4");
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(360.0));
}

} // namespace
