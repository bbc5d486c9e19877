// The ten intervals, each status, each position: what the toasts say, and when the timer is armed.

#include "player_lines.h"

using testing::Bool;
using testing::Combine;
using testing::Range;
using testing::Values;

namespace {

constexpr int SECONDS[] = {300, 330, 360, 390, 420, 450, 480, 540, 600, 900};

std::string translation_line(const std::string &id)
{
    return "dgettext(\"ostrel-demo-player-tv\", \"" + id + "\")";
}

enum class Popup { None, Open, Closing };

class RotationTimerTranscriptTest : public PlayerTest {
  protected:
    RotationTimerTranscriptTest()
    {
        make_window();
        fake_.system.texts = rotation_texts();
    }

    // Brings up what a toast finds: an earlier toast, the options popup.
    void prepare(bool earlier_toast, Popup popup)
    {
        earlier_ = earlier_toast;
        popup_ = popup;
        if (earlier_toast)
            player_.m_UpdateNotificationLabel("earlier");
        if (popup != Popup::None)
            open_popup();
        if (popup == Popup::Closing)
            player_.DestroyPopup();
        fake_.forget();
    }

    // What a toast leaves after prepare(). Popups and toasts are numbered together.
    Lines toast_lines(const std::string &text, bool made = true) const
    {
        Lines lines = {"I \"strContent = " + text + "\""};
        if (popup_ == Popup::None)
            lines += "I \"\"";
        else
            lines += popup_closing_lines(earlier_ ? "popup#2" : "popup#1",
                                         popup_ == Popup::Closing ? "timer#1" : "");
        if (earlier_)
            lines += "evas_object_del(popup#1)";
        const int number = 1 + (earlier_ ? 1 : 0) + (popup_ == Popup::None ? 0 : 1);
        const std::string toast = "popup#" + std::to_string(number);
        lines += "elm_velt_popup_add(window#1)";
        if (!made)
            return lines;
        return lines += toast_showing_lines(toast, text);
    }

