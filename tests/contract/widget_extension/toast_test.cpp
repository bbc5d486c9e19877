// The toast: one line or two in the middle, for a while, in nobody's way.

#include "widget_test.h"

using namespace testing;

namespace {

class ToastTest : public WidgetTest {};

const std::string SHORT_TEXT = "Landscape timer: 5 min 30 sec";
const std::string LONG_TEXT = "Portrait and landscape timers have both been reset to the first of "
                              "their values, which is five minutes and not a second more than that";

Eina_Rectangle toast_place(const PanelSize &panel, const std::string &text)
{
    Stage stage(panel.width, panel.height);
    const Evas_Object *toast = show_toast(stage.window(), text);
    stage.settle();
    return panel_of(toast);
}

std::string shown_text(const Evas_Object *toast)
{
    Eina_List *lines = elm_box_children_get(elm_object_content_get(toast));
    auto *line = static_cast<Evas_Object *>(eina_list_data_get(lines));
    eina_list_free(lines);
    // Reading the markup does not change the block, but its function asks for one it may change.
    auto *block = const_cast<Evas_Object *>(
        edje_object_part_object_get(elm_layout_edje_get(line), "elm.text"));
    char *plain = elm_entry_markup_to_utf8(evas_object_textblock_text_markup_get(block));
    const std::string text = plain ? plain : "";
    free(plain);
    return text;
}

} // namespace

TEST_F(ToastTest, StandsInTheMiddleOfEveryPanel)
{
    constexpr PanelSize PANELS[] = {{1280, 720}, {1920, 1080}, {3840, 2160}, {1080, 1920}};
    for (const PanelSize &panel : PANELS) {
        SCOPED_TRACE(panel);
        for (const std::string &text : {SHORT_TEXT, LONG_TEXT}) {
            const Eina_Rectangle toast = toast_place(panel, text);
            EXPECT_NEAR(toast.x + toast.w / 2, panel.width / 2, 1);
            EXPECT_NEAR(toast.y + toast.h / 2, panel.height / 2, 1);
            EXPECT_TRUE(lies_in(toast, {0, 0, panel.width, panel.height}));
        }
    }
}

TEST_F(ToastTest, ALongTextTakesTwoLinesAndNoMore)
{
    const Eina_Rectangle one = toast_place(FULL_HD, SHORT_TEXT);
    const Eina_Rectangle two = toast_place(FULL_HD, LONG_TEXT);
    const Eina_Rectangle longer = toast_place(FULL_HD, LONG_TEXT + LONG_TEXT);
    EXPECT_GT(two.h, one.h);
    EXPECT_LT(two.h, 2 * one.h);
    EXPECT_EQ(longer.h, two.h);
    EXPECT_EQ(longer.w, two.w);
}

TEST_F(ToastTest, ShowsItsTextAsItIs)
{
    Stage stage(1920, 1080);
    EXPECT_EQ(shown_text(show_toast(stage.window(), "<b>5</b> & <<A>> min")),
              "<b>5</b> & <<A>> min");
}

TEST_F(ToastTest, LeavesTheFocusAndTheKeysWhereTheyAre)
{
    ShownPopup popup({"Off", "Play all", "City"}, 1);
    show_toast(popup.stage.window(), SHORT_TEXT);
    popup.stage.settle();
    EXPECT_EQ(popup.scene.focused_row(), 1);
    popup.stage.press_key("Down");
    EXPECT_EQ(popup.scene.focused_row(), 2);
    EXPECT_THAT(popup.scene.keys, ElementsAre("Down"));
}

TEST_F(ToastTest, ThePopupThatOpensBesideAToastGetsTheFocus)
{
    Stage stage(1920, 1080);
    show_toast(stage.window(), SHORT_TEXT);
    stage.settle();
    PopupScene scene(stage.window(), "Demo", {"Off", "Play all", "City"}, 1);
    scene.show();
    stage.settle();
    EXPECT_EQ(scene.focused_row(), 1);
}

TEST_F(ToastTest, LetsClicksThrough)
{
    Stage stage(1920, 1080);
    Ground ground(stage);
    show_toast(stage.window(), SHORT_TEXT);
    stage.settle();
    stage.click(960, 540);
    stage.click(100, 100);
    EXPECT_EQ(ground.presses, 2);
}

TEST_F(ToastTest, HidesItselfAndStaysUntilItIsDeleted)
{
    Stage stage(1920, 1080);
    Evas_Object *toast = show_toast(stage.window(), SHORT_TEXT);
    EXPECT_DOUBLE_EQ(elm_popup_timeout_get(toast), 3.0);
    elm_popup_timeout_set(toast, 0.1);
    EXPECT_TRUE(Stage::until([toast] { return !evas_object_visible_get(toast); }));
    stage.settle();
    EXPECT_EQ(stage.pixel(960, 500), 0u);
    evas_object_del(toast);
    stage.settle();
}

TEST_F(ToastTest, OneReplacesTheOtherWhileItIsStillShown)
{
    Stage stage(1920, 1080);
    Evas_Object *first = show_toast(stage.window(), LONG_TEXT);
    stage.settle();
    evas_object_del(first);
    Evas_Object *second = show_toast(stage.window(), SHORT_TEXT);
    stage.settle();
    EXPECT_EQ(shown_text(second), SHORT_TEXT);
    EXPECT_TRUE(evas_object_visible_get(second));
    elm_velt_popup_toast_text_set(second, LONG_TEXT.c_str());
    stage.settle();
    EXPECT_EQ(shown_text(second), LONG_TEXT);
}

TEST_F(ToastTest, AnEmptyTextIsNoHarm)
{
    Stage stage(1920, 1080);
    Evas_Object *toast = show_toast(stage.window(), "");
    elm_velt_popup_toast_text_set(toast, nullptr);
    stage.settle();
    EXPECT_EQ(shown_text(toast), "");
}
