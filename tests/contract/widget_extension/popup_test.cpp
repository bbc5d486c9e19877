// The options popup as the viewer meets it: place, focus, keys, pointer, time, end.

#include "widget_test.h"

using namespace testing;

namespace {

class PopupTest : public WidgetTest {};

const std::vector<std::string> SEVEN_ROWS = {"Off",         "Play all",     "City lights", "Ocean",
                                             "Night drive", "Northern sky", "Waterfall"};

} // namespace

TEST_F(PopupTest, StandsInTheMiddleOfEveryPanelWithItsListAtFullSize)
{
    constexpr PanelSize PANELS[] = {{1280, 720}, {1920, 1080}, {3840, 2160},
                                    {720, 1280}, {1080, 1920}, {2160, 3840}};
    for (const PanelSize &panel : PANELS) {
        SCOPED_TRACE(panel);
        ShownPopup shown(SEVEN_ROWS, 0, panel);

        const Eina_Rectangle popup = panel_of(shown.scene.popup);
        const Eina_Rectangle list = Stage::geometry(shown.scene.genlist);
        EXPECT_NEAR(popup.x + popup.w / 2, panel.width / 2, 1);
        EXPECT_NEAR(popup.y + popup.h / 2, panel.height / 2, 1);
        EXPECT_TRUE(lies_in(popup, {0, 0, panel.width, panel.height}));
        EXPECT_TRUE(lies_in(list, popup));
        EXPECT_EQ(list.w, elm_velt_unit_to_pixel(120.0));
        EXPECT_EQ(list.h, elm_velt_unit_to_pixel(55.0));
        EXPECT_TRUE(lies_in(Stage::geometry(shown.scene.button), popup));
        EXPECT_GE(Stage::geometry(shown.scene.button).y, list.y + list.h);
    }
}

TEST_F(PopupTest, IsDrawnDarkAndTranslucentInItsFirstFrame)
{
    Stage stage(1920, 1080);
    EXPECT_EQ(stage.pixel(960, 300), 0u);
    PopupScene scene(stage.window(), "Demo", SEVEN_ROWS, 0);
    scene.show();
    // One turn of the main loop and one drawing: no fade may hold the popup back.
    ecore_main_loop_iterate();
    const std::uint32_t ground = stage.pixel(1400, 220);
    const unsigned int alpha = ground >> 24;
    EXPECT_GT(alpha, 200u);
    EXPECT_LT(alpha, 255u);
    EXPECT_LT((ground >> 8) & 0xff, 40u);
}

TEST_F(PopupTest, IsDrawnWithItsFocusBeforeAnybodyAsksForAFrame)
{
    Stage stage(1280, 720);
    PopupScene scene(stage.window(), "Demo", SEVEN_ROWS, 3);
    stage.settle();
    // From here on nothing is drawn by itself.
    ecore_evas_manual_render_set(ecore_evas_ecore_evas_get(stage.panel_canvas()), EINA_TRUE);
    std::vector<int> focused_when_drawn;
    const FrameWatch panel(stage.panel_canvas(),
                           [&] { focused_when_drawn.push_back(scene.focused_row()); });
    scene.show();
    EXPECT_TRUE(Stage::until([&] { return !focused_when_drawn.empty(); }));
    EXPECT_THAT(focused_when_drawn, ElementsAre(3));
}

TEST_F(PopupTest, ItsPanelIsSmoothedUnlessItsPictureIsShownAsItIs)
{
    const auto state = [](PanelSize size) {
        const ShownPopup shown(SEVEN_ROWS, 0, size);
        const Evas_Object *drawing = find_drawing(shown.scene.popup, "elm/popup/base/velt");
        return std::string(edje_object_part_state_get(drawing, "panel", nullptr));
    };
    EXPECT_EQ(state({1920, 1080}), "default");
    EXPECT_EQ(state({3840, 2160}), "unscaled");
    EXPECT_EQ(state({2160, 3840}), "unscaled");
}

