// The panel in all its positions: reports of the window manager, turning with every distribution of
// content, and the delay before a turn.

#include "player_lines.h"

using testing::Bool;
using testing::Combine;
using testing::Range;
using testing::Values;

namespace {

class PanelTranscriptTest : public PlayerTest {};

// ---- m_OnWindowRotationCB ----

class WindowReportTest : public PanelTranscriptTest,
                         public testing::WithParamInterface<std::tuple<int, int>> {};

int type_of_angle(int angle)
{
    return angle == 90 ? 1 : angle == 180 ? 2 : angle == 270 ? 3 : 0;
}

TEST_P(WindowReportTest, IsStoredAndPostedWhenItIsNews)
{
    const int before = std::get<0>(GetParam());
    const int angle = std::get<1>(GetParam());
    const int after = type_of_angle(angle);
    make_event_pipe();
    make_window();
    player_.m_ActivateWindow();
    set_panel(static_cast<ENDEMO_ROTATION_TYPE>(before));

    fake_.widgets.turn_window(angle);

    Lines expected = {"I \"\"", window_type_line(before), "elm_win_rotation_get(window#1)",
                      window_type_line(after), window_type_line(after)};
    if (after != before)
        expected += Lines{"I \"iEventID = 10 iParam1 = 0\"", "ecore_pipe_write(10, 0)"};
    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), after);
}

INSTANTIATE_TEST_SUITE_P(Angles, WindowReportTest,
                         Combine(Range(0, 4),
                                 Values(0, 90, 180, 270, 360, -90, 1, 89, 91, 179, 271, 450)));

// ---- m_OnDisplayRotatorCB ----

TEST_F(PanelTranscriptTest, EveryStatusOfTheRotatorSetsTheFlag)
{
    fake_.rotator.supported = true;
    ASSERT_TRUE(create({"a.mp4"}));
    for (int status = -6; status <= 6; ++status) {
        for (const bool before : {false, true}) {
            player_.m_bRotating = before;
            fake_.forget();

            EXPECT_EQ(fake_.rotator.report(status), 1);

            const bool turning = status == 1 || status == 2;
            EXPECT_EQ(player_.m_bRotating, turning) << status;
            Lines expected;
            if (status == 0)
                expected += "E \"Rotation Done\"";
            else if (turning)
                expected += "E \"TV Is Rotating\"";
            else if (status >= -3 && status <= -1)
                expected += "E \"TV Does Not Support Rotation\"";
            EXPECT_EQ(fake_.all(), expected) << status;
        }
    }
}

// ---- m_ChangeRotationType ----

enum class RotatorAnswer { Missing, InTrouble, Idle, Turning };

Lines lines_of(RotatorAnswer answer)
{
    switch (answer) {
    case RotatorAnswer::Missing:
        return rotator_lines(false);
    case RotatorAnswer::InTrouble:
        return {"display_rotator_get_status()", "I \"current rotator status is -1\""};
    case RotatorAnswer::Idle:
        return rotator_lines(true);
    case RotatorAnswer::Turning:
        return {"display_rotator_get_status()", "I \"current rotator status is 2\"",
                "I \"TV support rotation\""};
    }
    return {};
}

class ChangeRotationTest
    : public PanelTranscriptTest,
      public testing::WithParamInterface<std::tuple<int, int, RotatorAnswer, bool>> {};

TEST_P(ChangeRotationTest, ThePanelTurnsToTheOtherOrientationIfThatHasContent)
{
    const auto [type, content, rotator, timed] = GetParam();
    set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type));
    if ((content & 1) != 0)
        player_.m_vdcLandscapeVideos.emplace_back();
    if ((content & 2) != 0)
        player_.m_vdcLandscapePhotos.emplace_back();
    if ((content & 4) != 0)
        player_.m_vdcPortraitVideos.emplace_back();
    if ((content & 8) != 0)
        player_.m_vdcPortraitPhotos.emplace_back();
    fake_.rotator.supported = rotator != RotatorAnswer::Missing;
    fake_.rotator.status = rotator == RotatorAnswer::InTrouble ? -1
                           : rotator == RotatorAnswer::Turning ? 2
                                                               : 0;
    if (timed)
        player_.m_pZavoTimer =
            ecore_timer_add(300.0, CPlayerInspector::m_OnZavoTimeOutCB, controller_.get());
    fake_.forget();

    const bool supported = rotator == RotatorAnswer::Idle || rotator == RotatorAnswer::Turning;
    const bool portrait = type == 1 || type == 3;
    const bool turns = supported && (content & (portrait ? 3 : 12)) != 0;
    Lines expected = {"I \"\""};
    expected += lines_of(rotator);
    if (supported) {
        expected += panel_line(portrait);
        if (timed)
            expected += "ecore_timer_del(timer#1)";
    }
    if (turns)
        expected += {writes(ConfigKey::FILE_MODE, portrait ? 1 : 2), "I \"\"",
                     "VirtualKey_Send_KeyCode(569, 2)"};

    EXPECT_EQ(player_.m_ChangeRotationType(), turns);

    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(player_.m_pZavoTimer != nullptr, timed && !supported)
        << "a refused turn ends the timed rotation as well";
}

