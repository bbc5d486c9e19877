// The end of the controller's life, and a day of it.

#include "player_fixture.h"
#include "player_lines.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class OstrelDemoPlayerEndTest : public PlayerTest {
  protected:
    // A controller in the middle of its work, with all that it can own.
    void play_with_everything()
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
    }

    static Lines picture_gone()
    {
        return {"I \"\"", "pictrel_destroy(picture#1)", "pictrel_destroy_display(1)",
                "I \"Destroy end\""};
    }

    static Lines player_and_pipe_gone()
    {
        return {"D \"\"", "player_destroy()", "I \"\"", "ecore_pipe_del(pipe#1)",
                "display_rotator_remove_cb()"};
    }

    static Lines keys_gone()
    {
        return {"I \"\"",
                "VirtualKey_Finalize()",
                "KeyRouter_Reset_KeyList()",
                "KeyRouter_Add_All_Key(0)",
                "KeyRouter_UnSet_KeyList(surface#1)",
                "KeyRouter_Finalize()"};
    }

    static Lines block_gone()
    {
        return {"I \"Block E-POP = 0 \"", "app_context_manager_unset_epop_block()"};
    }

    static Lines widgets_gone()
    {
        return {"evas_object_del(popup#2)",
                "D \"\"",
                "D \"\"",
                "D \"\"",
                "D \"\"",
                "evas_object_del(genlist#1)",
                "evas_object_del(layout#2)",
                "evas_object_del(popup#1)",
                "evas_object_del(layout#1)",
                "evas_object_del(imagebox#1)",
                "ecore_timer_del(timer#1)",
                "ecore_timer_del(timer#2)",
                "ecore_timer_del(timer#3)"};
    }

    static Lines window_gone()
    {
        return {"ecore_event_handler_del(key-down handler#1)", "evas_object_del(window#1)",
                "ui_config_manager_fini()", "elm_velt_manager_fini()"};
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

    EXPECT_EQ(fake_.lines(), join({popup_closing_lines("popup#1"),
                                   video_stopping_lines(PLAYER_STATE_PLAYING), picture_gone()}));
}

TEST_F(OstrelDemoPlayerEndTest, ReleaseOfNothingOnlyLogs)
{
    player_.ReleaseResource();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"\"", "I \"\"", "I \"Destroy end\""));
}

// ---- Destructor ----

TEST_F(OstrelDemoPlayerEndTest, TheDestructorReleasesEverythingInItsOrder)
{
    play_with_everything();

    destroy_controller();

    // Timers: 1 timed rotation, 2 disclaimer, 3 rotation delay, 4 closing of the popup.
    EXPECT_EQ(fake_.lines(),
              join({popup_closing_lines("popup#2"), video_stopping_lines(PLAYER_STATE_PLAYING),
                    picture_gone(), player_and_pipe_gone(), keys_gone(), block_gone(),
                    widgets_gone(), window_gone()}));
    EXPECT_THAT(fake_.leftovers(), LinesAre("timer#4")) << "the closing timer is left to the end";
}

TEST_F(OstrelDemoPlayerEndTest, WhatCannotBeReleasedHoldsNothingElseUp)
{
    play_with_everything();
    for (const char *function :
         {"player_stop", "player_unprepare", "player_destroy", "display_rotator_remove_cb"})
        fake_.fail(function);
    fake_.script.fail_always("app_context_manager_unset_epop_block");

    destroy_controller();

    const std::string refused = "E \"app_context_manager_unset_epop_block falied\"";
    EXPECT_EQ(
        fake_.lines(),
        join({{"I \"\"", "evas_object_hide(popup#2)"},
              block_gone(),
              {refused, "ecore_timer_add(0.5, controller)", "I \"\"", "player_stop()",
               "E \"player_stop error\"", "player_unprepare()", "E \"player_unprepare error\""},
              picture_gone(),
              {"D \"\"", "player_destroy()", "E \"player_destroy error\"", "I \"\"",
               "ecore_pipe_del(pipe#1)", "display_rotator_remove_cb()"},
              keys_gone(),
              block_gone(),
              {refused},
              widgets_gone(),
              window_gone()}));
}

TEST_F(OstrelDemoPlayerEndTest, AControllerThatWasNeverStartedOwnsLess)
{
    created({"a.mp4"});

    destroy_controller();

    EXPECT_EQ(fake_.lines(), join({{"I \"\""},
                                   video_stopping_lines(PLAYER_STATE_IDLE),
                                   {"I \"\"", "I \"Destroy end\""},
                                   player_and_pipe_gone(),
                                   keys_gone(),
                                   block_gone(),
                                   window_gone()}));
}

TEST_F(OstrelDemoPlayerEndTest, AControllerThatWasNeverCreatedIsDestroyedQuietly)
{
    destroy_controller();

    EXPECT_EQ(fake_.lines(),
              join({{"I \"\"", "I \"\"", "I \"\"", "I \"Destroy end\"", "D \"\"", "I \"\"",
                     "display_rotator_remove_cb()", "I \"\"", "VirtualKey_Finalize()"},
                    block_gone(),
                    {"ui_config_manager_fini()", "elm_velt_manager_fini()"}}));
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