TEST_F(PopupTest, TheListLearnsThatItIsShownWhenThePopupIs)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", SEVEN_ROWS, 0);
    stage.settle();
    EXPECT_EQ(scene.list_shown, 0);
    scene.show();
    stage.settle();
    EXPECT_EQ(scene.list_shown, 1);
    evas_object_hide(scene.popup);
    stage.settle();
    scene.show();
    stage.settle();
    EXPECT_EQ(scene.list_shown, 2);
}

TEST_F(PopupTest, TitleAndButtonShowTheirTextsAsTheyAre)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "<b>Demo</b> & co", SEVEN_ROWS, 0, "<i>O&K</i>");
    scene.show();
    stage.settle();
    const auto *button = elm_layout_edje_get(scene.button);
    EXPECT_STREQ(edje_object_part_text_get(button, "elm.text"), "<i>O&K</i>");
    const char *title = elm_object_part_text_get(scene.popup, "title,text");
    ASSERT_NE(title, nullptr);
    char *plain = elm_entry_markup_to_utf8(title);
    EXPECT_STREQ(plain, "<b>Demo</b> & co");
    free(plain);
}

TEST_F(PopupTest, OpensWithTheFocusOnTheRowInForce)
{
    ShownPopup shown(SEVEN_ROWS, 3);
    EXPECT_EQ(shown.scene.focused_row(), 3);
    EXPECT_FALSE(elm_object_focus_get(shown.scene.button));
}

TEST_F(PopupTest, ArrowKeysWalkThroughTheRowsToTheButtonAndBack)
{
    ShownPopup shown(SEVEN_ROWS, 5);

    shown.stage.press_key("Down");
    EXPECT_EQ(shown.scene.focused_row(), 6);
    shown.stage.press_key("Down");
    EXPECT_EQ(shown.scene.focused_row(), -1);
    EXPECT_TRUE(elm_object_focus_get(shown.scene.button));
    shown.stage.press_key("Down");
    EXPECT_TRUE(elm_object_focus_get(shown.scene.button));
    shown.stage.press_key("Up");
    EXPECT_EQ(shown.scene.focused_row(), 6);
    shown.stage.press_key("Up");
    EXPECT_EQ(shown.scene.focused_row(), 5);
}

TEST_F(PopupTest, UpOnTheFirstRowStaysThere)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    shown.stage.press_key("Up");
    EXPECT_EQ(shown.scene.focused_row(), 0);
}

TEST_F(PopupTest, OnlyOneThingLooksFocused)
{
    ShownPopup shown(SEVEN_ROWS, 5);
    double value = 0.0;
    const auto button_state = [&shown, &value] {
        return std::string(
            edje_object_part_state_get(elm_layout_edje_get(shown.scene.button), "pill", &value));
    };
    const auto focused_rows = [&shown] {
        int rows = 0;
        for (unsigned int i = 0; i < 7; ++i) {
            const RowView view(shown.scene.row(i));
            rows += view && view.state("pill") == "focused" ? 1 : 0;
        }
        return rows;
    };
    EXPECT_EQ(focused_rows(), 1);
    EXPECT_EQ(button_state(), "default");
    shown.stage.press_key("Down");
    EXPECT_EQ(focused_rows(), 1);
    shown.stage.press_key("Down");
    EXPECT_EQ(focused_rows(), 0);
    EXPECT_EQ(button_state(), "focused");
    shown.stage.press_key("Up");
    EXPECT_EQ(focused_rows(), 1);
    EXPECT_EQ(button_state(), "default");
}

TEST_F(PopupTest, ReturnOnARowReachesTheListsOwnHandler)
{
    ShownPopup shown(SEVEN_ROWS, 2);
    shown.stage.press_key("Down");
    shown.stage.press_key("Return");
    EXPECT_THAT(shown.scene.keys, ElementsAre("Down", "Return"));
    EXPECT_EQ(shown.scene.focused_row(), 3);
    EXPECT_EQ(shown.scene.clicked, 0);
}

