#include "player_test.h"

using testing::ElementsAre;

namespace {

constexpr auto LANDSCAPE_TIMER = ROTATION_STATUS_LANDSCAPE_TIMER;
constexpr auto PORTRAIT_TIMER = ROTATION_STATUS_PORTRAIT_TIMER;
constexpr auto TIMER_RESET = ROTATION_STATUS_TIMER_RESET;

class RotationTimerTest : public PlayerTest {
  protected:
    RotationTimerTest()
    {
        make_window();
        fake_.rotator.supported = true;
        const std::string prefix = "TV_SID_ZAVO_MIX_CAAUG_";
        fake_.system.texts = {
            {prefix + "LANDSCAPE_TIMER_A_MINS", "Landscape: <<A>> min"},
            {prefix + "LANDSCAPE_TIMER_A_MINS_B_SEC", "Landscape: <<A>> min <<B>> s"},
            {prefix + "PORTRAIT_TIMER_A_MINS", "Portrait: <<A>> min"},
            {prefix + "PORTRAIT_TIMER_A_MINS_B_SEC", "Portrait: <<A>> min <<B>> s"},
            {prefix + "RESET_P_L_TIMER_A_MINS", "Both: <<A>> min"},
            {"COM_ID_QUENDIRA_ROTATION", "Rotation"},
            {"SID_ON", "On"},
            {"SID_OFF", "Off"},
        };
    }

    std::string toast_text()
    {
        return player_.m_pNotificationLabel == nullptr
                   ? "no toast"
                   : fake_.widgets.text(player_.m_pNotificationLabel);
    }

    static Lines toast_lines(const std::string &toast, const std::string &text)
    {
        return {"elm_velt_popup_add(window#1)",
                "elm_velt_popup_style_set(" + toast + ", 4)",
                "elm_popup_orient_set(" + toast + ", CENTER)",
                "elm_velt_popup_toast_text_set(" + toast + ", \"" + text + "\")",
                "elm_popup_timeout_set(" + toast + ", 3)",
                "evas_object_show(" + toast + ")"};
    }
};

// ---- m_UpdateNotificationLabel ----

TEST_F(RotationTimerTest, AToastShowsItsTextForThreeSeconds)
{
    EXPECT_TRUE(player_.m_UpdateNotificationLabel("hello"));

    EXPECT_EQ(fake_.lines(),
              join({{"I \"strContent = hello\"", "I \"\""}, toast_lines("popup#1", "hello")}));
    EXPECT_EQ(fake_.widgets.timeout(player_.m_pNotificationLabel), 3.0);
    EXPECT_EQ(fake_.widgets.fire_smart(player_.m_pNotificationLabel, "timeout"), 0)
        << "nobody follows the toast's end";
}

TEST_F(RotationTimerTest, AToastReplacesTheOneBefore)
{
    player_.m_UpdateNotificationLabel("first");
    fake_.forget();

    EXPECT_TRUE(player_.m_UpdateNotificationLabel("second"));

    EXPECT_EQ(fake_.calls(),
              join({{"evas_object_del(popup#1)"}, toast_lines("popup#2", "second")}));
}

TEST_F(RotationTimerTest, AToastClosesTheOptionsPopupFirst)
{
    open_popup();

    player_.m_UpdateNotificationLabel("hello");

    EXPECT_EQ(fake_.calls(),
              join({{"evas_object_hide(popup#1)", "app_context_manager_unset_epop_block()",
                     "ecore_timer_add(0.5)"},
                    toast_lines("popup#2", "hello")}));
}

TEST_F(RotationTimerTest, WithoutAToastObjectTheMessageIsDropped)
{
    player_.m_UpdateNotificationLabel("first");
    fake_.fail("elm_velt_popup_add");
    fake_.forget();

    EXPECT_TRUE(player_.m_UpdateNotificationLabel("second"));

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"strContent = second\"", "I \"\"", "evas_object_del(popup#1)",
                         "elm_velt_popup_add(window#1)"));
    EXPECT_EQ(player_.m_pNotificationLabel, nullptr);
}

// ---- m_ShowPopup ----

struct Interval {
    int index;
    const char *text;
};

class IntervalTextTest : public RotationTimerTest, public testing::WithParamInterface<Interval> {};

TEST_P(IntervalTextTest, TheLandscapeIntervalIsTold)
{
    player_.m_ShowPopup(LANDSCAPE_TIMER, GetParam().index);

    EXPECT_EQ(toast_text(), std::string("Landscape: ") + GetParam().text);
}

