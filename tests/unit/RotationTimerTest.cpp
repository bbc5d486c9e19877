#include <utility>

#include "player_lines.h"

using testing::ElementsAre;
using testing::IsEmpty;

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
        fake_.system.texts = rotation_texts();
    }

    std::string toast_text()
    {
        return player_.m_pNotificationLabel == nullptr
                   ? "no toast"
                   : fake_.widgets.text(player_.m_pNotificationLabel);
    }

    void expect_switched(bool on)
    {
        player_.m_bRotationAutoMode = !on;

        player_.m_CreateRotationOnOffLabel();

        EXPECT_EQ(player_.m_bRotationAutoMode, on);
        const std::string text = on ? "Rotation On" : "Rotation Off";
        EXPECT_EQ(fake_.lines(), join({{"I \"\"", writes(ConfigKey::ROTATION_AUTO_MODE, on ? 1 : 0),
                                        "I \"strContent = " + text + "\"", "I \"\""},
                                       toast_lines("popup#1", text)}));
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

TEST_F(RotationTimerTest, AToastThatTimedOutStaysAnObjectUntilTheNext)
{
    player_.m_UpdateNotificationLabel("first");
    Evas_Object *toast = player_.m_pNotificationLabel;
    fake_.forget();

    fake_.loop.advance(60.0);

    EXPECT_EQ(player_.m_pNotificationLabel, toast);
    EXPECT_THAT(fake_.lines(), IsEmpty());
}

TEST_F(RotationTimerTest, AToastClosesAnOpenPopupAndThenReplacesTheOneBefore)
{
    player_.m_UpdateNotificationLabel("first");
    open_popup();

    player_.m_UpdateNotificationLabel("second");

    EXPECT_EQ(fake_.lines(), join({{"I \"strContent = second\""},
                                   popup_closing_lines("popup#2"),
                                   {"evas_object_del(popup#1)"},
                                   toast_lines("popup#3", "second")}));
}

TEST_F(RotationTimerTest, WithoutAToastTheOldOneIsGoneAllTheSame)
{
    player_.m_UpdateNotificationLabel("first");
    fake_.fail("elm_velt_popup_add");
    fake_.forget();

    EXPECT_TRUE(player_.m_UpdateNotificationLabel("second"));

    EXPECT_THAT(fake_.calls(),
                LinesAre("evas_object_del(popup#1)", "elm_velt_popup_add(window#1)"));
    EXPECT_EQ(player_.m_pNotificationLabel, nullptr);
}

// ---- m_ShowPopup ----

TEST_F(RotationTimerTest, EachIntervalIsToldInMinutesAndSeconds)
{
    const std::string intervals[] = {"5", "5:30", "6", "6:30", "7", "7:30", "8", "9", "10", "15"};
    int index = 0;
    for (const std::string &interval : intervals) {
        player_.m_ShowPopup(LANDSCAPE_TIMER, index);
        EXPECT_EQ(toast_text(), "L " + interval);
        player_.m_ShowPopup(PORTRAIT_TIMER, index);
        EXPECT_EQ(toast_text(), "P " + interval);
        ++index;
    }
}

TEST_F(RotationTimerTest, AStepIsLoggedAndToasted)
{
    player_.m_ShowPopup(PORTRAIT_TIMER, 1);

    EXPECT_EQ(fake_.lines(),
              join({{"I \"enZavoMode = 1 iTimerIndex = 1\"", "I \"strResult: P 5:30\"",
                     "I \"strContent = P 5:30\"", "I \"\""},
                    toast_lines("popup#1", "P 5:30")}));
    EXPECT_THAT(fake_.of({"dgettext"}),
                LinesAre("dgettext(\"ostrel-demo-player-tv\", "
                         "\"TV_SID_ZAVO_MIX_CAAUG_PORTRAIT_TIMER_A_MINS_B_SEC\")"));
}

TEST_F(RotationTimerTest, AResetTellsTheMinutesOnly)
{
    player_.m_ShowPopup(TIMER_RESET, 0);
    EXPECT_EQ(toast_text(), "Reset 5");

    player_.m_ShowPopup(TIMER_RESET, 3);
    EXPECT_EQ(toast_text(), "Reset 6");
}

TEST_F(RotationTimerTest, AnyOtherStatusShowsNothingAndLeavesThePopupOpen)
{
    open_popup();

    player_.m_ShowPopup(static_cast<ENDEMO_ROTATION_STATUS>(3), 0);
    player_.m_ShowPopup(static_cast<ENDEMO_ROTATION_STATUS>(-1), 0);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"enZavoMode = 3 iTimerIndex = 0\"",
                                        "I \"enZavoMode = -1 iTimerIndex = 0\""));
    EXPECT_TRUE(fake_.widgets.visible(player_.m_pPopup));
}