TEST_F(PopupTest, ReturnOnTheButtonClicksIt)
{
    ShownPopup shown(SEVEN_ROWS, 6);
    shown.stage.press_key("Down");
    shown.stage.press_key("Return");
    EXPECT_EQ(shown.scene.clicked, 1);
}

TEST_F(PopupTest, BackAndEscapeAreLeftToThePlayer)
{
    ShownPopup shown(SEVEN_ROWS, 2);
    shown.stage.press_key("XF86Back");
    shown.stage.press_key("Escape");
    EXPECT_TRUE(evas_object_visible_get(shown.scene.popup));
    EXPECT_EQ(shown.scene.focused_row(), 2);
}

TEST_F(PopupTest, TheFocusFollowsThePointer)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    const Eina_Rectangle list = Stage::geometry(shown.scene.genlist);
    const int row_height = list.h / 5;
    shown.stage.move_pointer(list.x + 200, list.y + row_height * 2 + 40);
    EXPECT_EQ(shown.scene.focused_row(), 2);
    shown.stage.move_pointer(list.x + 220, list.y + row_height * 3 + 40);
    EXPECT_EQ(shown.scene.focused_row(), 3);
    const Eina_Rectangle button = Stage::geometry(shown.scene.button);
    shown.stage.move_pointer(button.x + 20, button.y + 20);
    EXPECT_TRUE(elm_object_focus_get(shown.scene.button));
    shown.stage.move_pointer(list.x + 200, list.y + 40);
    EXPECT_EQ(shown.scene.focused_row(), 0);
}

TEST_F(PopupTest, AClickTellsTheRowUnderThePointer)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    const Eina_Rectangle list = Stage::geometry(shown.scene.genlist);
    shown.stage.click(list.x + 300, list.y + list.h / 5 * 4 + 30);
    EXPECT_EQ(shown.scene.pressed_row, 4);
    EXPECT_EQ(shown.scene.clicked, 0);
}

TEST_F(PopupTest, AClickOnTheButtonPressesAndClicksIt)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    shown.stage.click(shown.scene.button);
    EXPECT_EQ(shown.scene.button_presses, 1);
    EXPECT_EQ(shown.scene.clicked, 1);
}

TEST_F(PopupTest, NothingBesideThePanelIsBlocked)
{
    Stage stage(1920, 1080);
    Ground ground(stage);
    PopupScene scene(stage.window(), "Demo", SEVEN_ROWS, 0);
    scene.show();
    stage.settle();
    stage.click(100, 100);
    EXPECT_EQ(ground.presses, 1);
    // The panel's own ground is not the window's.
    const Eina_Rectangle popup = panel_of(scene.popup);
    stage.click(popup.x + popup.w / 2, popup.y + 20);
    EXPECT_EQ(ground.presses, 1);
}

TEST_F(PopupTest, StaysAboveWhatTheWindowGetsLater)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    const std::uint32_t before = shown.stage.pixel(1400, 220);
    Evas_Object *layout = elm_velt_layout_add(shown.stage.window());
    elm_win_resize_object_add(shown.stage.window(), layout);
    Evas_Object *box = elm_bg_add(layout);
    elm_bg_color_set(box, 255, 255, 255);
    elm_velt_object_resize_policy_set(box, 1, 1);
    elm_velt_layout_item_append(layout, box, 10, 10);
    evas_object_show(layout);
    shown.stage.settle();
    EXPECT_EQ(shown.stage.pixel(100, 100), 0xffffffffu);
    EXPECT_LT(shown.stage.pixel(1400, 220) & 0xff, 60u);
    EXPECT_NE(before, 0u);
}

TEST_F(PopupTest, HidesItselfAndTellsSoWhenItsTimeIsOver)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", SEVEN_ROWS, 0);
    EXPECT_DOUBLE_EQ(elm_popup_timeout_get(scene.popup), 30.0);
    elm_popup_timeout_set(scene.popup, 0.1);
    scene.show();
    EXPECT_TRUE(Stage::until([&scene] { return scene.timed_out > 0; }));
    EXPECT_TRUE(Stage::until([&scene] { return !evas_object_visible_get(scene.popup); }));
    EXPECT_EQ(scene.timed_out, 1);
}

