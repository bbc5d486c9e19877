#include "player_test.h"

#include <algorithm>

#include "player/util/EventManager.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class OstrelDemoPlayerTest : public PlayerTest {
  protected:
    // Calls without the 28 keys that are taken out one by one.
    Lines calls() { return without(fake_.calls(), {"KeyRouter_Remove_Key"}); }

    // A controller that was created and is ready to start.
    void created(const std::vector<std::string> &files)
    {
        ASSERT_TRUE(create(files));
        fake_.forget();
    }
};

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

// ---- Create ----

TEST_F(OstrelDemoPlayerTest, CreateSetsEverythingUpInItsOrder)
{
    fake_.rotator.supported = true;

    EXPECT_TRUE(create({"a.mp4", "b.jpg"}));

    EXPECT_EQ(
        calls(),
        Lines({"app_get_preinitialized_window(\"ostrel-demo-player-tv\")",
               "evas_object_rectangle_add(canvas#1)",
               "evas_object_size_hint_weight_set(rectangle#1, 1, 1)",
               "evas_object_color_set(rectangle#1, 0, 0, 0, 0)",
               "evas_object_render_op_set(rectangle#1, COPY)",
               "evas_object_show(rectangle#1)",
               "elm_win_resize_object_add(window#1, rectangle#1)",
               "elm_win_title_set(window#1, \"ostrel-demo-player-tv\")",
               "elm_policy_set(QUIT, LAST_WINDOW_CLOSED)",
               "elm_win_autodel_set(window#1, true)",
               "elm_win_aux_hint_add(window#1, \"wm.screencontroller.exception\", \"3\")",
               "ecore_pipe_add(controller)",
               "ecore_event_handler_add(KEY_DOWN, controller)",
               "display_rotator_add_cb(controller)",
               "player_create()",
               "player_set_completed_cb(controller)",
               "player_set_interrupted_cb(controller)",
               "player_set_error_cb(controller)",
               "player_set_subtitle_updated_cb_ex(controller)",
               "evas_object_show(window#1)",
               "ecore_wl2_sync()",
               "elm_velt_manager_init(window#1)",
               "ui_config_manager_init()",
               "evas_object_event_callback_add(window#1, RESIZE, controller)",
               "evas_object_event_callback_add(window#1, MOUSE_DOWN, controller)",
               "evas_object_smart_callback_add(window#1, \"wm,rotation,changed\", controller)",
               "evas_object_smart_callback_add(window#1, \"visibility,changed\", controller)",
               "KeyRouter_Initialize(display#1, registry#1, seat#1, 7)",
               "KeyRouter_Reset_KeyList()",
               "KeyRouter_Add_All_Key(5)",
               "KeyRouter_Set_KeyList(surface#1)",
               writes(ConfigKey::START_RELAUNCH_TIMER, 3)}));
    EXPECT_EQ(fake_.logs().front(), "D \"\"");
    EXPECT_EQ(fake_.logs().back(), "I \"change TV_VCONF_START_RELAUNCH_TIMER to 3\"");
    EXPECT_EQ(player_.m_vdcPlayList.size(), 2U);
    EXPECT_EQ(player_.m_vdcItemList.size(), 4U);
}

TEST_F(OstrelDemoPlayerTest, CreateScansTheFolderBetweenPlayerAndWindow)
{
    create({"a.mp4"});

    EXPECT_THAT(fake_.of({"player_create", "opendir", "evas_object_show(window", "elm_velt_manager",
                          "dgettext"}),
                testing::Contains("opendir(\"/opt/data/demo_movie/\")"));
    const Lines steps = fake_.of({"player_create", "opendir", "elm_velt_manager", "dgettext"});
    EXPECT_EQ(steps.front(), "player_create()");
    EXPECT_EQ(steps.back(), "dgettext(\"ostrel-demo-player-tv\", \"COM_HTS_SID_PLAY_ALL\")");
}

TEST_F(OstrelDemoPlayerTest, CreateDoesNotStartPlayback)
{
    EXPECT_TRUE(create({"a.mp4"}));

    EXPECT_FALSE(fake_.media.preparing());
    EXPECT_EQ(fake_.app.exit_requests, 0);
}

TEST_F(OstrelDemoPlayerTest, CreateTakesTheLaunchParameters)
{
    stFolderInfo info;
    info.bUsbLocation = true;
    info.strFolderPath = "show";
    fake_.storage.sticks = {"/media/a"};
    fake_.storage.add_folder("/media/a/show", {"a.mp4"});

    EXPECT_TRUE(controller_->Create(info, true, false));

    EXPECT_TRUE(player_.m_bUsbLocation);
    EXPECT_EQ(player_.m_strFolderPath, "show");
    EXPECT_TRUE(player_.m_bFolderContentsPlayer);
    EXPECT_FALSE(player_.m_bRepeat);
}