// ---- m_CreateRotationOnOffLabel ----

TEST_F(RotationTimerTest, TimedRotationIsSwitchedOn)
{
    expect_switched(true);
}

TEST_F(RotationTimerTest, TimedRotationIsSwitchedOff)
{
    expect_switched(false);
}

TEST_F(RotationTimerTest, ALongTranslationIsCutAt127Characters)
{
    fake_.system.texts["COM_ID_QUENDIRA_ROTATION"] = std::string(200, 'x');

    player_.m_CreateRotationOnOffLabel();

    EXPECT_EQ(toast_text(), std::string(127, 'x'));
}

TEST_F(RotationTimerTest, ASwitchThatCannotBeStoredIsMadeAllTheSame)
{
    fake_.fail("vconf_set_int");

    player_.m_CreateRotationOnOffLabel();

    EXPECT_TRUE(player_.m_bRotationAutoMode);
    EXPECT_EQ(toast_text(), "Rotation On");
}

// ---- m_UpdateZavoTimer ----

TEST_F(RotationTimerTest, TheIntervalOfThePresentOrientationIsArmed)
{
    player_.m_bRotationAutoMode = true;
    fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = 1;
    fake_.store.values[ConfigKey::PORTRAIT_TIMER] = 9;
    for (const auto &[type, seconds] :
         {std::make_pair(ROTATION_TYPE_LANDSCAPE, 330), std::make_pair(ROTATION_TYPE_PORTRAIT, 900),
          std::make_pair(ROTATION_TYPE_LANDSCAPE_REVERSE, 330),
          std::make_pair(ROTATION_TYPE_PORTRAIT_REVERSE, 900)}) {
        set_panel(type);

        player_.m_UpdateZavoTimer();

        const std::string text = std::to_string(seconds);
        EXPECT_EQ(fake_.lines().back(), "ecore_timer_add(" + text + ", controller)");
        EXPECT_THAT(fake_.logs(), testing::Contains("I \"set timer " + text + " sec\""));
        EXPECT_THAT(fake_.loop.timers(), ElementsAre(seconds)) << "the one before is replaced";
    }
}

TEST_F(RotationTimerTest, AnUnreadableIntervalIsFiveMinutes)
{
    player_.m_bRotationAutoMode = true;
    fake_.store.values.erase(ConfigKey::LANDSCAPE_TIMER);

    player_.m_UpdateZavoTimer();

    EXPECT_THAT(fake_.loop.timers(), ElementsAre(300.0));
}

TEST_F(RotationTimerTest, ASetThatLostItsRotatorLosesItsTimer)
{
    player_.m_bRotationAutoMode = true;
    player_.m_UpdateZavoTimer();
    fake_.rotator.supported = false;

    player_.m_UpdateZavoTimer();

    EXPECT_EQ(player_.m_pZavoTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
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
        EXPECT_EQ(toast_text(), "L 5") << index;
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

TEST_F(RotationTimerTest, WithoutContentForTheOtherOrientationTheTimerEndsItself)
{
    player_.m_bRotationAutoMode = true;
    player_.m_UpdateZavoTimer();
    fake_.forget();

    fake_.loop.advance(300.0);

    EXPECT_THAT(fake_.calls(), LinesAre("ecore_timer_del(timer#1)"));
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