TEST_F(PopupTest, GoesAwayAtOnceWhenHidden)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    evas_object_hide(shown.scene.popup);
    ecore_main_loop_iterate();
    EXPECT_EQ(shown.stage.pixel(1400, 220), 0u);
}

TEST_F(PopupTest, CanBeTakenDownInThePlayersOrder)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    evas_object_hide(shown.scene.popup);
    shown.stage.settle();
    shown.scene.delete_closed();
    shown.stage.settle();
    EXPECT_EQ(shown.scene.rows_deleted, 7);
}

TEST_F(PopupTest, CanBeDeletedBeforeWhatIsInIt)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    shown.scene.delete_at_end();
    shown.stage.settle();
    EXPECT_EQ(shown.scene.rows_deleted, 7);
}

TEST_F(PopupTest, CanBeDeletedWithTheManagersEndRightBehind)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    shown.scene.delete_at_end();
    shown.stage.delete_window();
    elm_velt_manager_fini();
    EXPECT_EQ(shown.scene.rows_deleted, 7);
}

TEST_F(PopupTest, GoesWithItsWindow)
{
    ShownPopup shown(SEVEN_ROWS, 0);
    shown.stage.delete_window();
    shown.stage.settle();
    EXPECT_EQ(shown.scene.rows_deleted, 7);
}

TEST_F(PopupTest, CanBeDeletedBeforeItWasEverShown)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", SEVEN_ROWS, 0);
    scene.delete_closed();
    stage.settle();
    EXPECT_EQ(scene.rows_deleted, 7);
}

TEST_F(PopupTest, CanBeOpenedAgainAndAgain)
{
    Stage stage(1920, 1080);
    for (int i = 0; i < 5; ++i) {
        PopupScene scene(stage.window(), "Demo", SEVEN_ROWS, i);
        scene.show();
        stage.settle();
        EXPECT_EQ(scene.focused_row(), i);
        evas_object_hide(scene.popup);
        scene.delete_closed();
        stage.settle();
    }
}

TEST_F(PopupTest, OutlivesTheTheme)
{
    ShownPopup shown(SEVEN_ROWS, 1);
    elm_velt_manager_fini();
    shown.stage.settle();
    EXPECT_TRUE(evas_object_visible_get(shown.scene.popup));
    shown.scene.delete_closed();
    shown.stage.settle();
    EXPECT_EQ(shown.scene.rows_deleted, 7);
}

TEST_F(PopupTest, WrongArgumentsAreRefusedWithoutHarm)
{
    Stage stage(1920, 1080);
    PopupScene scene(stage.window(), "Demo", SEVEN_ROWS, 0);
    elm_velt_popup_style_set(scene.popup, 3);
    elm_velt_popup_style_set(nullptr, 0);
    elm_velt_popup_title_set(nullptr, "x");
    elm_velt_popup_content_set(scene.popup, nullptr, 1, 1);
    elm_velt_popup_button_set(scene.popup, scene.button, 3);
    elm_velt_popup_button_set(scene.popup, nullptr, 0);
    elm_velt_popup_toast_text_set(nullptr, "x");
    elm_velt_layout_item_append(nullptr, scene.button, 1, 1);
    elm_velt_layout_align_set(scene.layout, 10);
    elm_velt_button_text_set(nullptr, "x");
    EXPECT_EQ(elm_velt_popup_add(nullptr), nullptr);
    EXPECT_EQ(elm_velt_layout_add(nullptr), nullptr);
    EXPECT_EQ(elm_velt_genlist_add(nullptr), nullptr);
    EXPECT_EQ(elm_velt_button_add(nullptr), nullptr);
    EXPECT_EQ(elm_velt_imagebox_add(nullptr), nullptr);
    scene.show();
    stage.settle();
    EXPECT_EQ(scene.focused_row(), 0);
}
