// The controller's birth and the start of the demo.

#include <utility>

#include "player_lines.h"

using testing::IsEmpty;

namespace {

class OstrelDemoPlayerTest : public PlayerTest {};

// ---- Constructor ----

TEST_F(OstrelDemoPlayerTest, AFreshControllerHasItsInitialValues)
{
    EXPECT_TRUE(player_.m_bRepeat);
    EXPECT_FALSE(player_.m_bFolderContentsPlayer);
    EXPECT_FALSE(player_.m_bSlideShowStarted);
    EXPECT_FALSE(player_.m_bUsbLocation);
    EXPECT_FALSE(player_.m_bRotationAutoMode);
    EXPECT_FALSE(player_.m_bRotating);
    EXPECT_EQ(player_.m_pPictureDisplay, 0);
    EXPECT_EQ(player_.m_iPlayIndex, -1);
    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_EQ(player_.m_iPlayingType, 0);
    EXPECT_EQ(player_.m_iVideoPlayerState, 0);
    EXPECT_EQ(player_.m_strFolderPath, "");
    EXPECT_EQ(player_.m_strPlayPath, "");
    EXPECT_EQ(player_.m_strSubtitlePath, "");
}

TEST_F(OstrelDemoPlayerTest, AFreshControllerOwnsNothing)
{
    for (const Evas_Object *object :
         {player_.m_pWindow, player_.m_pPopup, player_.m_pPopupLayout, player_.m_pGenlist,
          player_.m_pNotificationLabel, player_.m_pDisclaimerRootLayout,
          player_.m_pDisclaimerImageBox})
        EXPECT_EQ(object, nullptr);
    for (const Ecore_Timer *timer :
         {player_.m_pSlideShowTimer, player_.m_pPhotoPlayEndTimer, player_.m_pDestroyPopupTimer,
          player_.m_pZavoTimer, player_.m_pDisclaimerTimer, player_.m_hRotationDelayTimer})
        EXPECT_EQ(timer, nullptr);
    EXPECT_EQ(player_.m_pKeyDownHandler, nullptr);
    EXPECT_EQ(player_.m_pWlSurface, nullptr);
    EXPECT_EQ(player_.m_pWlWindow, nullptr);
    EXPECT_EQ(player_.m_hPlayer, nullptr);
    EXPECT_EQ(player_.m_pPicture, nullptr);
    EXPECT_EQ(player_.m_hUsbDeviceList, nullptr);
    EXPECT_THAT(player_.m_vdcItemList, IsEmpty());
    EXPECT_THAT(player_.m_vdcPlayList, IsEmpty());
    EXPECT_THAT(player_.m_vdcLandscapeVideos, IsEmpty());
    EXPECT_THAT(player_.m_vdcPortraitVideos, IsEmpty());
    EXPECT_THAT(player_.m_vdcLandscapePhotos, IsEmpty());
    EXPECT_THAT(player_.m_vdcPortraitPhotos, IsEmpty());
}

TEST_F(OstrelDemoPlayerTest, TheConstructorOnlyLogs)
{
    COstrelDemoPlayer second;

    EXPECT_THAT(fake_.lines(), LinesAre("D \"\""));
}

// ---- StartDemoPlayer ----

TEST_F(OstrelDemoPlayerTest, AnEmptyPlayListOnlyLogs)
{
    EXPECT_EQ(player_.StartDemoPlayer(), 0);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"play list is empty\""));
    EXPECT_EQ(fake_.app.exit_requests, 0);
}

// Two videos, of which the second was played last.
class StartTest : public OstrelDemoPlayerTest {
  protected:
    StartTest()
    {
        make_window();
        make_video_player();
        fill_play_list({"a.mp4", "b.mp4"});
        player_.m_uiCurPlayIndex = 1;
    }

    // The stored orientation, the menu choice of both, and how the panel stands.
    void find(int file_mode, int word, ENDEMO_ROTATION_TYPE panel = ROTATION_TYPE_LANDSCAPE)
    {
        fake_.store.values[ConfigKey::FILE_MODE] = file_mode;
        fake_.store.values[ConfigKey::DEMO_MODE] = word;
        set_panel(panel);
    }

    void expect_played(const std::string &name, int selection)
    {
        fake_.media.uri.clear();
        EXPECT_EQ(player_.StartDemoPlayer(), 1);
        EXPECT_EQ(fake_.media.uri, FOLDER + name);
        EXPECT_EQ(player_.m_iPlayIndex, selection);
        EXPECT_THAT(fake_.of({"VirtualKey"}), IsEmpty());
    }

    void expect_turned(int file_mode)
    {
        player_.m_bRotationAutoMode = true;
        EXPECT_EQ(player_.StartDemoPlayer(), 0);
        EXPECT_THAT(fake_.lines(), LinesAre(writes(ConfigKey::FILE_MODE, file_mode), "I \"\"",
                                            "VirtualKey_Send_KeyCode(569, 2)"));
        EXPECT_EQ(player_.m_iPlayIndex, -1);
        EXPECT_EQ(player_.m_uiCurPlayIndex, 1U);
    }
};

TEST_F(StartTest, PlaysAllFromTheFirstEntry)
{
    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    EXPECT_EQ(fake_.lines(),
              join({{"I \"\"", "D \"0\"", "D \"/opt/data/demo_movie/a.mp4\"", "D \"0 0\""},
                    video_lines("/opt/data/demo_movie/a.mp4", "", PLAYER_STATE_IDLE, false)}));
    EXPECT_EQ(player_.m_iPlayIndex, 0);
    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
}