TEST_F(OstrelDemoPlayerTest, AnyNonZeroAutoModeSwitchesTimedRotationOn)
{
    for (const auto &[value, on] : {std::make_pair(0, false), std::make_pair(1, true),
                                    std::make_pair(-1, true), std::make_pair(7, true)}) {
        fake_.store.values[ConfigKey::ROTATION_AUTO_MODE] = value;
        COstrelDemoPlayer other;
        CPlayerInspector inspector(other);
        fake_.storage.add_folder(FOLDER, {"a.mp4"});
        stFolderInfo info;
        info.strFolderPath = FOLDER;

        EXPECT_TRUE(other.Create(info, false, true));

        EXPECT_EQ(inspector.m_bRotationAutoMode, on) << value;
    }
}

TEST_F(OstrelDemoPlayerTest, AnUnreadableAutoModeLeavesTimedRotationOff)
{
    fake_.store.values.erase(ConfigKey::ROTATION_AUTO_MODE);

    EXPECT_TRUE(create({"a.mp4"}));

    EXPECT_FALSE(player_.m_bRotationAutoMode);
}

TEST_F(OstrelDemoPlayerTest, CreateGoesOnWithoutARotator)
{
    EXPECT_TRUE(create({"a.mp4"}));

    EXPECT_THAT(fake_.logs(), testing::Contains("W \"add rotation callback failed\""));
}

TEST_F(OstrelDemoPlayerTest, CreateGoesOnWithoutAnEventPipe)
{
    fake_.fail("ecore_pipe_add");

    EXPECT_TRUE(create({"a.mp4"}));

    EXPECT_THAT(fake_.logs(), testing::Contains("I \"Add Ecore Pipe Failed\""));
}

TEST_F(OstrelDemoPlayerTest, CreateGoesOnWithoutAWindow)
{
    fake_.widgets.window_prepared = false;
    fake_.fail("elm_win_add");

    EXPECT_TRUE(create({"a.mp4"}));

    EXPECT_THAT(fake_.logs(), testing::Contains("W \"pWindow is null\""));
    EXPECT_THAT(fake_.logs(), testing::Contains("W \"pWlSurface is null\""));
    EXPECT_EQ(player_.m_pWindow, nullptr);
}

TEST_F(OstrelDemoPlayerTest, WithoutAVideoPlayerCreateFails)
{
    fake_.fail("player_create");

    EXPECT_FALSE(create({"a.mp4"}));

    EXPECT_EQ(fake_.calls().back(), writes(ConfigKey::PLAYBACK_STATUS, 3));
    EXPECT_THAT(fake_.of({"opendir"}), IsEmpty());
    EXPECT_EQ(fake_.store.get(ConfigKey::START_RELAUNCH_TIMER), -9999);
}

TEST_F(OstrelDemoPlayerTest, WithNothingToPlayCreateFails)
{
    EXPECT_FALSE(create({"readme.txt"}));

    EXPECT_EQ(fake_.calls().back(), writes(ConfigKey::PLAYBACK_STATUS, 2));
    EXPECT_THAT(fake_.of({"elm_velt_manager_init"}), IsEmpty());
    EXPECT_EQ(fake_.store.get(ConfigKey::START_RELAUNCH_TIMER), -9999);
}

TEST_F(OstrelDemoPlayerTest, ARequestedRotationIsNoFailure)
{
    fake_.rotator.supported = true;

    EXPECT_TRUE(create({"portrait_a.mp4"}));

    EXPECT_THAT(player_.m_vdcPlayList, IsEmpty());
    EXPECT_NE(player_.m_hRotationDelayTimer, nullptr);
    EXPECT_EQ(fake_.store.get(ConfigKey::START_RELAUNCH_TIMER), 3);
}

// ---- StartDemoPlayer ----

TEST_F(OstrelDemoPlayerTest, AnEmptyPlayListOnlyLogs)
{
    EXPECT_EQ(player_.StartDemoPlayer(), 0);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"play list is empty\""));
}

TEST_F(OstrelDemoPlayerTest, LeavingModeEndsTheProgram)
{
    created({"a.mp4"});
    fake_.store.values[ConfigKey::DEMO_MODE] = -1;

    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "E \"\"", "ui_app_exit()"));
}

