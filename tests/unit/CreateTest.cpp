// Setting the controller up: every step in its order, and what each failure changes.

#include "player_fixture.h"
#include "player_lines.h"

using testing::IsEmpty;

namespace {

class CreateTest : public PlayerTest {
  protected:
    CreateTest() { fake_.rotator.supported = true; }

    static Lines begun() { return {"D \"\""}; }

    static Lines window()
    {
        return join({{"D \"\"", "app_get_preinitialized_window(\"ostrel-demo-player-tv\")"},
                     window_furnishing_lines(),
                     window_setting_lines()});
    }

    static Lines pipe() { return {"ecore_pipe_add(controller)"}; }

    static Lines handlers()
    {
        return {"ecore_event_handler_add(KEY_DOWN, controller)",
                "display_rotator_add_cb(controller)"};
    }

    // The first of the video player's steps.
    static Lines video_player(size_t steps = 6)
    {
        const Lines all = {"I \"\"",
                           "player_create()",
                           "player_set_completed_cb(controller)",
                           "player_set_interrupted_cb(controller)",
                           "player_set_error_cb(controller)",
                           "player_set_subtitle_updated_cb_ex(controller)"};
        return Lines(all.begin(), all.begin() + static_cast<long>(steps));
    }

    // All up to the folder, when it goes well.
    static Lines set_up() { return join({begun(), window(), pipe(), handlers(), video_player()}); }

    static Lines folder(const std::vector<std::string> &files)
    {
        Lines lines = {"I \"\""};
        for (const std::string &file : files)
            lines += "I \"FileName:" + file + "\"";
        return lines;
    }

    static Lines list_asked() { return {"I \"\""}; }

    static Lines list_filled()
    {
        return join({list_asked(), {"I \"add landscape files in play list\""}});
    }

    static Lines shown(const std::string &window)
    {
        return {
            "I \"\"",
            "evas_object_show(" + window + ")",
            "ecore_wl2_sync()",
            "elm_velt_manager_init(" + window + ")",
            "ui_config_manager_init()",
            "evas_object_event_callback_add(" + window + ", RESIZE, controller)",
            "evas_object_event_callback_add(" + window + ", MOUSE_DOWN, controller)",
            "evas_object_smart_callback_add(" + window + ", \"wm,rotation,changed\", controller)",
            "evas_object_smart_callback_add(" + window + ", \"visibility,changed\", controller)"};
    }

    // Connecting to the key router and asking for all keys.
    static Lines keys_asked()
    {
        return {"I \"\"", "I \"Found Keyrouter Object\"",
                "KeyRouter_Initialize(display#1, registry#1, seat#1, 7)",
                "KeyRouter_Reset_KeyList()", "KeyRouter_Add_All_Key(5)"};
    }

    static Lines keys_passed_on()
    {
        Lines lines;
        for (const char *key : {"PowerOff",
                                "AudioRaiseVolume",
                                "AudioLowerVolume",
                                "AudioMute",
                                "Home",
                                "Display",
                                "SysMenu",
                                "Exit",
                                "Ambient",
                                "PanelUp",
                                "PanelDown",
                                "PanelPlus",
                                "PanelMinus",
                                "Netflix",
                                "Amazon",
                                "WWW",
                                "LaunchApp1",
                                "LaunchApp2",
                                "KeyTVPlus",
                                "KeyRotatePanel",
                                "KeyAod",
                                "MultiView",
                                "KeyGlobo",
                                "KeyGraphicZoom",
                                "Disney",
                                "Tving",
                                "VirtualOption",
                                "AndroidMenu"})
            lines += std::string("KeyRouter_Remove_Key(\"XF86") + key + "\", 5)";
        return lines;
    }

    static Lines keys(bool rotator)
    {
        Lines lines = join({keys_asked(), keys_passed_on()});
        if (!rotator)
            lines += "KeyRouter_Remove_Key(\"XF86PanelEnter\", 5)";
        lines += "KeyRouter_Set_KeyList(surface#1)";
        return lines;
    }

    static Lines ended()
    {
        return {writes(ConfigKey::START_RELAUNCH_TIMER, 3),
                "I \"change TV_VCONF_START_RELAUNCH_TIMER to 3\""};
    }

    // From the folder on, when all goes well.
    static Lines from_folder()
    {
        return join({folder({"a.mp4", "b.jpg"}), list_filled(), shown("window#1"), keys(true),
                     item_list_lines({"1 a", "2 b"}), ended()});
    }

