#include "player_test.h"

using testing::IsEmpty;

namespace {

class MainWindowTest : public PlayerTest {
  protected:
    // What is done to the window, wherever it comes from.
    static Lines furnishing()
    {
        return {"evas_object_rectangle_add(canvas#1)",
                "evas_object_size_hint_weight_set(rectangle#1, 1, 1)",
                "evas_object_color_set(rectangle#1, 0, 0, 0, 0)",
                "evas_object_render_op_set(rectangle#1, COPY)",
                "evas_object_show(rectangle#1)",
                "elm_win_resize_object_add(window#1, rectangle#1)"};
    }

    static Lines settings()
    {
        return {"elm_win_title_set(window#1, \"ostrel-demo-player-tv\")",
                "elm_policy_set(QUIT, LAST_WINDOW_CLOSED)", "elm_win_autodel_set(window#1, true)",
                "elm_win_aux_hint_add(window#1, \"wm.screencontroller.exception\", \"3\")"};
    }

    void activate()
    {
        make_window();
        player_.m_ActivateWindow();
        fake_.forget();
    }
};

// ---- m_CreateWindow ----

TEST_F(MainWindowTest, APreparedWindowIsUsedAndFurnished)
{
    EXPECT_TRUE(player_.m_CreateWindow());

    EXPECT_EQ(fake_.lines(),
              join({{"D \"\"", "app_get_preinitialized_window(\"ostrel-demo-player-tv\")"},
                    furnishing(),
                    settings()}));
    EXPECT_EQ(player_.m_pWindow, fake_.widgets.window());
    EXPECT_FALSE(fake_.widgets.visible(player_.m_pWindow));
}

TEST_F(MainWindowTest, TheWaylandWindowAndSurfaceAreTakenFromTheWindow)
{
    EXPECT_TRUE(player_.m_CreateWindow());

    EXPECT_THAT(fake_.of({"ecore_evas_", "ecore_wl2_"}),
                LinesAre("ecore_evas_ecore_evas_get(canvas#1)",
                         "ecore_evas_wayland2_window_get(ecore-evas#1)",
                         "ecore_wl2_window_surface_get(wayland-window#1)"));
    EXPECT_NE(player_.m_pWlWindow, nullptr);
    EXPECT_NE(player_.m_pWlSurface, nullptr);
}

TEST_F(MainWindowTest, WithoutAPreparedWindowOneIsMade)
{
    fake_.widgets.window_prepared = false;

    EXPECT_TRUE(player_.m_CreateWindow());

    EXPECT_EQ(ELM_WIN_DIALOG_BASIC, 1);
    EXPECT_EQ(fake_.lines(),
              join({{"D \"\"", "app_get_preinitialized_window(\"ostrel-demo-player-tv\")",
                     "elm_win_add(null, \"ostrel-demo-player-tv\", 1)"},
                    furnishing(),
                    settings()}));
}

TEST_F(MainWindowTest, WithoutAnyWindowTheCreationFails)
{
    fake_.widgets.window_prepared = false;
    fake_.fail("elm_win_add");

    EXPECT_FALSE(player_.m_CreateWindow());

    EXPECT_THAT(fake_.lines(),
                LinesAre("D \"\"", "app_get_preinitialized_window(\"ostrel-demo-player-tv\")",
                         "elm_win_add(null, \"ostrel-demo-player-tv\", 1)",
                         "W \"pWindow is null\""));
    EXPECT_EQ(player_.m_pWindow, nullptr);
    EXPECT_EQ(player_.m_pWlWindow, nullptr);
    EXPECT_EQ(player_.m_pWlSurface, nullptr);
}

TEST_F(MainWindowTest, WithoutABackgroundTheWindowIsUsedAllTheSame)
{
    fake_.fail("evas_object_rectangle_add");

    EXPECT_TRUE(player_.m_CreateWindow());

    EXPECT_EQ(fake_.lines(),
              join({{"D \"\"", "app_get_preinitialized_window(\"ostrel-demo-player-tv\")",
                     "evas_object_rectangle_add(canvas#1)"},
                    settings()}));
    EXPECT_NE(player_.m_pWlSurface, nullptr);
}

// ---- m_ActivateWindow, m_DeactiveWindow ----

TEST_F(MainWindowTest, ActivationShowsAndWiresTheWindow)
{
    make_window();

    player_.m_ActivateWindow();

    EXPECT_THAT(without(fake_.lines(), {"KeyRouter_Remove_Key"}),
                LinesAre("I \"\"", "evas_object_show(window#1)", "ecore_wl2_sync()",
                         "elm_velt_manager_init(window#1)", "ui_config_manager_init()",
                         "evas_object_event_callback_add(window#1, RESIZE, controller)",
                         "evas_object_event_callback_add(window#1, MOUSE_DOWN, controller)",
                         "evas_object_smart_callback_add(window#1, \"wm,rotation,changed\", "
                         "controller)",
                         "evas_object_smart_callback_add(window#1, \"visibility,changed\", "
                         "controller)",
                         "I \"\"", "I \"Found Keyrouter Object\"",
                         "KeyRouter_Initialize(display#1, registry#1, seat#1, 7)",
                         "KeyRouter_Reset_KeyList()", "KeyRouter_Add_All_Key(5)",
                         "KeyRouter_Set_KeyList(surface#1)"));
}

TEST_F(MainWindowTest, DeactivationHidesTheWindow)
{
    activate();

    player_.m_DeactiveWindow();

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "evas_object_hide(window#1)", "ecore_wl2_sync()"));
    EXPECT_NE(player_.m_pWindow, nullptr);
}

