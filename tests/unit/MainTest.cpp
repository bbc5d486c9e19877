#include "main_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

// ---- main, elm_main ----

TEST_F(MainTest, MainStartsElementaryAndTheFramework)
{
    fake_.app.exit_status = 7;

    EXPECT_EQ(run(nullptr), 7);

    EXPECT_THAT(fake_.lines(), ElementsAre("elm_init(1)", StartsWith("D \""),
                                           "ui_app_add_event_handler(LANGUAGE_CHANGED, null)",
                                           "ui_app_main(1)", "elm_shutdown()"));
    EXPECT_EQ(_elm_startup_time, 1000.0);
}

// ---- Create ----

TEST_F(MainTest, CreateSetsUpTheSetInItsOrder)
{
    run([this] {
        fake_.forget();
        EXPECT_TRUE(fake_.app.create());

        EXPECT_THAT(
            fake_.calls(),
            LinesAre("VirtualKey_Initialize(0)", "ecore_event_handler_add(DEVICE_ADD, null)",
                     "ea_init()", "elm_app_base_scale_set(2)", "device_power_subscribe_poweroff()",
                     "device_power_subscribe_standby()", "device_power_subscribe_wakeup()",
                     "device_power_subscribe_state_changed_event()", "app_context_manager_init()",
                     "SettingsAPI::DisableItemsByList(\"broadcasting picturesize pip "
                     "game-mode delete-contents-list tools-demo-update "
                     "tools-picture-demo\", \"org.tizen.ostrel-demo-player-tv\")",
                     "elm_config_mirrored_set(false)"));
        EXPECT_THAT(fake_.logs().front(), StartsWith("I \""));
    });
}

TEST_F(MainTest, CreateReadsTheRotationStateBeforeTheRest)
{
    fake_.store.values["db/sysman/rotation_state"] = 2;

    run([this] {
        fake_.app.create();
        EXPECT_THAT(fake_.of({"VirtualKey_Initialize", "vconf_get_int", "ea_init"}),
                    LinesAre("VirtualKey_Initialize(0)",
                             "vconf_get_int(\"db/sysman/rotation_state\")", "ea_init()"));
        EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_PORTRAIT);
    });
}

TEST_F(MainTest, CreateMirrorsARightToLeftSet)
{
    fake_.system.ui_orientation = 1;

    run([this] {
        fake_.app.create();
        EXPECT_EQ(fake_.calls().back(), "elm_config_mirrored_set(true)");
    });
}

// ---- Launch requests ----

TEST_F(MainTest, ALaunchCreatesTheController)
{
    run_created([this] {
        fake_.app.launch();

        EXPECT_TRUE(has_controller());
        EXPECT_EQ(exits(), 0);
        EXPECT_EQ(fake_.store.get(RELAUNCH_TIMER), 3);
        EXPECT_THAT(fake_.logs().front(), StartsWith("I \""));
    });
}

TEST_F(MainTest, ALaunchReadsItsExtrasInOrder)
{
    run_created([this] {
        fake_.app.launch({{"folder_path", "/demo/show/"}});

        EXPECT_THAT(fake_.of({"app_control_get_extra_data"}),
                    LinesAre("app_control_get_extra_data(\"__K_RELOCATE_BELOW\")",
                             "app_control_get_extra_data(\"mode\")",
                             "app_control_get_extra_data(\"demo_player_mode\")",
                             "app_control_get_extra_data(\"repeat_mode\")",
                             "app_control_get_extra_data(\"folder_path\")",
                             "app_control_get_extra_data(\"path_location\")"));
        const Lines logs = fake_.logs();
        EXPECT_THAT(logs, testing::Contains("I \"Get ExtraKey:mode,fail\""));
        EXPECT_THAT(logs,
                    testing::Contains("I \"ExtraKey:folder_path,pStrExtraValue:/demo/show/\""));
    });
}

TEST_F(MainTest, ALaunchWatchesItsKeys)
{
    run_created([this] {
        fake_.app.launch();

        EXPECT_THAT(fake_.of({"vconf_notify"}),
                    LinesAre("vconf_notify_key_changed(\"db/ostrel-demo-player-tv/demo_mode\", "
                             "null)",
                             "vconf_notify_key_changed(\"db/menu/support/use_mode\", null)"));
    });
}