TEST_F(OstrelDemoPlayerTest, StartPlaysTheWholeList)
{
    created({"a.mp4", "b.mp4"});

    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    EXPECT_EQ(player_.m_iPlayIndex, 0);
    EXPECT_THAT(fake_.lines(),
                LinesAre(
                    // The timed rotation, then the list.
                    "I \"\"", "D \"0\"", "D \"/opt/data/demo_movie/a.mp4\"", "D \"0 0\"",
                    "I \"/opt/data/demo_movie/a.mp4 \"", "I \"\"", "player_unprepare()",
                    "player_set_uri(\"/opt/data/demo_movie/a.mp4\")",
                    "player_set_display(0, window#1)", "player_prepare_async(controller)",
                    "player_set_looping(false)", "I \"player_set_looping false finish\""));
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

TEST_F(OstrelDemoPlayerTest, StartArmsTheTimedRotation)
{
    fake_.rotator.supported = true;
    fake_.store.values[ConfigKey::ROTATION_AUTO_MODE] = 1;
    created({"a.mp4"});

    player_.StartDemoPlayer();

    EXPECT_THAT(fake_.loop.timers(), ElementsAre(300.0));
}

TEST_F(OstrelDemoPlayerTest, StartPlaysTheChosenEntryOfTheStoredOrientation)
{
    created({"a.mp4", "b.mp4", "c.mp4"});
    fake_.store.values[ConfigKey::DEMO_MODE] = 0x0302;

    fake_.store.values[ConfigKey::FILE_MODE] = 1;
    EXPECT_EQ(player_.StartDemoPlayer(), 1);
    EXPECT_EQ(player_.m_iPlayIndex, 2);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/b.mp4");

    // The half follows the stored orientation, not the panel's.
    fake_.store.values[ConfigKey::FILE_MODE] = 2;
    EXPECT_EQ(player_.StartDemoPlayer(), 1);
    EXPECT_EQ(player_.m_iPlayIndex, 3);
    EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/c.mp4");
}

TEST_F(OstrelDemoPlayerTest, ALandscapeSelectionTurnsAPortraitPanelFirst)
{
    fake_.rotator.supported = true;
    set_panel(ROTATION_TYPE_PORTRAIT);
    created({"portrait_a.mp4"});
    fake_.store.values[ConfigKey::DEMO_MODE] = 0x0101;
    fake_.store.values[ConfigKey::FILE_MODE] = 1;

    EXPECT_EQ(player_.StartDemoPlayer(), 0);

    EXPECT_THAT(fake_.calls(),
                LinesAre(writes(ConfigKey::FILE_MODE, 1), "VirtualKey_Send_KeyCode(569, 2)"));
}

TEST_F(OstrelDemoPlayerTest, APortraitSelectionTurnsALandscapePanelFirst)
{
    fake_.rotator.supported = true;
    created({"a.mp4"});
    fake_.store.values[ConfigKey::DEMO_MODE] = 0x0101;
    fake_.store.values[ConfigKey::FILE_MODE] = 2;

    EXPECT_EQ(player_.StartDemoPlayer(), 0);

    EXPECT_THAT(fake_.calls(),
                LinesAre(writes(ConfigKey::FILE_MODE, 2), "VirtualKey_Send_KeyCode(569, 2)"));
}

TEST_F(OstrelDemoPlayerTest, PlayAllTurnsNoPanel)
{
    fake_.rotator.supported = true;
    created({"a.mp4"});
    fake_.store.values[ConfigKey::FILE_MODE] = 2;

    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    EXPECT_THAT(fake_.of({"VirtualKey", "vconf_set_int"}), IsEmpty());
    EXPECT_TRUE(fake_.media.preparing());
}

TEST_F(OstrelDemoPlayerTest, AFittingOrientationTurnsNoPanel)
{
    fake_.rotator.supported = true;
    created({"a.mp4", "portrait_b.mp4"});
    fake_.store.values[ConfigKey::DEMO_MODE] = 0x0101;
    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    set_panel(ROTATION_TYPE_PORTRAIT);
    fake_.store.values[ConfigKey::FILE_MODE] = 2;
    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    EXPECT_THAT(fake_.of({"VirtualKey"}), IsEmpty());
}

TEST_F(OstrelDemoPlayerTest, WithoutARotatorAMismatchPlaysAllTheSame)
{
    created({"a.mp4"});
    fake_.store.values[ConfigKey::DEMO_MODE] = 0x0101;
    fake_.store.values[ConfigKey::FILE_MODE] = 2;

    EXPECT_EQ(player_.StartDemoPlayer(), 1);

    EXPECT_THAT(fake_.of({"VirtualKey"}), IsEmpty());
    EXPECT_TRUE(fake_.media.preparing());
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
    EXPECT_THAT(fake_.of({"evas_object_del", "elm_velt_layout_add", "player_stop",
                          "player_unprepare", "player_set_uri"}),
                LinesAre("evas_object_del(layout#1)", "evas_object_del(imagebox#1)",
                         "elm_velt_layout_add(window#1)", "player_stop()", "player_unprepare()",
                         "player_set_uri(\"/opt/data/demo_movie/a.mp4\")"));
}

} // namespace