INSTANTIATE_TEST_SUITE_P(Contents, ChangeRotationTest,
                         Combine(Range(0, 4), Range(0, 16),
                                 Values(RotatorAnswer::Missing, RotatorAnswer::InTrouble,
                                        RotatorAnswer::Idle, RotatorAnswer::Turning),
                                 Bool()));

TEST_F(PanelTranscriptTest, ATurnIsAskedForEvenIfTheKeyOrTheStoreFails)
{
    fake_.rotator.supported = true;
    player_.m_vdcPortraitVideos.emplace_back();
    fake_.fail("vconf_set_int");
    fake_.fail("VirtualKey_Send_KeyCode");

    EXPECT_TRUE(player_.m_ChangeRotationType());

    EXPECT_EQ(fake_.all(),
              join({{"I \"\""},
                    rotator_lines(true),
                    {panel_line(false), writes(ConfigKey::FILE_MODE, 2),
                     std::string("E \"SetConfigInt key ") + ConfigKey::FILE_MODE + ",fail\"",
                     "I \"\"", "VirtualKey_Send_KeyCode(569, 2)"}}));
}

// ---- m_OnRotationDelayTimerCB ----

enum class Popup { None, Open, Closing };

class RotationDelayTranscriptTest : public PanelTranscriptTest,
                                    public testing::WithParamInterface<Popup> {};

TEST_P(RotationDelayTranscriptTest, TheDelayLastsUntilThePanelStandsStillAndClosesThePopup)
{
    make_window();
    player_.m_hRotationDelayTimer =
        ecore_timer_add(0.8, CPlayerInspector::m_OnRotationDelayTimerCB, controller_.get());
    if (GetParam() != Popup::None)
        open_popup();
    fake_.loop.advance(0.7);
    if (GetParam() == Popup::Closing)
        player_.DestroyPopup();
    player_.m_bRotating = true;
    Ecore_Timer *timer = player_.m_hRotationDelayTimer;
    fake_.forget();

    fake_.loop.advance(0.1);
    EXPECT_THAT(fake_.all(), LinesAre("I \"\""));
    EXPECT_EQ(player_.m_hRotationDelayTimer, timer);

    player_.m_bRotating = false;
    if (GetParam() == Popup::Closing)
        player_.DestroyPopup(); // The half second begins anew, and outlasts the next step.
    fake_.forget();
    EXPECT_EQ(CPlayerInspector::m_OnRotationDelayTimerCB(controller_.get()), ECORE_CALLBACK_CANCEL);

    Lines expected = {"I \"\"", "I \"\"", "VirtualKey_Send_KeyCode(569, 2)"};
    if (GetParam() == Popup::None)
        expected += "I \"\"";
    else
        expected += popup_closing_lines("popup#1", GetParam() == Popup::Closing ? "timer#3" : "");
    EXPECT_EQ(fake_.all(), expected);
    EXPECT_EQ(player_.m_hRotationDelayTimer, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Popups, RotationDelayTranscriptTest,
                         Values(Popup::None, Popup::Open, Popup::Closing));

// ---- m_ResetVideoRotation ----

class VideoRotationTest : public PanelTranscriptTest,
                          public testing::WithParamInterface<std::tuple<int, bool>> {};

TEST_P(VideoRotationTest, OnlyTheFirstPortraitPositionTurnsTheVideo)
{
    const auto [type, fails] = GetParam();
    make_video_player();
    set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type));
    if (fails)
        fake_.fail("player_set_display_rotation");
    const std::string rotation = type == 1 ? "2" : "0";

    player_.m_ResetVideoRotation();

    EXPECT_THAT(fake_.all(), LinesAre("I \"\"", window_type_line(type),
                                      "player_set_display_rotation(" + rotation + ")",
                                      fails ? "E \"set_display_rotation failed\""
                                            : "I \"enNextRotation =" + rotation + "\""));
}

INSTANTIATE_TEST_SUITE_P(Types, VideoRotationTest, Combine(Range(-1, 5), Bool()));

} // namespace