TEST_F(MainTest, ALaunchWithoutDataOnlyWarns)
{
    run_created([this] {
        fake_.app.launch_without_data({{"mode", "factory_stop"}});

        EXPECT_THAT(fake_.lines(), ElementsAre(StartsWith("I \""), "W \"pAppData is null\""));
    });
}

TEST_F(MainTest, ARelocationBelowTheAmbientScreenIsIgnored)
{
    run_created([this] {
        fake_.app.launch({{"__K_RELOCATE_BELOW", "com.norvane.tv.aod"}, {"mode", "factory_stop"}});

        EXPECT_THAT(fake_.calls(), IsEmpty());
        EXPECT_FALSE(has_controller());
        EXPECT_THAT(fake_.of({"app_control_get_extra_data"}),
                    LinesAre("app_control_get_extra_data(\"__K_RELOCATE_BELOW\")"));
    });
}

TEST_F(MainTest, ARelocationBelowAnythingElseIsALaunch)
{
    run_created([this] {
        fake_.app.launch({{"__K_RELOCATE_BELOW", "com.norvane.tv.other"}});

        EXPECT_TRUE(has_controller());
    });
}

TEST_F(MainTest, AFactoryStopEndsTheProgram)
{
    run_created([this] {
        fake_.app.launch({{"mode", "factory_stop"}});

        EXPECT_THAT(fake_.calls(), LinesAre("ui_app_exit()"));
        EXPECT_FALSE(has_controller());
    });
}

TEST_F(MainTest, AFactoryStartNeitherStartsNorEnds)
{
    run_created([this] {
        for (const char *mode : {"factory_start", "anything", ""}) {
            fake_.app.launch({{"mode", mode}, {"demo_player_mode", "folder_contents_player"}});
            EXPECT_THAT(fake_.calls(), IsEmpty()) << mode;
            EXPECT_FALSE(has_controller());
        }
    });
}

TEST_F(MainTest, FolderContentsModeResetsTheSelectionAndWatchesOneKey)
{
    fake_.store.values[DEMO_MODE] = 0x0102;

    run_created([this] {
        fake_.app.launch({{"demo_player_mode", "folder_contents_player"}});

        EXPECT_EQ(fake_.store.get(DEMO_MODE), 0);
        EXPECT_THAT(fake_.of({"vconf_set_int", "vconf_notify"})[0],
                    "vconf_set_int(\"db/ostrel-demo-player-tv/demo_mode\", 0)");
        EXPECT_THAT(fake_.store.watched(), LinesAre(DEMO_MODE));
    });
}

TEST_F(MainTest, FolderContentsModeEnablesRewindAndForward)
{
    run_created([this] {
        launch_and_start({{"demo_player_mode", "folder_contents_player"}});
        fake_.media.fire_prepared();
        fake_.loop.drain_pipe();
        fake_.loop.press_key("XF86AudioNext");
        fake_.loop.drain_pipe();

        EXPECT_EQ(fake_.media.rate, 2.0F);
    });
}

TEST_F(MainTest, AnyOtherPlayerModeIsTheOrdinaryOne)
{
    fake_.store.values[DEMO_MODE] = 0x0102;

    run_created([this] {
        fake_.app.launch({{"demo_player_mode", "Folder_Contents_Player"}});

        EXPECT_EQ(fake_.store.get(DEMO_MODE), 0x0102);
        EXPECT_THAT(fake_.store.watched(), LinesAre(DEMO_MODE, USE_MODE));
    });
}

TEST_F(MainTest, TheLaunchFolderIsPlayed)
{
    fake_.storage.add_folder("/demo/show", {"x.mp4"});

    run_created([this] {
        fake_.app.launch(
            {{"demo_player_mode", "folder_contents_player"}, {"folder_path", "/demo/show/"}});

        EXPECT_THAT(fake_.logs(), testing::Contains("I \"FileName:x.mp4\""));
    });
}

TEST_F(MainTest, AUsbFolderIsLookedForOnTheSticks)
{
    fake_.storage.sticks = {"/media/a"};
    fake_.storage.add_folder("/media/a/show", {"x.mp4"});

    run_created([this] {
        fake_.app.launch({{"folder_path", "show"}, {"path_location", "usb"}});

        EXPECT_THAT(fake_.logs(), testing::Contains("I \"path existed:/media/a/show/\""));
    });
}

TEST_F(MainTest, AnyOtherLocationIsNoUsb)
{
    fake_.storage.add_folder("/demo/show", {"x.mp4"});

    run_created([this] {
        fake_.app.launch({{"folder_path", "/demo/show/"}, {"path_location", "USB"}});

        EXPECT_THAT(fake_.of({"usb_device"}), IsEmpty());
    });
}