  private:
    bool earlier_ = false;
    Popup popup_ = Popup::None;
};

// ---- m_UpdateNotificationLabel ----

class ToastTest : public RotationTimerTranscriptTest,
                  public testing::WithParamInterface<std::tuple<bool, Popup, bool>> {};

TEST_P(ToastTest, ReplacesWhatIsThereAndShowsItself)
{
    const auto [earlier, popup, made] = GetParam();
    prepare(earlier, popup);
    if (!made)
        fake_.fail("elm_velt_popup_add");

    EXPECT_TRUE(player_.m_UpdateNotificationLabel("hello"));

    EXPECT_EQ(fake_.all(), toast_lines("hello", made));
    EXPECT_EQ(player_.m_pNotificationLabel != nullptr, made);
}

INSTANTIATE_TEST_SUITE_P(Cases, ToastTest,
                         Combine(Bool(), Values(Popup::None, Popup::Open, Popup::Closing), Bool()));

TEST_F(RotationTimerTranscriptTest, AToastStaysAnObjectUntilTheNextOne)
{
    prepare(true, Popup::None);
    Evas_Object *toast = player_.m_pNotificationLabel;

    fake_.widgets.fire_smart(toast, "timeout");
    fake_.loop.advance(60.0);

    EXPECT_EQ(player_.m_pNotificationLabel, toast);
    EXPECT_EQ(fake_.all(), Lines());
}

// ---- m_ShowPopup ----

class IntervalToastTest : public RotationTimerTranscriptTest,
                          public testing::WithParamInterface<std::tuple<int, int, bool, Popup>> {};

TEST_P(IntervalToastTest, TellsTheIntervalInMinutesAndSeconds)
{
    const auto [status, index, earlier, popup] = GetParam();
    prepare(earlier, popup);
    Evas_Object *before = player_.m_pNotificationLabel;
    const int minutes = SECONDS[index] / 60;
    const int seconds = SECONDS[index] % 60;
    Lines expected = {"I \"enZavoMode = " + std::to_string(status) +
                      " iTimerIndex = " + std::to_string(index) + "\""};
    if (status >= 0 && status <= 2) {
        std::string id = "TV_SID_ZAVO_MIX_CAAUG_";
        std::string text = std::to_string(minutes);
        if (status == 2) {
            id += "RESET_P_L_TIMER_A_MINS";
            text = "Reset " + text;
        } else {
            id += status == 1 ? "PORTRAIT_TIMER_A_MINS" : "LANDSCAPE_TIMER_A_MINS";
            text = (status == 1 ? "P " : "L ") + text;
            if (seconds != 0) {
                id += "_B_SEC";
                text += ":" + std::to_string(seconds);
            }
        }
        expected += translation_line(id);
        expected += "I \"strResult: " + text + "\"";
        expected += toast_lines(text);
    }

    player_.m_ShowPopup(static_cast<ENDEMO_ROTATION_STATUS>(status), index);

    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(player_.m_pNotificationLabel == before, status < 0 || status > 2);
}

INSTANTIATE_TEST_SUITE_P(Table, IntervalToastTest,
                         Combine(Range(-1, 5), Range(0, 10), Bool(),
                                 Values(Popup::None, Popup::Open, Popup::Closing)));

// ---- m_CreateRotationOnOffLabel ----

class ToggleTest : public RotationTimerTranscriptTest,
                   public testing::WithParamInterface<std::tuple<bool, bool, bool, Popup>> {};

TEST_P(ToggleTest, SwitchesTheFlagTheKeyAndTellsIt)
{
    const auto [on_before, write_fails, earlier, popup] = GetParam();
    prepare(earlier, popup);
    player_.m_bRotationAutoMode = on_before;
    Lines expected = {"I \"\"", translation_line("COM_ID_QUENDIRA_ROTATION"),
                      translation_line(on_before ? "SID_OFF" : "SID_ON"),
                      writes(ConfigKey::ROTATION_AUTO_MODE, on_before ? 0 : 1)};
    if (write_fails) {
        fake_.fail("vconf_set_int");
        expected +=
            std::string("E \"SetConfigInt key ") + ConfigKey::ROTATION_AUTO_MODE + ",fail\"";
    }
    expected += toast_lines(on_before ? "Rotation Off" : "Rotation On");

    player_.m_CreateRotationOnOffLabel();

    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(player_.m_bRotationAutoMode, !on_before);
}

INSTANTIATE_TEST_SUITE_P(Cases, ToggleTest,
                         Combine(Bool(), Bool(), Bool(),
                                 Values(Popup::None, Popup::Open, Popup::Closing)));

// ---- m_UpdateZavoTimer ----

class TimerUpdateTest : public RotationTimerTranscriptTest,
                        public testing::WithParamInterface<std::tuple<int, int, bool, bool, bool>> {
};

TEST_P(TimerUpdateTest, ArmsTheIntervalOfThePresentOrientation)
{
    const auto [type, index, rotator, on, pending] = GetParam();
    const bool portrait = type == 1 || type == 3;
    const bool readable = index >= 0;
    const char *key = portrait ? ConfigKey::PORTRAIT_TIMER : ConfigKey::LANDSCAPE_TIMER;
    set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type));
    fake_.store.values[ConfigKey::PORTRAIT_TIMER] = (index + 5) % 10;
    fake_.store.values[ConfigKey::LANDSCAPE_TIMER] = (index + 5) % 10;
    if (readable)
        fake_.store.values[key] = index;
    else
        fake_.store.values.erase(key);
    fake_.rotator.supported = rotator;
    player_.m_bRotationAutoMode = on;
    if (pending)
        player_.m_pZavoTimer =
            ecore_timer_add(60.0, CPlayerInspector::m_OnZavoTimeOutCB, controller_.get());
    fake_.forget();

    Lines expected = {"I \"\""};
    if (pending)
        expected += "ecore_timer_del(timer#1)";
    expected += rotator_lines(rotator);
    std::vector<double> timers;
    if (rotator && on) {
        const int seconds = readable ? SECONDS[index] : 300;
        expected += panel_line(portrait);
        expected += reads(key);
        if (!readable)
            expected += std::string("E \"GetConfigInt key [") + key + "] faild\"";
        expected += "I \"set timer " + std::to_string(seconds) + " sec\"";
        expected += "ecore_timer_add(" + std::to_string(seconds) + ", controller)";
        timers.push_back(seconds);
    }

    player_.m_UpdateZavoTimer();

    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(fake_.loop.timers(), timers);
    EXPECT_EQ(player_.m_pZavoTimer != nullptr, rotator && on);
}

// Index -1 stands for a key that cannot be read.
INSTANTIATE_TEST_SUITE_P(Table, TimerUpdateTest,
                         Combine(Range(0, 4), Range(-1, 10), Bool(), Bool(), Bool()));

// ---- m_OnZavoTimeOutCB ----

class TimeOutTest : public RotationTimerTranscriptTest,
                    public testing::WithParamInterface<std::tuple<int, bool, bool>> {};

TEST_P(TimeOutTest, TurnsThePanelIfTheOtherOrientationHasContent)
{
    const auto [type, rotator, content] = GetParam();
    const bool portrait = type == 1 || type == 3;
    set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type));
    fake_.rotator.supported = true;
    player_.m_bRotationAutoMode = true;
    player_.m_UpdateZavoTimer();
    fake_.rotator.supported = rotator;
    if (content)
        (portrait ? player_.m_vdcLandscapePhotos : player_.m_vdcPortraitVideos).emplace_back();
    fake_.forget();

    Lines expected = {"I \"\"", "I \"\""};
    expected += rotator_lines(rotator);
    if (rotator) {
        expected += panel_line(portrait);
        expected += "ecore_timer_del(timer#1)";
        if (content)
            expected += {writes(ConfigKey::FILE_MODE, portrait ? 1 : 2), "I \"\"",
                         "VirtualKey_Send_KeyCode(569, 2)"};
    }

    fake_.loop.advance(299.9);
    EXPECT_EQ(fake_.all(), Lines());
    fake_.loop.advance(0.1);

    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(player_.m_pZavoTimer != nullptr, !rotator) << "without a turn it comes again";
    EXPECT_EQ(fake_.loop.timers().size(), rotator ? 0U : 1U);
}

INSTANTIATE_TEST_SUITE_P(Cases, TimeOutTest, Combine(Range(0, 4), Bool(), Bool()));

} // namespace
