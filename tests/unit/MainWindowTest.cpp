#include <algorithm>
#include <iterator>

#include "player_lines.h"

using testing::Bool;
using testing::Combine;
using testing::Range;
using testing::Values;

namespace {

// What is put into a new window, wherever it comes from.
Lines window_furnishing_lines()
{
    return {"evas_object_rectangle_add(canvas#1)",
            "evas_object_size_hint_weight_set(rectangle#1, 1, 1)",
            "evas_object_color_set(rectangle#1, 0, 0, 0, 0)",
            "evas_object_render_op_set(rectangle#1, COPY)",
            "evas_object_show(rectangle#1)",
            "elm_win_resize_object_add(window#1, rectangle#1)"};
}

// How a new window is set up.
Lines window_setting_lines()
{
    return {"elm_win_title_set(window#1, \"ostrel-demo-player-tv\")",
            "elm_policy_set(QUIT, LAST_WINDOW_CLOSED)", "elm_win_autodel_set(window#1, true)",
            "elm_win_aux_hint_add(window#1, \"wm.screencontroller.exception\", \"3\")"};
}

class MainWindowTest : public PlayerTest {
  protected:
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
                    window_furnishing_lines(),
                    window_setting_lines()}));
    EXPECT_EQ(player_.m_pWindow, fake_.widgets.window());
    EXPECT_EQ(fake_.registry.describe(player_.m_pWlWindow), "wayland-window#1");
    EXPECT_EQ(fake_.registry.describe(player_.m_pWlSurface), "surface#1");
    EXPECT_FALSE(fake_.widgets.visible(player_.m_pWindow));
}

TEST_F(MainWindowTest, WithoutAPreparedWindowOneIsMade)
{
    fake_.widgets.window_prepared = false;

    EXPECT_TRUE(player_.m_CreateWindow());

    EXPECT_EQ(ELM_WIN_DIALOG_BASIC, 1);
    EXPECT_EQ(fake_.lines(),
              join({{"D \"\"", "app_get_preinitialized_window(\"ostrel-demo-player-tv\")",
                     "elm_win_add(null, \"ostrel-demo-player-tv\", 1)"},
                    window_furnishing_lines(),
                    window_setting_lines()}));
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
                    window_setting_lines()}));
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

