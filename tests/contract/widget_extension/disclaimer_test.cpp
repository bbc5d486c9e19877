// The disclaimer: a picture of its own size at the bottom, in nobody's way; and layouts in general.

#include <utility>

#include "widget_test.h"

using namespace testing;

namespace {

class DisclaimerTest : public WidgetTest {};

std::string resource_dir()
{
    return BUILT_RESOURCE_DIR;
}

/** Shows the disclaimer on a landscape panel, and lets everything come to rest. */
DisclaimerScene show_disclaimer(Stage &stage)
{
    DisclaimerScene scene(stage.window(), false, resource_dir());
    scene.show(false);
    stage.settle();
    return scene;
}

Evas_Object *add_root_layout(const Stage &stage)
{
    Evas_Object *root = elm_velt_layout_add(stage.window());
    evas_object_size_hint_weight_set(root, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    elm_win_resize_object_add(stage.window(), root);
    return root;
}

bool equals(const Eina_Rectangle &place, int x, int y, int w, int h)
{
    return place.x == x && place.y == y && place.w == w && place.h == h;
}

} // namespace

TEST_F(DisclaimerTest, ThePicturesHaveTheSizesThatThePlayerGivesThem)
{
    Stage stage(1920, 1080);
    Evas_Object *picture = evas_object_image_add(stage.canvas());
    const auto size_of = [picture](const std::string &name) {
        std::pair<int, int> size;
        evas_object_image_file_set(picture, (resource_dir() + name).c_str(), nullptr);
        evas_object_image_size_get(picture, &size.first, &size.second);
        return size;
    };
    EXPECT_EQ(size_of("/ostrel_demo/player_img_china_disclaimer.png"), std::pair(240, 135));
    EXPECT_EQ(size_of("/ostrel_demo/player_img_china_disclaimer_portrait.png"),
              std::pair(135, 240));
}

TEST_F(DisclaimerTest, IsBuiltHidden)
{
    Stage stage(1920, 1080);
    DisclaimerScene scene(stage.window(), false, resource_dir());
    stage.settle();
    EXPECT_FALSE(evas_object_visible_get(scene.root));
    EXPECT_FALSE(evas_object_visible_get(scene.image));
    EXPECT_EQ(stage.pixel(960, 1000), 0u);
}

TEST_F(DisclaimerTest, StandsAtTheBottomInItsOwnPixels)
{
    constexpr PanelSize PANELS[] = {{1280, 720}, {1920, 1080}, {3840, 2160}, {1080, 1920}};
    for (const PanelSize &panel : PANELS) {
        SCOPED_TRACE(panel);
        const bool portrait = panel.height > panel.width;
        const int width = portrait ? 135 : 240;
        const int height = portrait ? 240 : 135;
        Stage stage(panel.width, panel.height);
        DisclaimerScene scene(stage.window(), portrait, resource_dir());
        scene.show(portrait);
        stage.settle();
        EXPECT_TRUE(equals(Stage::geometry(scene.image), (panel.width - width) / 2,
                           panel.height - height, width, height));
        EXPECT_NE(stage.pixel(panel.width / 2, panel.height - height / 2), 0u);
    }
}

TEST_F(DisclaimerTest, IsPlacedAtOnceWhenRendered)
{
    Stage stage(1920, 1080);
    DisclaimerScene scene(stage.window(), false, resource_dir());
    stage.settle();
    scene.show(false);
    EXPECT_TRUE(equals(Stage::geometry(scene.image), 840, 945, 240, 135));
}

TEST_F(DisclaimerTest, TheOtherOrientationsPictureIsShownInItsOwnSize)
{
    Stage stage(1920, 1080);
    DisclaimerScene scene(stage.window(), false, resource_dir());
    scene.show(true);
    stage.settle();
    EXPECT_TRUE(equals(Stage::geometry(scene.image), 892, 840, 135, 240));
}

TEST_F(DisclaimerTest, NeverChangesTheWindowsSize)
{
    Stage stage(1280, 720);
    const DisclaimerScene scene = show_disclaimer(stage);
    EXPECT_TRUE(equals(Stage::geometry(stage.window()), 0, 0, 1280, 720));
    EXPECT_TRUE(equals(Stage::geometry(scene.root), 0, 0, 1280, 720));
}

TEST_F(DisclaimerTest, LetsClicksThrough)
{
    Stage stage(1920, 1080);
    Ground ground(stage);
    show_disclaimer(stage);
    stage.click(960, 1000);
    EXPECT_EQ(ground.presses, 1);
}

TEST_F(DisclaimerTest, DoesNotTakeTheFocusFromThePopup)
{
    ShownPopup popup({"Off", "Play all", "City"}, 1);
    show_disclaimer(popup.stage);
    EXPECT_EQ(popup.scene.focused_row(), 1);
    popup.stage.press_key("Down");
    EXPECT_EQ(popup.scene.focused_row(), 2);
}

TEST_F(DisclaimerTest, CanBeHiddenAndShownAgain)
{
    Stage stage(1920, 1080);
    DisclaimerScene scene = show_disclaimer(stage);
    scene.hide();
    stage.settle();
    EXPECT_EQ(stage.pixel(960, 1000), 0u);
    scene.show(false);
    stage.settle();
    EXPECT_NE(stage.pixel(960, 1000), 0u);
}

TEST_F(DisclaimerTest, TheImageMayBeDeletedAfterItsLayout)
{
    Stage stage(1920, 1080);
    for (int i = 0; i < 3; ++i) {
        const DisclaimerScene scene = show_disclaimer(stage);
        evas_object_del(scene.root);
        evas_object_del(scene.image);
    }
    stage.settle();
    EXPECT_EQ(stage.pixel(960, 1000), 0u);
}

TEST_F(DisclaimerTest, AMissingPictureLeavesTheBoxEmpty)
{
    Stage stage(1920, 1080);
    DisclaimerScene scene(stage.window(), false, "/nowhere");
    scene.show(false);
    stage.settle();
    EXPECT_EQ(stage.pixel(960, 1000), 0u);
    elm_velt_imagebox_file_set(scene.image, nullptr);
    elm_velt_imagebox_file_set(
        scene.image, (resource_dir() + "/ostrel_demo/player_img_china_disclaimer.png").c_str());
    stage.settle();
    EXPECT_NE(stage.pixel(960, 1000), 0u);
}

TEST_F(DisclaimerTest, ALayoutPlacesOnAGridOfNineThatMirrors)
{
    for (const bool mirrored : {false, true}) {
        SCOPED_TRACE(mirrored ? "right to left" : "left to right");
        Stage stage(1920, 1080);
        elm_config_mirrored_set(mirrored ? EINA_TRUE : EINA_FALSE);
        Evas_Object *root = add_root_layout(stage);
        elm_velt_layout_type_set(root, 1);
        Evas_Object *item = elm_velt_imagebox_add(root);
        elm_velt_object_resize_policy_set(item, 4, 4);
        elm_velt_layout_item_append(root, item, 200, 100);
        evas_object_show(root);
        stage.settle();
        for (int align = 1; align <= 9; ++align) {
            elm_velt_layout_align_set(item, align);
            elm_velt_root_layout_render(root);
            int column = (align - 1) % 3;
            column = mirrored ? 2 - column : column;
            EXPECT_TRUE(
                equals(Stage::geometry(item), column * 860, (align - 1) / 3 * 490, 200, 100))
                << align;
        }
    }
}

TEST_F(DisclaimerTest, AFillingItemTakesTheRoomWithinItsLimits)
{
    Stage stage(1920, 1080);
    Evas_Object *root = add_root_layout(stage);
    elm_velt_layout_align_set(root, 7);
    Evas_Object *item = elm_velt_imagebox_add(root);
    elm_velt_object_resize_policy_set(item, 1, 1);
    elm_velt_layout_item_append(root, item, 10, 10);
    evas_object_show(root);
    stage.settle();
    EXPECT_TRUE(equals(Stage::geometry(item), 0, 0, 1920, 1080));
    elm_velt_object_size_max_set(item, 500, 400);
    stage.settle();
    EXPECT_TRUE(equals(Stage::geometry(item), 0, 680, 500, 400));
    elm_velt_object_size_min_set(item, 600, 300);
    stage.settle();
    EXPECT_TRUE(equals(Stage::geometry(item), 0, 680, 600, 400));
}

TEST_F(DisclaimerTest, AnItemMayMoveToAnotherLayout)
{
    Stage stage(1920, 1080);
    Evas_Object *first = elm_velt_layout_add(stage.window());
    Evas_Object *second = elm_velt_layout_add(stage.window());
    evas_object_resize(second, 1920, 1080);
    Evas_Object *item = elm_velt_imagebox_add(stage.window());
    elm_velt_layout_item_append(first, item, 50, 50);
    elm_box_unpack(first, item);
    elm_velt_layout_item_append(second, item, 60, 60);
    evas_object_del(first);
    stage.settle();
    evas_object_resize(item, 300, 200);
    elm_velt_layout_align_set(item, 9);
    elm_velt_root_layout_render(second);
    EXPECT_TRUE(equals(Stage::geometry(item), 1620, 880, 300, 200));
}
