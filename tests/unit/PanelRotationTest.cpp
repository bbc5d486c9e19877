// The readable cases; PanelTranscriptTest.cpp goes through all positions and contents.

#include "player_test.h"

using testing::IsEmpty;

namespace {

class PanelRotationTest : public PlayerTest {
  protected:
    void landscape_contents() { player_.m_vdcLandscapeVideos.emplace_back(); }
    void portrait_contents() { player_.m_vdcPortraitPhotos.emplace_back(); }

    void arm_zavo_timer()
    {
        player_.m_pZavoTimer =
            ecore_timer_add(300.0, CPlayerInspector::m_OnZavoTimeOutCB, controller_.get());
        fake_.forget();
    }
};

// ---- m_OnWindowRotationCB ----

class WindowRotationTest : public PanelRotationTest {
  protected:
    WindowRotationTest()
    {
        make_event_pipe();
        make_window();
    }

    void report(int angle)
    {
        fake_.widgets.window_angle = angle;
        fake_.forget();
        CPlayerInspector::m_OnWindowRotationCB(controller_.get(), player_.m_pWindow, nullptr);
    }

    // Every look at the orientation leaves a line; how often it is looked at is free.
    Lines report_lines() { return without(fake_.lines(), {"I \"current window rotation type"}); }
};

TEST_F(WindowRotationTest, ANewOrientationIsStoredAndPosted)
{
    report(90);

    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_PORTRAIT);
    EXPECT_THAT(report_lines(),
                LinesAre("I \"\"", "I \"iEventID = 10 iParam1 = 0\"", "ecore_pipe_write(10, 0)"));
}

TEST_F(WindowRotationTest, ThePresentOrientationPostsNothing)
{
    report(0);

    EXPECT_THAT(report_lines(), LinesAre("I \"\""));
    EXPECT_EQ(fake_.of({"elm_win_rotation_get"}).size(), 1U);
}

TEST_F(WindowRotationTest, NinetyAfterTwoHundredSeventyPostsOnce)
{
    set_panel(ROTATION_TYPE_PORTRAIT_REVERSE);

    report(90);

    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_PORTRAIT);
    EXPECT_THAT(fake_.of({"ecore_pipe_write"}), LinesAre("ecore_pipe_write(10, 0)"));
}

TEST_F(WindowRotationTest, WithoutControllerOrWindowItOnlyWarns)
{
    fake_.widgets.window_angle = 90;

    CPlayerInspector::m_OnWindowRotationCB(nullptr, player_.m_pWindow, nullptr);
    CPlayerInspector::m_OnWindowRotationCB(controller_.get(), nullptr, nullptr);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "W \"pOstrelDemoPlayer is null\"", "I \"\"",
                                        "W \"pOstrelDemoPlayer is null\""));
    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_LANDSCAPE);
}

// ---- m_OnDisplayRotatorCB ----

TEST_F(PanelRotationTest, ARotatorReportWithoutAControllerDoesNothing)
{
    display_rotator_status_t status = {1, 0};

    EXPECT_EQ(CPlayerInspector::m_OnDisplayRotatorCB(&status, nullptr), 1);
    EXPECT_EQ(CPlayerInspector::m_OnDisplayRotatorCB(nullptr, controller_.get()), 1);

    EXPECT_FALSE(player_.m_bRotating);
    EXPECT_THAT(fake_.all(), IsEmpty());
}

// ---- m_OnRotationDelayTimerCB ----

class RotationDelayTest : public PanelRotationTest {
  protected:
    RotationDelayTest()
    {
        fake_.rotator.supported = true;
        created({"portrait_a.mp4"});
        EXPECT_NE(player_.m_hRotationDelayTimer, nullptr);
    }
};

TEST_F(RotationDelayTest, TheTimerTurnsThePanelOnceItStandsStill)
{
    fake_.loop.advance(0.8);

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "I \"\"", "VirtualKey_Send_KeyCode(569, 2)", "I \"\""));
    EXPECT_EQ(player_.m_hRotationDelayTimer, nullptr);
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(RotationDelayTest, WhileThePanelTurnsTheTimerKeepsRenewing)
{
    Ecore_Timer *timer = player_.m_hRotationDelayTimer;
    fake_.rotator.report(DISPLAY_ROTATOR_TURNING_TO_LANDSCAPE);
    fake_.forget();

    fake_.loop.advance(4.0);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"\"", "I \"\"", "I \"\"", "I \"\""));
    EXPECT_EQ(player_.m_hRotationDelayTimer, timer);

    fake_.rotator.report(DISPLAY_ROTATOR_IDLE);
    fake_.forget();
    fake_.loop.advance(0.8);
    EXPECT_THAT(fake_.calls(), LinesAre("VirtualKey_Send_KeyCode(569, 2)"));
    EXPECT_THAT(fake_.loop.timers(), IsEmpty());
}

TEST_F(RotationDelayTest, WithoutAControllerTheTimerRenews)
{
    EXPECT_EQ(CPlayerInspector::m_OnRotationDelayTimerCB(nullptr), ECORE_CALLBACK_RENEW);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

// ---- m_ChangeRotationType ----

TEST_F(PanelRotationTest, ASetWithoutRotatorDoesNotTurn)
{
    landscape_contents();
    portrait_contents();
    arm_zavo_timer();

    EXPECT_FALSE(player_.m_ChangeRotationType());

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
    EXPECT_NE(player_.m_pZavoTimer, nullptr);
}

TEST_F(PanelRotationTest, FromLandscapeThePanelTurnsToPortrait)
{
    fake_.rotator.supported = true;
    portrait_contents();

    EXPECT_TRUE(player_.m_ChangeRotationType());

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", writes(ConfigKey::FILE_MODE, 2), "I \"\"",
                                        "VirtualKey_Send_KeyCode(569, 2)"));
}

TEST_F(PanelRotationTest, FromPortraitThePanelTurnsToLandscape)
{
    fake_.rotator.supported = true;
    set_panel(ROTATION_TYPE_PORTRAIT);
    landscape_contents();
    arm_zavo_timer();

    EXPECT_TRUE(player_.m_ChangeRotationType());

    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "ecore_timer_del(timer#1)", writes(ConfigKey::FILE_MODE, 1),
                         "I \"\"", "VirtualKey_Send_KeyCode(569, 2)"));
    EXPECT_EQ(player_.m_pZavoTimer, nullptr);
}

TEST_F(PanelRotationTest, ARefusedRotationStillStopsTheTimedRotation)
{
    fake_.rotator.supported = true;
    set_panel(ROTATION_TYPE_PORTRAIT);
    portrait_contents();
    arm_zavo_timer();

    EXPECT_FALSE(player_.m_ChangeRotationType());

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "ecore_timer_del(timer#1)"));
    EXPECT_EQ(player_.m_pZavoTimer, nullptr);
}

} // namespace