TEST_F(MainWindowTest, EachCallbackIsRegisteredForItsOwnEvent)
{
    activate();
    make_video_player();

    EXPECT_EQ(fake_.widgets.fire(player_.m_pWindow, EVAS_CALLBACK_RESIZE, nullptr), 1);
    EXPECT_EQ(fake_.calls(), Lines({"player_resize_video_render_rect(0, 0, 1920, 1080)"}));

    fake_.forget();
    fake_.widgets.press(player_.m_pWindow, 1);
    EXPECT_EQ(fake_.calls().front(), "elm_velt_popup_add(window#1)");
    EXPECT_TRUE(fake_.widgets.visible(player_.m_pPopup));

    fake_.forget();
    EXPECT_EQ(fake_.widgets.fire_smart(player_.m_pWindow, "wm,rotation,changed"), 1);
    EXPECT_EQ(fake_.of({"elm_win_rotation_get"}), Lines({"elm_win_rotation_get(window#1)"}));

    fake_.forget();
    fake_.widgets.change_visibility(0);
    EXPECT_THAT(fake_.lines(), LinesAre("I \"visibility changed 0\"", "I \"play list is empty\""));
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

class ResizeTest : public MainWindowTest,
                   public testing::WithParamInterface<std::tuple<bool, bool, bool>> {};

TEST_P(ResizeTest, TheScreensRectangleGoesToAnExistingPlayer)
{
    const auto [with_controller, with_player, fails] = GetParam();
    make_window();
    if (with_player)
        make_video_player();
    const int screen[] = {3, 4, 1080, 1920};
    std::copy(std::begin(screen), std::end(screen), fake_.widgets.screen);
    Lines expected = {"I \"\""};
    if (with_controller && with_player) {
        expected += Lines{"I \"window location:iX=3,iY=4,iWidth=1080,iHeight=1920\"",
                          "player_resize_video_render_rect(3, 4, 1080, 1920)"};
        if (fails) {
            fake_.fail("player_resize_video_render_rect");
            expected += "E \"player_set_display error\"";
        }
    }

    CPlayerInspector::m_OnWindowReSizeCB(with_controller ? controller_.get() : nullptr, nullptr,
                                         player_.m_pWindow, nullptr);

    EXPECT_EQ(fake_.lines(), expected);
}

INSTANTIATE_TEST_SUITE_P(Cases, ResizeTest, Combine(Bool(), Bool(), Bool()));

// ---- m_OnWindowMouseDownCB ----

enum class Popup { None, Open, Closing };

class MouseDownTest : public MainWindowTest,
                      public testing::WithParamInterface<std::tuple<int, Popup, bool, bool, bool>> {
};

TEST_P(MouseDownTest, OnlyAPrimaryPressOnAStillPanelWithoutAPopupOpensOne)
{
    const auto [button, popup, rotating, with_controller, with_event] = GetParam();
    make_window();
    if (popup != Popup::None)
        open_popup();
    if (popup == Popup::Closing)
        player_.DestroyPopup();
    player_.m_bRotating = rotating;
    Evas_Object *before = player_.m_pPopup;
    Evas_Event_Mouse_Down event = {};
    event.button = button;
    fake_.forget();

    CPlayerInspector::m_OnWindowMouseDownCB(with_controller ? controller_.get() : nullptr, nullptr,
                                            player_.m_pWindow, with_event ? &event : nullptr);

    if (button == 1 && popup == Popup::None && !rotating && with_controller && with_event) {
        EXPECT_EQ(fake_.logs(), Lines({"I \"\"", "I \"\"", "I \"Block E-POP = 1 \""}));
        EXPECT_EQ(fake_.calls().front(), "elm_velt_popup_add(window#1)");
        EXPECT_EQ(fake_.calls().back(), "evas_object_show(popup#1)");
    } else {
        EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
        EXPECT_EQ(player_.m_pPopup, before);
    }
}

INSTANTIATE_TEST_SUITE_P(Presses, MouseDownTest,
                         Combine(Range(0, 5), Values(Popup::None, Popup::Open, Popup::Closing),
                                 Bool(), Bool(), Bool()));

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

// ---- m_OnWindowVisibilityChangeCB ----

class VisibilityTest : public MainWindowTest,
                       public testing::WithParamInterface<std::tuple<int, bool, bool>> {};

TEST_P(VisibilityTest, TheFirstOneThatKnowsItsControllerStartsPlaybackWhateverItSays)
{
    const auto [visibility, with_controller, started] = GetParam();
    CPlayerInspector::bStarted() = started;
    Lines expected = {"I \"visibility changed " + std::to_string(visibility) + "\""};
    if (with_controller && !started)
        expected += "I \"play list is empty\"";
    auto *info = reinterpret_cast<void *>(static_cast<intptr_t>(visibility));

    for (int time = 0; time < 2; ++time) {
        fake_.forget();
        CPlayerInspector::m_OnWindowVisibilityChangeCB(
            with_controller ? controller_.get() : nullptr, nullptr, info);
        EXPECT_EQ(fake_.lines(), time == 0 ? expected : Lines({expected.front()}));
        EXPECT_EQ(CPlayerInspector::bStarted(), started || with_controller);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, VisibilityTest, Combine(Values(0, 1, 2, -1), Bool(), Bool()));

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

TEST_F(MainWindowTest, AVisibilityDuringTheStartDoesNotStartAgain)
{
    activate();
    make_video_player();
    fill_play_list({"a.mp4"});
    fake_.media.before_unprepare = [this] { fake_.widgets.change_visibility(1); };

    fake_.widgets.change_visibility(1);

    EXPECT_EQ(fake_.transcript.count("player_prepare_async"), 1);
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
