// The disclaimer in every situation: feature on and off, overlay there, half built or missing,
// panel in each position, each failure.

#include "player_lines.h"

using testing::Bool;
using testing::Combine;
using testing::Range;
using testing::Values;

namespace {

bool is_upright(int type)
{
    return type == 1 || type == 3;
}

/** How much of the overlay is there. */
enum class Overlay { None, Half, Full };

struct DisclaimerPicture {
    std::string name;
    std::string path;
    int width;
    int height;
};

const DisclaimerPicture &disclaimer_picture(bool upright)
{
    static const DisclaimerPicture landscape = {"ostrel_demo/player_img_china_disclaimer.png",
                                                "/res/landscape.png", 240, 135};
    static const DisclaimerPicture portrait = {
        "ostrel_demo/player_img_china_disclaimer_portrait.png", "/res/portrait.png", 135, 240};
    return upright ? portrait : landscape;
}

void install_disclaimer_pictures(fake::System &system)
{
    for (const bool upright : {false, true}) {
        const DisclaimerPicture &picture = disclaimer_picture(upright);
        system.resources[picture.name] = picture.path;
    }
}

/**
 * Building the overlay anew.
 *
 * @param overlay what there is of the one before, which was the first
 * @param failing the platform's function that fails, "resources" when no picture is found
 */
Lines disclaimer_creation_lines(bool on, Overlay overlay, bool upright, const std::string &failing)
{
    Lines lines;
    if (!on)
        return lines;
    if (overlay != Overlay::None)
        lines += "evas_object_del(layout#1)";
    if (overlay == Overlay::Full)
        lines += "evas_object_del(imagebox#1)";
    lines += "elm_velt_layout_add(window#1)";
    if (failing == "elm_velt_layout_add")
        return lines += "E \"NULL == m_pDisclaimerRootLayout\"";
    const std::string root = overlay == Overlay::None ? "layout#1" : "layout#2";
    lines += {"elm_velt_layout_type_set(" + root + ", 1)",
              "evas_object_size_hint_weight_set(" + root + ", 1, 1)",
              "elm_win_resize_object_add(window#1, " + root + ")",
              "elm_velt_layout_align_set(" + root + ", 8)", "elm_velt_imagebox_add(" + root + ")"};
    if (failing == "elm_velt_imagebox_add")
        return lines += "E \"NULL == m_pDisclaimerImageBox\"";
    const std::string number = overlay == Overlay::Full ? "#2" : "#1";
    const std::string box = "imagebox" + number;
    const DisclaimerPicture &picture = disclaimer_picture(upright);
    const bool found = failing != "resources";
    const std::string file = found ? picture.path : "";
    const std::string width = std::to_string(picture.width * 8);
    const std::string height = std::to_string(picture.height * 8);
    return lines +=
           {"I \"add[" + file + "]\"", "elm_velt_imagebox_file_set(" + box + ", \"" + file + "\")",
            "elm_velt_imagebox_responsive_rule_set(" + box + ", 1)",
            "elm_object_focus_allow_set(image" + number + ", false)",
            "elm_velt_layout_align_set(" + box + ", 8)",
            "elm_velt_object_resize_policy_set(" + box + ", 4, 4)",
            "elm_velt_object_size_max_set(" + box + ", " + width + ", " + height + ")",
            // The minimum has its two values swapped.
            "elm_velt_object_size_min_set(" + box + ", " + height + ", " + width + ")",
            "elm_velt_layout_item_append(" + root + ", " + box + ", " + width + ", " + height + ")",
            "evas_object_hide(" + root + ")", "evas_object_hide(" + box + ")"};
}

class DisclaimerTranscriptTest : public PlayerTest {
  protected:
    DisclaimerTranscriptTest()
    {
        make_window();
        fake_.system.has_disclaimer = true;
        install_disclaimer_pictures(fake_.system);
    }

    void build(Overlay overlay)
    {
        if (overlay == Overlay::Half)
            fake_.fail("elm_velt_imagebox_add");
        if (overlay != Overlay::None)
            player_.m_CreateDisclaimer();
        fake_.forget();
    }

    // What is on the screen of an overlay; "null" for what is missing.
    static std::string layout(Overlay overlay)
    {
        return overlay == Overlay::None ? "null" : "layout#1";
    }
    static std::string image_box(Overlay overlay)
    {
        return overlay == Overlay::Full ? "imagebox#1" : "null";
    }
};

// ---- m_CreateDisclaimer ----

class CreateDisclaimerTest
    : public DisclaimerTranscriptTest,
      public testing::WithParamInterface<std::tuple<bool, int, Overlay, std::string>> {};

TEST_P(CreateDisclaimerTest, IsBuiltHiddenAsFarAsItGoes)
{
    const auto &[on, type, overlay, failing] = GetParam();
    build(overlay);
    Ecore_Timer *timer = player_.m_pDisclaimerTimer =
        ecore_timer_add(5.0, CPlayerInspector::m_OnDisclaimerTimeOutCB, controller_.get());
    set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type));
    fake_.system.has_disclaimer = on;
    if (failing == "resources")
        fake_.system.resources.clear();
    else if (on && failing != "nothing")
        fake_.fail(failing);

    player_.m_CreateDisclaimer();

    EXPECT_EQ(fake_.lines(), disclaimer_creation_lines(on, overlay, is_upright(type), failing));
    const bool has_layout = on ? failing != "elm_velt_layout_add" : overlay != Overlay::None;
    const bool has_box =
        on ? has_layout && failing != "elm_velt_imagebox_add" : overlay == Overlay::Full;
    EXPECT_EQ(player_.m_pDisclaimerRootLayout != nullptr, has_layout);
    EXPECT_EQ(player_.m_pDisclaimerImageBox != nullptr, has_box);
    EXPECT_EQ(player_.m_pDisclaimerTimer, timer) << "a pending timer is left alone";
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CreateDisclaimerTest,
    Combine(Bool(), Range(0, 4), Values(Overlay::None, Overlay::Half, Overlay::Full),
            Values("nothing", "elm_velt_layout_add", "elm_velt_imagebox_add", "resources")));

