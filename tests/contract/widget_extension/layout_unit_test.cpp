// Layout units, and sizes that follow the panel's pixels alone.

#include <cmath>

#include "widget_test.h"

using namespace testing;

namespace {

class LayoutUnitTest : public WidgetTest {};

const std::vector<std::string> THREE_ROWS = {"Off", "Play all", "City lights"};

Eina_Rectangle popup_place(const PanelSize &panel)
{
    return panel_of(ShownPopup(THREE_ROWS, 0, panel).scene.popup);
}

} // namespace

TEST_F(LayoutUnitTest, AUnitIsThePanelsLongerSideDividedBy240)
{
    const struct {
        int width, height, pixels;
    } panels[] = {{1280, 720, 640}, {1920, 1080, 960}, {3840, 2160, 1920}, {1080, 1920, 960}};
    for (const auto &panel : panels) {
        Stage stage(panel.width, panel.height);
        EXPECT_EQ(elm_velt_unit_to_pixel(120.0), panel.pixels)
            << panel.width << "x" << panel.height;
    }
}

TEST_F(LayoutUnitTest, UnitsAreRoundedToTheNearestPixel)
{
    Stage stage(1280, 720);
    EXPECT_EQ(elm_velt_unit_to_pixel(1.0), 5);
    EXPECT_EQ(elm_velt_unit_to_pixel(55.0), 293);
    EXPECT_EQ(elm_velt_unit_to_pixel(0.0), 0);
    EXPECT_EQ(elm_velt_unit_to_pixel(-3.0), -16);
    EXPECT_EQ(elm_velt_unit_to_pixel(NAN), 0);
}

TEST_F(LayoutUnitTest, WithoutAWindowAUnitIsThatOfAFullHdPanel)
{
    EXPECT_EQ(elm_velt_unit_to_pixel(1.0), 8);
}

TEST_F(LayoutUnitTest, UnitsFollowAWindowThatIsResized)
{
    Stage stage(1280, 720);
    evas_object_resize(stage.window(), 1080, 1920);
    stage.settle();
    EXPECT_EQ(elm_velt_unit_to_pixel(1.0), 8);
}

TEST_F(LayoutUnitTest, ThePopupTakesTheSameShareOfEveryPanel)
{
    const Eina_Rectangle full = popup_place(FULL_HD);
    const Eina_Rectangle small = popup_place({1280, 720});
    const Eina_Rectangle large = popup_place({3840, 2160});
    EXPECT_NEAR(small.w * 1.5, full.w, 4.0);
    EXPECT_NEAR(small.h * 1.5, full.h, 6.0);
    EXPECT_NEAR(large.w / 2.0, full.w, 2.0);
    EXPECT_NEAR(large.h / 2.0, full.h, 2.0);
}

TEST_F(LayoutUnitTest, ElementarysOwnScaleChangesNothing)
{
    const Eina_Rectangle usual = popup_place(FULL_HD);
    const double scale = elm_config_scale_get();
    elm_config_scale_set(1.7);
    const Eina_Rectangle scaled = popup_place(FULL_HD);
    elm_config_scale_set(scale);
    EXPECT_NEAR(scaled.w, usual.w, 2.0);
    EXPECT_NEAR(scaled.h, usual.h, 2.0);
}

TEST_F(LayoutUnitTest, WidgetsAreScaledWithAWindowThatIsResized)
{
    const Eina_Rectangle usual = popup_place(FULL_HD);
    Stage stage(1280, 720);
    PopupScene scene(stage.window(), "Demo", THREE_ROWS, 0);
    evas_object_resize(stage.window(), 1920, 1080);
    scene.show();
    stage.settle();
    // The list keeps the size in pixels that it was given; title and button grow.
    EXPECT_NEAR(panel_of(scene.popup).h - 293, usual.h - 440, 4.0);
}

TEST_F(LayoutUnitTest, TheManagerCanBeEndedTwiceAndStartedAgain)
{
    Stage stage(1920, 1080);
    elm_velt_manager_fini();
    elm_velt_manager_fini();
    EXPECT_EQ(elm_velt_unit_to_pixel(1.0), 8);
    EXPECT_EQ(elm_velt_manager_init(stage.window()), 0);
    EXPECT_EQ(elm_velt_manager_init(nullptr), 0);
}
