#include "player_fixture.h"

#include <utility>

using testing::ElementsAre;
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
};

TEST_F(WindowRotationTest, ANewOrientationIsStoredAndPosted)
{
    report(90);

    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_PORTRAIT);
    EXPECT_THAT(fake_.lines(),
                LinesAre("I \"\"", "I \"current window rotation type = 1\"",
                         "I \"iEventID = 10 iParam1 = 0\"", "ecore_pipe_write(10, 0)"));
}

TEST_F(WindowRotationTest, ThePresentOrientationPostsNothing)
{
    report(0);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "I \"current window rotation type = 0\""));
}

TEST_F(WindowRotationTest, NinetyAfterTwoHundredSeventyPostsOnce)
{
    set_panel(ROTATION_TYPE_PORTRAIT_REVERSE);

    report(90);

    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_PORTRAIT);
    EXPECT_THAT(fake_.of({"ecore_pipe_write"}), LinesAre("ecore_pipe_write(10, 0)"));
}

TEST_F(WindowRotationTest, QuartersOfATurnHaveTheirTypesAndAnyOtherAngleIsLandscape)
{
    for (const auto &[angle, type] :
         {std::make_pair(90, ROTATION_TYPE_PORTRAIT),
          std::make_pair(180, ROTATION_TYPE_LANDSCAPE_REVERSE),
          std::make_pair(270, ROTATION_TYPE_PORTRAIT_REVERSE),
          std::make_pair(0, ROTATION_TYPE_LANDSCAPE), std::make_pair(91, ROTATION_TYPE_LANDSCAPE),
          std::make_pair(-90, ROTATION_TYPE_LANDSCAPE)}) {
        report(angle);
        EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), type) << angle;
    }
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
    EXPECT_THAT(fake_.lines(), IsEmpty());
}

TEST_F(PanelRotationTest, OnlyATurningRotatorTurnsThePanel)
{
    created({"a.mp4"});
    fake_.rotator.supported = true;
    display_rotator_add_cb(CPlayerInspector::m_OnDisplayRotatorCB, controller_.get());
    const std::string turning = "E \"TV Is Rotating\"";
    const std::string missing = "E \"TV Does Not Support Rotation\"";
    for (const auto &[status, told] :
         {std::make_pair(0, std::string("E \"Rotation Done\"")), std::make_pair(1, turning),
          std::make_pair(2, turning), std::make_pair(-1, missing), std::make_pair(-2, missing),
          std::make_pair(-3, missing)}) {
        player_.m_bRotating = told != turning;
        fake_.forget();

        EXPECT_EQ(fake_.rotator.report(status), 1);

        EXPECT_EQ(player_.m_bRotating, told == turning) << status;
        EXPECT_THAT(fake_.lines(), ElementsAre(told)) << status;
    }
}

TEST_F(PanelRotationTest, AnUnknownStatusIsNoTurnAndNotLogged)
{
    for (const int status : {-4, 3}) {
        player_.m_bRotating = true;
        display_rotator_status_t report = {status, 0};

        EXPECT_EQ(CPlayerInspector::m_OnDisplayRotatorCB(&report, controller_.get()), 1);

        EXPECT_FALSE(player_.m_bRotating);
        EXPECT_THAT(fake_.lines(), IsEmpty());
    }
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

TEST_F(RotationDelayTest, TheTurnClosesAnOpenPopup)
{
    open_popup();

    fake_.loop.advance(0.8);

    EXPECT_THAT(fake_.calls(),
                LinesAre("VirtualKey_Send_KeyCode(569, 2)", "evas_object_hide(popup#1)",
                         "app_context_manager_unset_epop_block()",
                         "ecore_timer_add(0.5, controller)"));
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

TEST_F(PanelRotationTest, ARotatorInTroubleDoesNotTurn)
{
    fake_.rotator.supported = true;
    fake_.rotator.status = DISPLAY_ROTATOR_ERROR;
    portrait_contents();

    EXPECT_FALSE(player_.m_ChangeRotationType());

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
}

TEST_F(PanelRotationTest, OnlyContentOfTheOtherOrientationIsWorthATurn)
{
    fake_.rotator.supported = true;
    for (const auto &[upright, lists] :
         {std::make_pair(
              false, std::make_pair(&player_.m_vdcPortraitVideos, &player_.m_vdcPortraitPhotos)),
          std::make_pair(true, std::make_pair(&player_.m_vdcLandscapeVideos,
                                              &player_.m_vdcLandscapePhotos))}) {
        set_panel(upright ? ROTATION_TYPE_PORTRAIT_REVERSE : ROTATION_TYPE_LANDSCAPE_REVERSE);
        EXPECT_FALSE(player_.m_ChangeRotationType());
        for (auto *list : {lists.first, lists.second}) {
            list->emplace_back();
            EXPECT_TRUE(player_.m_ChangeRotationType());
            list->clear();
        }
        // What suits the panel as it stands is there in the next round.
        lists.first->emplace_back();
    }
}

TEST_F(PanelRotationTest, ATurnIsAskedForEvenIfItCannotBeStored)
{
    fake_.rotator.supported = true;
    portrait_contents();
    fake_.fail("vconf_set_int");

    EXPECT_TRUE(player_.m_ChangeRotationType());

    EXPECT_EQ(fake_.calls().back(), "VirtualKey_Send_KeyCode(569, 2)");
}

// ---- m_ResetVideoRotation ----

TEST_F(PanelRotationTest, OnlyTheFirstPortraitPositionTurnsTheVideo)
{
    make_video_player();
    for (const int type : {-1, 0, 1, 2, 3}) {
        set_panel(static_cast<ENDEMO_ROTATION_TYPE>(type));

        player_.m_ResetVideoRotation();

        const std::string rotation = type == 1 ? "2" : "0";
        EXPECT_THAT(fake_.lines(),
                    LinesAre("I \"\"", "player_set_display_rotation(" + rotation + ")",
                             "I \"enNextRotation =" + rotation + "\""));
    }
}

TEST_F(PanelRotationTest, AVideoThatCannotBeTurnedIsLogged)
{
    make_video_player();
    fake_.fail("player_set_display_rotation");

    player_.m_ResetVideoRotation();

    EXPECT_EQ(fake_.lines().back(), "E \"set_display_rotation failed\"");
}

} // namespace