TEST_P(IntervalTextTest, ThePortraitIntervalIsTold)
{
    player_.m_ShowPopup(PORTRAIT_TIMER, GetParam().index);

    EXPECT_EQ(toast_text(), std::string("Portrait: ") + GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Indices, IntervalTextTest,
                         testing::Values(Interval{0, "5 min"}, Interval{1, "5 min 30 s"},
                                         Interval{2, "6 min"}, Interval{3, "6 min 30 s"},
                                         Interval{4, "7 min"}, Interval{5, "7 min 30 s"},
                                         Interval{6, "8 min"}, Interval{7, "9 min"},
                                         Interval{8, "10 min"}, Interval{9, "15 min"}));

TEST_F(RotationTimerTest, AStepIsLoggedAndToasted)
{
    player_.m_ShowPopup(PORTRAIT_TIMER, 1);

    EXPECT_EQ(fake_.lines(), join({{"I \"enZavoMode = 1 iTimerIndex = 1\"",
                                    "I \"strResult: Portrait: 5 min 30 s\"",
                                    "I \"strContent = Portrait: 5 min 30 s\"", "I \"\""},
                                   toast_lines("popup#1", "Portrait: 5 min 30 s")}));
    EXPECT_THAT(fake_.of({"dgettext"}),
                LinesAre("dgettext(\"ostrel-demo-player-tv\", "
                         "\"TV_SID_ZAVO_MIX_CAAUG_PORTRAIT_TIMER_A_MINS_B_SEC\")"));
}

TEST_F(RotationTimerTest, AResetTellsTheMinutesOnly)
{
    player_.m_ShowPopup(TIMER_RESET, 0);
    EXPECT_EQ(toast_text(), "Both: 5 min");

    player_.m_ShowPopup(TIMER_RESET, 3);
    EXPECT_EQ(toast_text(), "Both: 6 min");
}

TEST_F(RotationTimerTest, AnyOtherStatusShowsNothingAndLeavesThePopupOpen)
{
    open_popup();

    player_.m_ShowPopup(static_cast<ENDEMO_ROTATION_STATUS>(3), 0);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"enZavoMode = 3 iTimerIndex = 0\""));
    EXPECT_TRUE(fake_.widgets.visible(player_.m_pPopup));
}

// ---- m_CreateRotationOnOffLabel ----

TEST_F(RotationTimerTest, TimedRotationIsSwitchedOn)
{
    player_.m_CreateRotationOnOffLabel();

    EXPECT_TRUE(player_.m_bRotationAutoMode);
    EXPECT_EQ(fake_.lines(), join({{"I \"\"", writes(ConfigKey::ROTATION_AUTO_MODE, 1),
                                    "I \"strContent = Rotation On\"", "I \"\""},
                                   toast_lines("popup#1", "Rotation On")}));
}

TEST_F(RotationTimerTest, TimedRotationIsSwitchedOff)
{
    player_.m_bRotationAutoMode = true;

    player_.m_CreateRotationOnOffLabel();

    EXPECT_FALSE(player_.m_bRotationAutoMode);
    EXPECT_EQ(fake_.lines(), join({{"I \"\"", writes(ConfigKey::ROTATION_AUTO_MODE, 0),
                                    "I \"strContent = Rotation Off\"", "I \"\""},
                                   toast_lines("popup#1", "Rotation Off")}));
}

TEST_F(RotationTimerTest, TheFlagChangesEvenIfTheKeyCannotBeWritten)
{
    fake_.fail("vconf_set_int");

    player_.m_CreateRotationOnOffLabel();

    EXPECT_TRUE(player_.m_bRotationAutoMode);
    EXPECT_EQ(toast_text(), "Rotation On");
}

TEST_F(RotationTimerTest, ALongTranslationIsCutAt127Characters)
{
    fake_.system.texts["COM_ID_QUENDIRA_ROTATION"] = std::string(200, 'x');

    player_.m_CreateRotationOnOffLabel();

    EXPECT_EQ(toast_text(), std::string(127, 'x'));
}

// ---- m_UpdateZavoTimer ----

class ZavoIntervalTest : public RotationTimerTest,
                         public testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(ZavoIntervalTest, TheTimerTakesTheIntervalOfTheIndex)
{
    player_.m_bRotationAutoMode = true;
    fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = GetParam().first;
    fake_.store.values[ConfigKey::PORTRAIT_TIMER] = (GetParam().first + 1) % 10;
    const std::string seconds = std::to_string(GetParam().second);

    player_.m_UpdateZavoTimer();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"set timer " + seconds + " sec\"",
                                        "ecore_timer_add(" + seconds + ")"));
}