TEST_F(StartTest, LeavingEndsTheProgram)
{
    fake_.rotator.supported = true;
    find(2, -1);

    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    EXPECT_EQ(fake_.lines(), join({{"I \"\""}, exit_lines()}));
    EXPECT_EQ(player_.m_iPlayIndex, -1);
}

TEST_F(StartTest, TheStoredOrientationSaysWhichChoiceCounts)
{
    find(1, 0x0102);
    expect_played("b.mp4", 2);
    find(2, 0x0102);
    expect_played("a.mp4", 1);
}

TEST_F(StartTest, WithoutAStoredOrientationThePanelSaysIt)
{
    find(0, 0x0102);
    expect_played("b.mp4", 2);
    fake_.store.values.erase(ConfigKey::FILE_MODE);
    set_panel(ROTATION_TYPE_PORTRAIT);
    expect_played("a.mp4", 1);
}

TEST_F(StartTest, AnUnreadableChoiceIsAll)
{
    fake_.store.values.erase(ConfigKey::DEMO_MODE);
    expect_played("a.mp4", 0);
}

TEST_F(StartTest, AChoiceBeyondTheListIsForgottenForAll)
{
    find(1, 0x0303);

    expect_played("a.mp4", 3);

    EXPECT_THAT(fake_.of({"vconf_set_int"}), LinesAre(writes(ConfigKey::DEMO_MODE, 0)));
}

TEST_F(StartTest, APanelThatStandsTheWrongWayIsTurnedFirst)
{
    fake_.rotator.supported = true;
    for (const auto &[type, file_mode] :
         {std::make_pair(ROTATION_TYPE_LANDSCAPE, 2), std::make_pair(ROTATION_TYPE_PORTRAIT, 1),
          std::make_pair(ROTATION_TYPE_LANDSCAPE_REVERSE, 2),
          std::make_pair(ROTATION_TYPE_PORTRAIT_REVERSE, 1)}) {
        find(file_mode, 0x0102, type);
        expect_turned(file_mode);
    }
}

// Any orientation but portrait counts as landscape.
TEST_F(StartTest, AnUnknownOrientationIsLandscape)
{
    fake_.rotator.supported = true;
    find(3, 0x0102, ROTATION_TYPE_PORTRAIT);
    expect_turned(1);
}

TEST_F(StartTest, APanelThatStandsRightIsNotTurned)
{
    fake_.rotator.supported = true;
    find(1, 0x0102);
    expect_played("b.mp4", 2);
    find(2, 0x0102, ROTATION_TYPE_PORTRAIT);
    expect_played("a.mp4", 1);
}

TEST_F(StartTest, PlayAllTurnsNothing)
{
    fake_.rotator.supported = true;
    find(2, 0);
    expect_played("a.mp4", 0);
    find(1, 0x0200, ROTATION_TYPE_PORTRAIT);
    expect_played("a.mp4", 0);
}

TEST_F(StartTest, ASetWithoutRotatorPlaysAnyChoice)
{
    find(2, 0x0102);
    expect_played("a.mp4", 1);
}

TEST_F(StartTest, TimedRotationIsArmedBeforePlaying)
{
    fake_.rotator.supported = true;
    player_.m_bRotationAutoMode = true;

    player_.StartDemoPlayer();

    EXPECT_THAT(fake_.of({"ecore_timer_add", "player_prepare_async"}),
                LinesAre("ecore_timer_add(300, controller)", "player_prepare_async(controller)"));
}

TEST_F(OstrelDemoPlayerTest, StartBuildsTheDisclaimerBeforePlaying)
{
    fake_.system.has_disclaimer = true;
    created({"a.mp4"});

    player_.StartDemoPlayer();

    const Lines steps = fake_.of({"elm_velt_imagebox_add", "player_prepare_async"});
    EXPECT_THAT(steps,
                LinesAre("elm_velt_imagebox_add(layout#1)", "player_prepare_async(controller)"));
}

TEST_F(OstrelDemoPlayerTest, ARefusedFileIsReported)
{
    created({"a.mp4"});
    fake_.fail("player_set_uri");

    EXPECT_EQ(player_.StartDemoPlayer(), 0);
}

TEST_F(OstrelDemoPlayerTest, ARelaunchStartsAnewOnTheSameObject)
{
    fake_.system.has_disclaimer = true;
    created({"a.mp4", "b.mp4"});
    player_.StartDemoPlayer();
    fake_.media.fire_prepared();
    fake_.loop.drain_pipe();
    player_.m_PlayNextFile();
    fake_.media.state = PLAYER_STATE_PLAYING;
    fake_.store.values[ConfigKey::DEMO_MODE] = 1;
    fake_.forget();

    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    EXPECT_EQ(player_.m_iPlayIndex, 1);
    EXPECT_EQ(player_.m_uiCurPlayIndex, 0U);
    EXPECT_THAT(fake_.of({"evas_object_del", "elm_velt_layout_add", "elm_velt_imagebox_add",
                          "player_stop", "player_set_uri"}),
                LinesAre("evas_object_del(layout#1)", "evas_object_del(imagebox#1)",
                         "elm_velt_layout_add(window#1)", "elm_velt_imagebox_add(layout#2)",
                         "player_stop()", "player_set_uri(\"/opt/data/demo_movie/a.mp4\")"));
}

} // namespace