// ---- m_ShowDisclaimer ----

class ShowDisclaimerTest
    : public DisclaimerTranscriptTest,
      public testing::WithParamInterface<std::tuple<bool, int, int, Overlay, bool>> {};

TEST_P(ShowDisclaimerTest, IsShownInThePositionOfTheMoment)
{
    const auto &[on, type_before, type, overlay, resources] = GetParam();
    set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type_before));
    build(overlay);
    set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type));
    fake_.system.has_disclaimer = on;
    if (!resources)
        fake_.system.resources.clear();
    const bool shown = on && overlay == Overlay::Full;
    Lines expected;
    if (shown) {
        const DisclaimerPicture &picture = disclaimer_picture(is_upright(type));
        const std::string file = resources ? picture.path : "";
        expected += {"elm_velt_imagebox_file_set(imagebox#1, \"" + file + "\")",
                     "evas_object_resize(imagebox#1, " + std::to_string(picture.width) + ", " +
                         std::to_string(picture.height) + ")",
                     "elm_velt_root_layout_render(layout#1)",
                     "evas_object_show(layout#1)",
                     "evas_object_show(imagebox#1)",
                     "ecore_timer_add(5, controller)"};
    } else if (on) {
        expected += "E \"layout or imagebox is NULL\"";
    }

    player_.m_ShowDisclaimer();

    EXPECT_EQ(fake_.lines(), expected);
    EXPECT_EQ(player_.m_pDisclaimerTimer != nullptr, shown);
}

INSTANTIATE_TEST_SUITE_P(Cases, ShowDisclaimerTest,
                         Combine(Bool(), Values(0, 1), Range(0, 4),
                                 Values(Overlay::None, Overlay::Half, Overlay::Full), Bool()));

// ---- m_HideDisclaimer, m_DestroyDisclaimer, m_OnDisclaimerTimeOutCB ----

class EndDisclaimerTest : public DisclaimerTranscriptTest,
                          public testing::WithParamInterface<std::tuple<bool, Overlay, bool>> {
  protected:
    EndDisclaimerTest()
    {
        const auto &[on, overlay, pending] = GetParam();
        build(overlay);
        if (pending)
            player_.m_pDisclaimerTimer =
                ecore_timer_add(5.0, CPlayerInspector::m_OnDisclaimerTimeOutCB, controller_.get());
        fake_.system.has_disclaimer = on;
        fake_.forget();
    }
};

TEST_P(EndDisclaimerTest, HidingTakesTheTimerAlong)
{
    const auto &[on, overlay, pending] = GetParam();
    Lines expected;
    if (on) {
        expected += "evas_object_hide(" + layout(overlay) + ")";
        expected += "evas_object_hide(" + image_box(overlay) + ")";
        if (pending)
            expected += "ecore_timer_del(timer#1)";
    }

    player_.m_HideDisclaimer();

    EXPECT_EQ(fake_.lines(), expected);
    EXPECT_EQ(player_.m_pDisclaimerTimer != nullptr, pending && !on);
}

TEST_P(EndDisclaimerTest, DestroyingLeavesTheTimer)
{
    const auto &[on, overlay, pending] = GetParam();
    Lines expected;
    if (on && overlay != Overlay::None)
        expected += "evas_object_del(layout#1)";
    if (on && overlay == Overlay::Full)
        expected += "evas_object_del(imagebox#1)";

    player_.m_DestroyDisclaimer();

    EXPECT_EQ(fake_.lines(), expected);
    EXPECT_EQ(player_.m_pDisclaimerRootLayout != nullptr, !on && overlay != Overlay::None);
    EXPECT_EQ(player_.m_pDisclaimerImageBox != nullptr, !on && overlay == Overlay::Full);
    EXPECT_EQ(player_.m_pDisclaimerTimer != nullptr, pending);
}

TEST_P(EndDisclaimerTest, ATimeOutHidesWhateverTheFeatureSays)
{
    const auto &[on, overlay, pending] = GetParam();
    Lines expected = {"evas_object_hide(" + image_box(overlay) + ")",
                      "evas_object_hide(" + layout(overlay) + ")"};
    if (pending)
        expected += "ecore_timer_del(timer#1)";
    expected += "I \"time out, evas hide, delete timer\"";

    EXPECT_EQ(CPlayerInspector::m_OnDisclaimerTimeOutCB(controller_.get()), ECORE_CALLBACK_CANCEL);

    EXPECT_EQ(fake_.lines(), expected);
    EXPECT_EQ(player_.m_pDisclaimerTimer, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Cases, EndDisclaimerTest,
                         Combine(Bool(), Values(Overlay::None, Overlay::Half, Overlay::Full),
                                 Bool()));

} // namespace
