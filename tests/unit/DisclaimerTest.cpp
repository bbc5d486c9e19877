#include "player_fixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char LANDSCAPE_NAME[] = "ostrel_demo/player_img_china_disclaimer.png";
constexpr char PORTRAIT_NAME[] = "ostrel_demo/player_img_china_disclaimer_portrait.png";

class DisclaimerTest : public PlayerTest {
  protected:
    DisclaimerTest()
    {
        make_window();
        fake_.system.has_disclaimer = true;
        fake_.system.resources = {{LANDSCAPE_NAME, "/res/landscape.png"},
                                  {PORTRAIT_NAME, "/res/portrait.png"}};
    }

    void build()
    {
        player_.m_CreateDisclaimer();
        fake_.forget();
    }

    bool shown()
    {
        return fake_.widgets.visible(player_.m_pDisclaimerRootLayout) &&
               fake_.widgets.visible(player_.m_pDisclaimerImageBox);
    }
};

// ---- m_CreateDisclaimer ----

TEST_F(DisclaimerTest, TheOverlayIsBuiltHidden)
{
    player_.m_CreateDisclaimer();

    EXPECT_THAT(fake_.lines(),
                LinesAre("elm_velt_layout_add(window#1)", "elm_velt_layout_type_set(layout#1, 1)",
                         "evas_object_size_hint_weight_set(layout#1, 1, 1)",
                         "elm_win_resize_object_add(window#1, layout#1)",
                         "elm_velt_layout_align_set(layout#1, 8)",
                         "elm_velt_imagebox_add(layout#1)", "I \"add[/res/landscape.png]\"",
                         "elm_velt_imagebox_file_set(imagebox#1, \"/res/landscape.png\")",
                         "elm_velt_imagebox_responsive_rule_set(imagebox#1, 1)",
                         "elm_object_focus_allow_set(image#1, false)",
                         "elm_velt_layout_align_set(imagebox#1, 8)",
                         "elm_velt_object_resize_policy_set(imagebox#1, 4, 4)",
                         // 240 by 135 units; the minimum has its two values swapped.
                         "elm_velt_object_size_max_set(imagebox#1, 1920, 1080)",
                         "elm_velt_object_size_min_set(imagebox#1, 1080, 1920)",
                         "elm_velt_layout_item_append(layout#1, imagebox#1, 1920, 1080)",
                         "evas_object_hide(layout#1)", "evas_object_hide(imagebox#1)"));
    EXPECT_FALSE(shown());
}

TEST_F(DisclaimerTest, APendingHideTimerIsLeftAlone)
{
    build();
    player_.m_ShowDisclaimer();
    Ecore_Timer *timer = player_.m_pDisclaimerTimer;

    build();

    EXPECT_EQ(player_.m_pDisclaimerTimer, timer);
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(5.0));
}

// ---- m_ShowDisclaimer ----

TEST_F(DisclaimerTest, ShowingSetsThePictureSizeAndTimer)
{
    build();

    player_.m_ShowDisclaimer();

    EXPECT_THAT(fake_.calls(),
                LinesAre("elm_velt_imagebox_file_set(imagebox#1, \"/res/landscape.png\")",
                         "evas_object_resize(imagebox#1, 240, 135)",
                         "elm_velt_root_layout_render(layout#1)", "evas_object_show(layout#1)",
                         "evas_object_show(imagebox#1)", "ecore_timer_add(5, controller)"));
    EXPECT_THAT(without(fake_.logs(), {"I \"bShowDisclaimer", "E \"In Landscape"}),
                LinesAre("I \"ostrel_demo/player_img_china_disclaimer.png "
                         "path[/res/landscape.png]\""));
    EXPECT_TRUE(shown());
    EXPECT_NE(player_.m_pDisclaimerTimer, nullptr);
}

TEST_F(DisclaimerTest, APanelTurnedMeanwhileShowsThePortraitPicture)
{
    build();
    set_panel(ROTATION_TYPE_PORTRAIT);

    player_.m_ShowDisclaimer();

    EXPECT_THAT(
        fake_.of({"elm_velt_imagebox_file_set", "evas_object_resize", "elm_velt_object_size"}),
        LinesAre("elm_velt_imagebox_file_set(imagebox#1, \"/res/portrait.png\")",
                 "evas_object_resize(imagebox#1, 135, 240)"));
}

// ---- m_OnDisclaimerTimeOutCB ----

TEST_F(DisclaimerTest, AfterFiveSecondsTheOverlayIsHidden)
{
    build();
    player_.m_ShowDisclaimer();
    fake_.forget();

    fake_.loop.advance(4.9);
    EXPECT_TRUE(shown());
    fake_.loop.advance(0.1);

    EXPECT_THAT(fake_.lines(),
                LinesAre("evas_object_hide(imagebox#1)", "evas_object_hide(layout#1)",
                         "ecore_timer_del(timer#1)", "I \"time out, evas hide, delete timer\""));
    EXPECT_EQ(player_.m_pDisclaimerTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(DisclaimerTest, TwoShowsWithinFiveSecondsEndWithTheFirst)
{
    build();
    player_.m_ShowDisclaimer();
    fake_.loop.advance(3.0);
    player_.m_ShowDisclaimer();
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(5.0, 5.0));

    fake_.loop.advance(2.0);

    EXPECT_FALSE(shown());
    EXPECT_EQ(player_.m_pDisclaimerTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty()) << "the second timer is deleted, the first is over";
}

TEST_F(DisclaimerTest, ATimeOutWithoutAControllerDoesNothing)
{
    EXPECT_EQ(CPlayerInspector::m_OnDisclaimerTimeOutCB(nullptr), ECORE_CALLBACK_CANCEL);

    EXPECT_THAT(fake_.lines(), IsEmpty());
}

// ---- m_HideDisclaimer ----

TEST_F(DisclaimerTest, HidingCancelsTheTimer)
{
    build();
    player_.m_ShowDisclaimer();
    fake_.forget();

    player_.m_HideDisclaimer();

    EXPECT_THAT(fake_.lines(),
                LinesAre("evas_object_hide(layout#1)", "evas_object_hide(imagebox#1)",
                         "ecore_timer_del(timer#1)"));
    EXPECT_EQ(player_.m_pDisclaimerTimer, nullptr);
    EXPECT_FALSE(shown());
}

// ---- Feature off ----

TEST_F(DisclaimerTest, WithTheFeatureOffNothingIsTouched)
{
    fake_.system.has_disclaimer = false;

    player_.m_CreateDisclaimer();
    player_.m_ShowDisclaimer();
    player_.m_HideDisclaimer();
    player_.m_DestroyDisclaimer();

    EXPECT_THAT(fake_.lines(), IsEmpty());
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(DisclaimerTest, AFeatureSwitchedOffLeavesTheOverlayAsItIs)
{
    build();
    player_.m_ShowDisclaimer();
    fake_.system.has_disclaimer = false;
    fake_.forget();

    player_.m_CreateDisclaimer();
    player_.m_ShowDisclaimer();
    player_.m_HideDisclaimer();
    player_.m_DestroyDisclaimer();

    EXPECT_THAT(fake_.lines(), IsEmpty());
    EXPECT_TRUE(shown());
}

TEST_F(DisclaimerTest, AFeatureSwitchedOffDoesNotHoldTheTimeOutUp)
{
    build();
    player_.m_ShowDisclaimer();
    fake_.system.has_disclaimer = false;

    fake_.loop.advance(5.0);

    EXPECT_FALSE(shown());
    EXPECT_EQ(player_.m_pDisclaimerTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

} // namespace