TEST_F(MainTest, WithoutAFolderTheBuiltInOneIsPlayed)
{
    run_created([this] {
        fake_.app.launch();

        EXPECT_THAT(fake_.logs(), testing::Contains("I \"FileName:a.mp4\""));
    });
}

struct RepeatMode {
    const char *value; /**< null for none */
    bool repeats;
};

class RepeatModeTest : public MainTest, public testing::WithParamInterface<RepeatMode> {};

TEST_P(RepeatModeTest, DecidesWhatFollowsTheFirstVideo)
{
    run_created([this] {
        fake::Application::Extras extras;
        if (GetParam().value != nullptr)
            extras["repeat_mode"] = GetParam().value;
        launch_and_start(extras);
        fake_.media.fire_prepared();
        fake_.loop.drain_pipe();

        fake_.media.fire_completed();
        fake_.loop.drain_pipe();

        EXPECT_EQ(fake_.media.preparing(), GetParam().repeats);
        EXPECT_EQ(exits(), GetParam().repeats ? 0 : 1);
    });
}

// The comparison with "no" is exact.
INSTANTIATE_TEST_SUITE_P(Values, RepeatModeTest,
                         testing::Values(RepeatMode{nullptr, true}, RepeatMode{"no", false},
                                         RepeatMode{"No", true}, RepeatMode{"NO", true},
                                         RepeatMode{"yes", true}, RepeatMode{"", true},
                                         RepeatMode{"none", true}));

TEST_F(MainTest, ARelaunchStartsTheOldListAnew)
{
    fake_.storage.add_folder("/demo/show", {"x.mp4"});

    run_created([this] {
        fake_.app.launch();
        fake_.forget();

        fake_.app.launch({{"folder_path", "/demo/show/"}, {"repeat_mode", "no"}});

        EXPECT_EQ(fake_.media.uri, "/opt/data/demo_movie/a.mp4");
        EXPECT_THAT(fake_.of({"player_create", "app_get_preinitialized", "ecore_pipe_add"}),
                    IsEmpty());

        // The new repeat mode is not taken either.
        fake_.media.fire_prepared();
        fake_.loop.drain_pipe();
        fake_.media.fire_completed();
        fake_.loop.drain_pipe();
        EXPECT_EQ(exits(), 0);
    });
}

TEST_F(MainTest, ARelaunchWatchesTheKeysAgain)
{
    run_created([this] {
        fake_.app.launch();
        fake_.forget();

        fake_.app.launch();

        EXPECT_EQ(fake_.transcript.count("vconf_notify_key_changed"), 2);
        EXPECT_THAT(fake_.store.watched(), LinesAre(DEMO_MODE, USE_MODE));
    });
}

TEST_F(MainTest, KeysThatCannotBeWatchedDoNotStopTheLaunch)
{
    fake_.script.fail_always("vconf_notify_key_changed");

    run_created([this] {
        fake_.app.launch();

        EXPECT_TRUE(has_controller());
        EXPECT_EQ(exits(), 0);
    });
}

TEST_F(MainTest, AFailedCreationEndsTheProgram)
{
    fake_.storage.add_folder("/opt/data/demo_movie", {});

    run_created([this] {
        fake_.app.launch();

        EXPECT_EQ(exits(), 1);
        const Lines lines = fake_.lines();
        ASSERT_GE(lines.size(), 3U);
        EXPECT_EQ(Lines(lines.end() - 3, lines.end()),
                  Lines({"E \"Create ostrel demo player failed\"", "E \"\"", "ui_app_exit()"}));
    });
}

TEST_F(MainTest, AFailedVideoPlayerEndsTheProgram)
{
    fake_.fail("player_create");

    run_created([this] {
        fake_.app.launch();

        EXPECT_EQ(exits(), 1);
        EXPECT_THAT(fake_.logs(), testing::Contains("E \"Create ostrel demo player failed\""));
    });
}

TEST_F(MainTest, UnreadableExtrasAreTakenForAbsent)
{
    fake_.script.fail_always("app_control_get_extra_data");

    run_created([this] {
        fake_.app.launch({{"mode", "factory_stop"}});

        EXPECT_TRUE(has_controller());
        EXPECT_EQ(exits(), 0);
    });
}

} // namespace
