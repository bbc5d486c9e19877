// Setting the controller up: every step in its order, and what each failure changes.

#include "player_lines.h"

using testing::Contains;
using testing::IsEmpty;

namespace {

class CreateTest : public PlayerTest {
  protected:
    CreateTest() { fake_.rotator.supported = true; }

    bool create_two() { return create({"a.mp4", "b.jpg"}); }

    // What is drawn, shown and grabbed has its cases beside its own file.
    Lines steps() const { return without(fake_.lines(), {"evas_", "elm_", "KeyRouter_"}); }

    // All up to the folder, when it goes well.
    static Lines set_up()
    {
        return {"D \"\"",
                "D \"\"",
                "app_get_preinitialized_window(\"ostrel-demo-player-tv\")",
                "ecore_pipe_add(controller)",
                "ecore_event_handler_add(KEY_DOWN, controller)",
                "display_rotator_add_cb(controller)",
                "I \"\"",
                "player_create()",
                "player_set_completed_cb(controller)",
                "player_set_interrupted_cb(controller)",
                "player_set_error_cb(controller)",
                "player_set_subtitle_updated_cb_ex(controller)"};
    }

    static Lines shown()
    {
        return {"I \"\"", "ecore_wl2_sync()", "ui_config_manager_init()", "I \"\"",
                "I \"Found Keyrouter Object\""};
    }

    static Lines ended()
    {
        return {writes(ConfigKey::START_RELAUNCH_TIMER, 3),
                "I \"change TV_VCONF_START_RELAUNCH_TIMER to 3\""};
    }

    void expect_gone_on_with(const std::string &told)
    {
        EXPECT_TRUE(create_two());

        EXPECT_THAT(fake_.logs(), Contains(told));
        EXPECT_EQ(fake_.lines().back(), ended().back());
        EXPECT_EQ(player_.m_vdcItemList.size(), 4U);
    }

    void expect_ended_with(int status)
    {
        EXPECT_EQ(fake_.lines().back(), writes(ConfigKey::PLAYBACK_STATUS, status));
        EXPECT_FALSE(fake_.widgets.visible(player_.m_pWindow));
        EXPECT_THAT(player_.m_vdcItemList, IsEmpty());
    }
};

TEST_F(CreateTest, EverythingIsSetUpInItsOrder)
{
    EXPECT_TRUE(create_two());

    EXPECT_EQ(steps(), join({set_up(),
                             {"I \"\"", "I \"FileName:a.mp4\"", "I \"FileName:b.jpg\"", "I \"\"",
                              "I \"add landscape files in play list\""},
                             shown(),
                             item_list_lines({"1 a", "2 b"}),
                             ended()}));
    EXPECT_TRUE(fake_.widgets.visible(player_.m_pWindow));
    EXPECT_NE(player_.m_pKeyDownHandler, nullptr);
    EXPECT_EQ(player_.m_vdcPlayList.size(), 2U);
    EXPECT_EQ(player_.m_vdcItemList.size(), 4U);
    EXPECT_FALSE(fake_.media.preparing());
    EXPECT_EQ(fake_.app.exit_requests, 0);
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

    EXPECT_FALSE(player_.m_bRotationAutoMode);
}

TEST_F(CreateTest, WithoutARotatorItGoesOnWithAWarning)
{
    fake_.rotator.supported = false;

    expect_gone_on_with("W \"add rotation callback failed\"");
}

TEST_F(CreateTest, WithoutAWindowItGoesOnWithNone)
{
    fake_.widgets.window_prepared = false;
    fake_.fail("elm_win_add");

    expect_gone_on_with("W \"pWindow is null\"");

    EXPECT_THAT(fake_.calls(), Contains("evas_object_show(null)"));
}

TEST_F(CreateTest, WithoutAnEventPipeItGoesOn)
{
    fake_.fail("ecore_pipe_add");

    expect_gone_on_with("I \"Add Ecore Pipe Failed\"");
}

TEST_F(CreateTest, WithoutSubtitleUpdatesItGoesOn)
{
    fake_.fail("player_set_subtitle_updated_cb_ex");

    expect_gone_on_with("E \"player_set_subtitle_updated_cb failed\"");
}

TEST_F(CreateTest, ASignalThatCannotBeStoredIsNoFailure)
{
    fake_.fail("vconf_set_int");

    expect_gone_on_with(
        "E \"SetConfigInt key memory/usb-launcher-service/start_relaunch_timer,fail\"");
}

TEST_F(CreateTest, WithoutAVideoPlayerItEnds)
{
    fake_.fail("player_set_completed_cb");

    EXPECT_FALSE(create_two());

    expect_ended_with(3);
    EXPECT_THAT(fake_.of({"opendir"}), IsEmpty()) << "the folder is not looked at any more";
}

TEST_F(CreateTest, WithNothingToPlayItEnds)
{
    EXPECT_FALSE(create({"readme.txt"}));

    expect_ended_with(2);
}

TEST_F(CreateTest, WithoutAFolderItEnds)
{
    fake_.fail("opendir");

    EXPECT_FALSE(create_two());

    expect_ended_with(2);
}

TEST_F(CreateTest, ARequestedRotationIsNoFailure)
{
    EXPECT_TRUE(create({"portrait_a.mp4"}));

    EXPECT_EQ(steps(), join({set_up(),
                             {"I \"\"", "I \"FileName:portrait_a.mp4\"", "I \"\"",
                              writes(ConfigKey::FILE_MODE, 2), "ecore_timer_add(0.8, controller)"},
                             shown(),
                             item_list_lines({}),
                             ended()}));
    EXPECT_THAT(player_.m_vdcPlayList, IsEmpty());
    EXPECT_NE(player_.m_hRotationDelayTimer, nullptr);
}

} // namespace