INSTANTIATE_TEST_SUITE_P(Table, ZavoIntervalTest,
                         testing::Values(std::make_pair(0, 300), std::make_pair(1, 330),
                                         std::make_pair(2, 360), std::make_pair(3, 390),
                                         std::make_pair(4, 420), std::make_pair(5, 450),
                                         std::make_pair(6, 480), std::make_pair(7, 540),
                                         std::make_pair(8, 600), std::make_pair(9, 900)));

TEST_F(RotationTimerTest, InPortraitThePortraitIntervalIsTaken)
{
    player_.m_bRotationAutoMode = true;
    fake_.store.values[ConfigKey::PORTRAIT_TIMER] = 9;
    set_panel(ROTATION_TYPE_PORTRAIT_REVERSE);

    player_.m_UpdateZavoTimer();

    EXPECT_THAT(fake_.calls(), LinesAre("ecore_timer_add(900)"));
    EXPECT_THAT(fake_.of({"vconf_get_int"}),
                LinesAre("vconf_get_int(\"db/ostrel-demo-player-tv/portrait_timer\")"));
}

TEST_F(RotationTimerTest, AnUnreadableIndexMeansFiveMinutes)
{
    player_.m_bRotationAutoMode = true;
    fake_.store.values.erase(ConfigKey::LANDSCAPE_TIMER);

    player_.m_UpdateZavoTimer();

    EXPECT_THAT(fake_.calls(), LinesAre("ecore_timer_add(300)"));
}

// Other programs may write the keys as well.
TEST_F(RotationTimerTest, AnIndexOutsideTheTableMeansFiveMinutes)
{
    player_.m_bRotationAutoMode = true;
    for (const int index : {-1, 10, INT32_MAX, INT32_MIN}) {
        fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = index;
        player_.m_UpdateZavoTimer();
        EXPECT_THAT(fake_.loop.timers(), ElementsAre(300.0)) << index;

        player_.m_ShowPopup(LANDSCAPE_TIMER, index);
        EXPECT_EQ(toast_text(), "Landscape: 5 min") << index;
    }
}

TEST_F(RotationTimerTest, SwitchedOffThePendingTimerGoes)
{
    player_.m_bRotationAutoMode = true;
    player_.m_UpdateZavoTimer();
    player_.m_bRotationAutoMode = false;
    fake_.forget();

    player_.m_UpdateZavoTimer();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "ecore_timer_del(timer#1)"));
    EXPECT_EQ(player_.m_pZavoTimer, nullptr);
}

TEST_F(RotationTimerTest, WithoutARotatorNoTimerIsArmedAndTheOldOneGoes)
{
    player_.m_bRotationAutoMode = true;
    player_.m_UpdateZavoTimer();
    fake_.rotator.supported = false;
    fake_.forget();

    player_.m_UpdateZavoTimer();

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "ecore_timer_del(timer#1)"));
}

TEST_F(RotationTimerTest, AnUpdateReplacesTheTimer)
{
    player_.m_bRotationAutoMode = true;
    player_.m_UpdateZavoTimer();
    fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = 2;
    fake_.forget();

    player_.m_UpdateZavoTimer();

    EXPECT_THAT(fake_.calls(), LinesAre("ecore_timer_del(timer#1)", "ecore_timer_add(360)"));
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(360.0));
}

// ---- m_OnZavoTimeOutCB ----

TEST_F(RotationTimerTest, TheTimerTurnsThePanelAndIsGoneWithTheTurn)
{
    player_.m_bRotationAutoMode = true;
    player_.m_vdcPortraitVideos.emplace_back();
    player_.m_UpdateZavoTimer();
    fake_.forget();

    fake_.loop.advance(300.0);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"\"", "ecore_timer_del(timer#1)",
                                        writes(ConfigKey::FILE_MODE, 2), "I \"\"",
                                        "VirtualKey_Send_KeyCode(569, 2)"));
    EXPECT_EQ(player_.m_pZavoTimer, nullptr);
}

TEST_F(RotationTimerTest, TheTimerFiresAgainUntilSomethingDeletesIt)
{
    player_.m_bRotationAutoMode = true;
    player_.m_UpdateZavoTimer();
    fake_.rotator.supported = false;
    fake_.forget();

    fake_.loop.advance(900.0);

    // Entry lines of the callback and of the refused rotation, three times.
    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "I \"\"", "I \"\"", "I \"\"", "I \"\"", "I \"\""));
    EXPECT_THAT(fake_.loop.timers(), ElementsAre(300.0));
}

TEST_F(RotationTimerTest, ATimeOutWithoutAControllerRenews)
{
    EXPECT_EQ(CPlayerInspector::m_OnZavoTimeOutCB(nullptr), ECORE_CALLBACK_RENEW);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

} // namespace