    bool create_two() { return create({"a.mp4", "b.jpg"}); }
};

TEST_F(CreateTest, EverythingIsSetUpInItsOrder)
{
    EXPECT_TRUE(create_two());

    EXPECT_EQ(fake_.lines(), join({set_up(), from_folder()}));
    EXPECT_NE(player_.m_pKeyDownHandler, nullptr);
    EXPECT_EQ(player_.m_vdcPlayList.size(), 2U);
    EXPECT_EQ(player_.m_vdcItemList.size(), 4U);
    EXPECT_FALSE(fake_.media.preparing());
    EXPECT_EQ(fake_.app.exit_requests, 0);
}

TEST_F(CreateTest, WithoutARotatorItGoesOnWithAWarning)
{
    fake_.rotator.supported = false;

    EXPECT_TRUE(create_two());

    EXPECT_EQ(fake_.lines(), join({begun(),
                                   window(),
                                   pipe(),
                                   handlers(),
                                   {"W \"add rotation callback failed\""},
                                   video_player(),
                                   folder({"a.mp4", "b.jpg"}),
                                   list_filled(),
                                   shown("window#1"),
                                   keys(false),
                                   item_list_lines({"1 a", "2 b"}),
                                   ended()}));
}

TEST_F(CreateTest, TheLaunchParametersAreTaken)
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

TEST_F(CreateTest, AnyNonZeroAutoModeSwitchesTimedRotationOn)
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

TEST_F(CreateTest, AnUnreadableAutoModeLeavesTimedRotationOff)
{
    fake_.store.values.erase(ConfigKey::ROTATION_AUTO_MODE);
    player_.m_bRotationAutoMode = true;

    EXPECT_TRUE(create_two());

    EXPECT_EQ(fake_.lines(),
              join({begun(), window(), pipe(), handlers(), video_player(), from_folder()}));
    EXPECT_FALSE(player_.m_bRotationAutoMode);
}

TEST_F(CreateTest, WithoutAWindowItGoesOnWithNone)
{
    fake_.widgets.window_prepared = false;
    fake_.fail("elm_win_add");

    EXPECT_TRUE(create_two());

    EXPECT_EQ(fake_.lines(),
              join({begun(),
                    {"D \"\"", "app_get_preinitialized_window(\"ostrel-demo-player-tv\")",
                     "elm_win_add(null, \"ostrel-demo-player-tv\", 1)", "W \"pWindow is null\""},
                    pipe(),
                    handlers(),
                    video_player(),
                    folder({"a.mp4", "b.jpg"}),
                    list_filled(),
                    shown("null"),
                    {"W \"pWlSurface is null\""},
                    item_list_lines({"1 a", "2 b"}),
                    ended()}));
}

TEST_F(CreateTest, WithoutAnEventPipeItGoesOn)
{
    fake_.fail("ecore_pipe_add");

    EXPECT_TRUE(create_two());

    EXPECT_EQ(fake_.lines(), join({begun(),
                                   window(),
                                   pipe(),
                                   {"I \"Add Ecore Pipe Failed\""},
                                   handlers(),
                                   video_player(),
                                   from_folder()}));
}

TEST_F(CreateTest, WithoutAVideoPlayerItEnds)
{
    fake_.fail("player_set_completed_cb");

    EXPECT_FALSE(create_two());

    EXPECT_EQ(fake_.lines(), join({begun(),
                                   window(),
                                   pipe(),
                                   handlers(),
                                   video_player(3),
                                   {"E \"player_set_completed_cb error\"",
                                    writes(ConfigKey::PLAYBACK_STATUS, 3)}}));
}

class NothingToPlayTest : public CreateTest {
  protected:
    void expect_end(const std::vector<std::string> &files, const Lines &scanned)
    {
        EXPECT_FALSE(create(files));

        EXPECT_EQ(fake_.lines(),
                  join({set_up(), scanned, list_asked(), {writes(ConfigKey::PLAYBACK_STATUS, 2)}}));
    }
};

TEST_F(NothingToPlayTest, EndsTheCreation)
{
    expect_end({"readme.txt"}, folder({"readme.txt"}));
}

TEST_F(NothingToPlayTest, WithoutAFolderEndsTheCreationToo)
{
    fake_.fail("opendir");

    Lines unopened = folder({});
    unopened += "E \"open dir [/opt/data/demo_movie/] failed\"";
    expect_end({"a.mp4", "b.jpg"}, unopened);
}

TEST_F(CreateTest, ARequestedRotationIsNoFailure)
{
    EXPECT_TRUE(create({"portrait_a.mp4"}));

    EXPECT_EQ(fake_.lines(),
              join({set_up(),
                    folder({"portrait_a.mp4"}),
                    list_asked(),
                    {writes(ConfigKey::FILE_MODE, 2), "ecore_timer_add(0.8, controller)"},
                    shown("window#1"),
                    keys(true),
                    item_list_lines({}),
                    ended()}));
    EXPECT_THAT(player_.m_vdcPlayList, IsEmpty());
    EXPECT_NE(player_.m_hRotationDelayTimer, nullptr);
}

TEST_F(CreateTest, ASignalThatCannotBeStoredIsNoFailure)
{
    fake_.fail("vconf_set_int");

    EXPECT_TRUE(create_two());

    const Lines lines = fake_.lines();
    ASSERT_GE(lines.size(), 3U);
    EXPECT_EQ(Lines(lines.end() - 3, lines.end()),
              Lines({ended()[0],
                     "E \"SetConfigInt key memory/usb-launcher-service/start_relaunch_timer,fail\"",
                     ended()[1]}));
}

} // namespace