TEST_F(MainWindowTest, DeactivationWithoutAWindowDoesNothing)
{
    player_.m_DeactiveWindow();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

// ---- m_OnWindowReSizeCB ----

TEST_F(MainWindowTest, AResizeHandsTheScreensRectangleToThePlayer)
{
    activate();
    make_video_player();
    const int screen[] = {1, 2, 1280, 720};
    std::copy(std::begin(screen), std::end(screen), fake_.widgets.screen);

    EXPECT_EQ(fake_.widgets.fire(player_.m_pWindow, EVAS_CALLBACK_RESIZE, nullptr), 1);

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "I \"window location:iX=1,iY=2,iWidth=1280,iHeight=720\"",
                         "player_resize_video_render_rect(1, 2, 1280, 720)"));
    EXPECT_THAT(fake_.of({"elm_win_screen_size_get"}),
                LinesAre("elm_win_screen_size_get(window#1)"));
}

TEST_F(MainWindowTest, AResizeBeforeTheVideoPlayerExistsOnlyLogs)
{
    activate();

    fake_.widgets.fire(player_.m_pWindow, EVAS_CALLBACK_RESIZE, nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

TEST_F(MainWindowTest, AResizeWithoutAControllerOnlyLogs)
{
    CPlayerInspector::m_OnWindowReSizeCB(nullptr, nullptr, nullptr, nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

TEST_F(MainWindowTest, ARefusedRectangleIsLogged)
{
    activate();
    make_video_player();
    fake_.fail("player_resize_video_render_rect");

    fake_.widgets.fire(player_.m_pWindow, EVAS_CALLBACK_RESIZE, nullptr);

    EXPECT_EQ(fake_.logs().back(), "E \"player_set_display error\"");
}

// ---- m_OnWindowMouseDownCB ----

TEST_F(MainWindowTest, APrimaryPressOpensThePopup)
{
    activate();

    fake_.widgets.press(player_.m_pWindow, 1);

    EXPECT_EQ(fake_.logs().front(), "I \"\"");
    ASSERT_NE(player_.m_pPopup, nullptr);
    EXPECT_TRUE(fake_.widgets.visible(player_.m_pPopup));
}

TEST_F(MainWindowTest, OtherButtonsOpenNothing)
{
    activate();

    for (const int button : {0, 2, 3})
        fake_.widgets.press(player_.m_pWindow, button);

    EXPECT_EQ(player_.m_pPopup, nullptr);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"\"", "I \"\""));
}

TEST_F(MainWindowTest, APressWhileThePanelTurnsOpensNothing)
{
    activate();
    player_.m_bRotating = true;

    fake_.widgets.press(player_.m_pWindow, 1);

    EXPECT_EQ(player_.m_pPopup, nullptr);
    EXPECT_THAT(fake_.calls(), IsEmpty());
}

TEST_F(MainWindowTest, APressWhileThePopupIsOpenOpensNothing)
{
    activate();
    open_popup();

    fake_.widgets.press(player_.m_pWindow, 1);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

TEST_F(MainWindowTest, APressWhileThePopupIsTornDownOpensNothing)
{
    activate();
    open_popup();
    player_.DestroyPopup();
    fake_.loop.advance(0.4);
    fake_.forget();

    fake_.widgets.press(player_.m_pWindow, 1);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));

    fake_.loop.advance(0.2);
    fake_.widgets.press(player_.m_pWindow, 1);
    EXPECT_NE(player_.m_pPopup, nullptr) << "half a second later it opens again";
}

TEST_F(MainWindowTest, APressWithoutEventOrControllerOpensNothing)
{
    activate();
    Evas_Event_Mouse_Down event = {};
    event.button = 1;

    CPlayerInspector::m_OnWindowMouseDownCB(controller_.get(), nullptr, player_.m_pWindow, nullptr);
    CPlayerInspector::m_OnWindowMouseDownCB(nullptr, nullptr, player_.m_pWindow, &event);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"\""));
}

// ---- m_OnWindowVisibilityChangeCB ----

TEST_F(MainWindowTest, TheFirstVisibilityStartsPlaybackOnce)
{
    activate();
    make_video_player();
    fill_play_list({"a.mp4", "b.mp4"});

    fake_.widgets.change_visibility(1);
    EXPECT_EQ(fake_.logs().front(), "I \"visibility changed 1\"");
    EXPECT_TRUE(fake_.media.preparing());
    EXPECT_TRUE(CPlayerInspector::bStarted());

    fake_.forget();
    fake_.widgets.change_visibility(1);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"visibility changed 1\""));
}

TEST_F(MainWindowTest, BeingHiddenStartsPlaybackToo)
{
    activate();
    make_video_player();
    fill_play_list({"a.mp4"});

    fake_.widgets.change_visibility(0);

    EXPECT_EQ(fake_.logs().front(), "I \"visibility changed 0\"");
    EXPECT_TRUE(fake_.media.preparing());
}

TEST_F(MainWindowTest, TheVisibilityIsLoggedAsASignedNumber)
{
    activate();

    fake_.widgets.change_visibility(-1);

    EXPECT_EQ(fake_.logs().front(), "I \"visibility changed -1\"");
}

TEST_F(MainWindowTest, AVisibilityWithoutAControllerDoesNotCount)
{
    CPlayerInspector::m_OnWindowVisibilityChangeCB(nullptr, nullptr, nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"visibility changed 0\""));
    EXPECT_FALSE(CPlayerInspector::bStarted());
}

TEST_F(MainWindowTest, ASecondControllerOfTheProcessDoesNotStartAgain)
{
    activate();
    fake_.widgets.change_visibility(1);
    destroy_controller();
    auto second = std::make_unique<COstrelDemoPlayer>();
    fake_.forget();

    CPlayerInspector::m_OnWindowVisibilityChangeCB(second.get(), nullptr, nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"visibility changed 0\""));
}

} // namespace
