#include <algorithm>

#include "main_fixture.h"
#include "player_lines.h"

using testing::Contains;
using testing::IsEmpty;

namespace {

using Extras = fake::Application::Extras;

// ---- main, elm_main ----

TEST_F(MainTest, MainStartsElementaryAndTheFramework)
{
    fake_.app.exit_status = 7;

    EXPECT_EQ(run([] {
                  EXPECT_STREQ(app_data()->id, "org.tizen.ostrel-demo-player-tv");
                  EXPECT_EQ(app_data()->controller, nullptr) << "until the first launch request";
              }),
              7);

    EXPECT_THAT(fake_.lines(), LinesAre("elm_init(1, argv)", "D \"\"",
                                        "ui_app_add_event_handler(LANGUAGE_CHANGED, null)",
                                        "ui_app_main(1, argv)", "elm_shutdown()"));
    EXPECT_EQ(_elm_startup_time, 1000.0);
}

TEST_F(MainTest, WithoutNewsOfTheLanguageTheProgramRuns)
{
    fake_.fail("ui_app_add_event_handler");
    bool ran = false;

    EXPECT_EQ(run([&ran] { ran = true; }), 0);

    EXPECT_TRUE(ran);
}

// ---- Create ----

class MainCreateTest : public MainTest {
  protected:
    static Lines keys_and_panel(int state)
    {
        return {"I \"\"", "I \"\"", "VirtualKey_Initialize(0)",
                "ecore_event_handler_add(DEVICE_ADD, null)",
                "I \"Roation Value = " + std::to_string(state) + " \""};
    }

    static Lines set_up()
    {
        return {"ea_init()",
                "elm_app_base_scale_set(2)",
                "device_power_subscribe_poweroff()",
                "device_power_subscribe_standby()",
                "device_power_subscribe_wakeup()",
                "device_power_subscribe_state_changed_event()",
                "app_context_manager_init()",
                "D \"1\"",
                "SettingsAPI::DisableItemsByList(\"broadcasting picturesize pip game-mode "
                "delete-contents-list tools-demo-update tools-picture-demo\", "
                "\"org.tizen.ostrel-demo-player-tv\")"};
    }

    void expect_creation(const Lines &expected)
    {
        run([&] {
            fake_.forget();
            EXPECT_TRUE(fake_.app.create());
            EXPECT_EQ(fake_.lines(), expected);
        });
    }
};

TEST_F(MainCreateTest, TheSetIsSetUpInItsOrder)
{
    expect_creation(join({keys_and_panel(1), set_up(), {"elm_config_mirrored_set(false)"}}));

    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_LANDSCAPE);
}

TEST_F(MainCreateTest, ARightToLeftSetIsMirrored)
{
    fake_.system.ui_orientation = 1;

    expect_creation(join({keys_and_panel(1), set_up(), {"elm_config_mirrored_set(true)"}}));
}

TEST_F(MainCreateTest, TheStoredRotationIsTaken)
{
    fake_.store.values["db/sysman/rotation_state"] = 2;

    expect_creation(join({keys_and_panel(2), set_up(), {"elm_config_mirrored_set(false)"}}));

    EXPECT_EQ(COstrelDemoUtil::GetWindowRotationType(), ROTATION_TYPE_PORTRAIT);
}

TEST_F(MainCreateTest, AnUnreadableRotationHoldsNothingUp)
{
    fake_.store.values.erase("db/sysman/rotation_state");

    Lines keys = keys_and_panel(0);
    keys.pop_back();
    expect_creation(join({keys, set_up(), {"elm_config_mirrored_set(false)"}}));
}

// The results of these are not looked at.
TEST_F(MainCreateTest, AServiceThatFailsHoldsNothingUp)
{
    for (const char *function :
         {"ea_init", "device_power_subscribe_poweroff", "device_power_subscribe_standby",
          "device_power_subscribe_wakeup", "device_power_subscribe_state_changed_event",
          "app_context_manager_init"})
        fake_.script.fail_always(function);

    expect_creation(join({keys_and_panel(1), set_up(), {"elm_config_mirrored_set(false)"}}));
}

// ---- Launch requests ----

const Extras FOLDER_CONTENTS = {{"demo_player_mode", "folder_contents_player"}};

class LaunchTest : public MainTest {
  protected:
    static Lines watching_both_keys()
    {
        return {"vconf_notify_key_changed(\"db/ostrel-demo-player-tv/demo_mode\", null)",
                "vconf_notify_key_changed(\"db/menu/support/use_mode\", null)"};
    }

    // What a request for a folder's contents does before the controller has its turn.
    static Lines choosing_all_and_watching_one_key()
    {
        return {writes(DEMO_MODE, 0), watching_both_keys().front()};
    }

    // What came before the first step of a new controller.
    Lines before_the_controller() const
    {
        const Lines lines = fake_.lines();
        const auto made = std::find(lines.begin(), lines.end(), "D \"\"");
        EXPECT_NE(made, lines.end()) << "no controller was made";
        return Lines(lines.begin(), made);
    }

    // The folder that is scanned at a launch.
    std::string scanned_folder(const Extras &extras)
    {
        std::string folder;
        run_created([&] {
            fake_.app.launch(extras);
            const Lines opened = fake_.of({"opendir"});
            folder = opened.empty() ? "none" : opened.back();
        });
        return folder;
    }

    // A request whose extras cannot be had is as one without any.
    void expect_launched_without_extras()
    {
        run_created([this] {
            fake_.app.launch({{"mode", "factory_stop"}, {"demo_player_mode", "no"}});

            EXPECT_EQ(before_the_controller(), join({{"I \"\""}, watching_both_keys()}));
            EXPECT_EQ(exits(), 0);
        });
    }

    void expect_refused(const Extras &extras, int requests_to_end)
    {
        run_created([&] {
            fake_.app.launch(extras);

            EXPECT_FALSE(has_controller());
            EXPECT_EQ(fake_.lines(),
                      requests_to_end == 0 ? Lines({"I \"\""}) : join({{"I \"\""}, exit_lines()}));
            EXPECT_EQ(exits(), requests_to_end);
        });
    }
};

TEST_F(LaunchTest, WatchesTheKeysThatEndTheDemoAndMakesTheController)
{
    run_created([this] {
        fake_.app.launch();

        EXPECT_EQ(before_the_controller(), join({{"I \"\""}, watching_both_keys()}));
        EXPECT_EQ(fake_.lines().back(), "I \"change TV_VCONF_START_RELAUNCH_TIMER to 3\"");
        EXPECT_EQ(exits(), 0);
    });
}

TEST_F(LaunchTest, ExtrasAreLoggedAsTheyAreRead)
{
    run_created([this] {
        fake_.app.launch({{"repeat_mode", "no"}});

        EXPECT_THAT(fake_.logs(), Contains("I \"ExtraKey:repeat_mode,pStrExtraValue:no\""));
        EXPECT_THAT(fake_.logs(), Contains("I \"Get ExtraKey:mode,fail\""));
    });
}

TEST_F(LaunchTest, FolderContentsChooseAllAndMenusDoNotEndThem)
{
    run_created([this] {
        fake_.app.launch(FOLDER_CONTENTS);

        EXPECT_EQ(before_the_controller(), join({{"I \"\""}, choosing_all_and_watching_one_key()}));
    });
}

TEST_F(LaunchTest, FolderContentsModeIsComparedWithItsCase)
{
    run_created([this] {
        fake_.app.launch({{"demo_player_mode", "Folder_Contents_Player"}});

        EXPECT_EQ(before_the_controller(), join({{"I \"\""}, watching_both_keys()}));
    });
}

TEST_F(LaunchTest, WithoutAFolderTheBuiltInOneIsScanned)
{
    EXPECT_EQ(scanned_folder({}), "opendir(\"/opt/data/demo_movie/\")");
    EXPECT_EQ(scanned_folder({{"folder_path", ""}}), "opendir(\"/opt/data/demo_movie/\")");
}

TEST_F(LaunchTest, AFolderIsScannedAsItStands)
{
    EXPECT_EQ(scanned_folder({{"folder_path", "/demo/show"}}), "opendir(\"/demo/show\")");
}

TEST_F(LaunchTest, AFolderOnAStickIsLookedForThere)
{
    fake_.storage.sticks = {"/media/a"};

    EXPECT_EQ(scanned_folder({{"folder_path", "show"}, {"path_location", "usb"}}),
              "opendir(\"/media/a/show/\")");
}

TEST_F(LaunchTest, TheLocationIsComparedWithItsCase)
{
    fake_.storage.sticks = {"/media/a"};

    EXPECT_EQ(scanned_folder({{"folder_path", "/demo/show/"}, {"path_location", "USB"}}),
              "opendir(\"/demo/show/\")");
}

TEST_F(LaunchTest, ARequestToGoBelowTheAlwaysOnScreenIsIgnored)
{
    expect_refused({{"__K_RELOCATE_BELOW", "com.norvane.tv.aod"}, {"mode", "factory_stop"}}, 0);
}

TEST_F(LaunchTest, ARequestToGoBelowAnythingElseIsAnyRequest)
{
    for (const char *other : {"com.norvane.tv.other", ""}) {
        run_created([&] {
            fake_.app.launch({{"__K_RELOCATE_BELOW", other}});
            EXPECT_TRUE(has_controller()) << other;
        });
    }
}

TEST_F(LaunchTest, AFactoryStopEndsTheProgram)
{
    expect_refused({{"mode", "factory_stop"}}, 1);
}

TEST_F(LaunchTest, AnyOtherModeStartsAndEndsNothing)
{
    for (const char *mode : {"factory_start", "Factory_Stop", ""})
        expect_refused({{"mode", mode}, {"demo_player_mode", "folder_contents_player"}}, 0);
}

TEST_F(MainTest, ALaunchWithoutDataOnlyWarns)
{
    run_created([this] {
        fake_.app.launch_without_data({{"mode", "factory_stop"}});

        EXPECT_THAT(fake_.lines(), LinesAre("I \"\"", "W \"pAppData is null\""));
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

TEST_F(LaunchTest, ARelaunchStartsTheOldListAnew)
{
    fake_.storage.add_folder("/demo/show", {"x.mp4"});

    run_created([&] {
        fake_.app.launch();
        fake_.registry.name(app_controller(), "controller");
        fake_.forget();

        fake_.app.launch({{"folder_path", "/demo/show/"},
                          {"repeat_mode", "no"},
                          {"demo_player_mode", "folder_contents_player"}});

        const std::string first = "/opt/data/demo_movie/a.mp4";
        EXPECT_EQ(fake_.lines(), join({{"I \"\""},
                                       choosing_all_and_watching_one_key(),
                                       {"I \"\"", "D \"0\"", "D \"" + first + "\"", "D \"0 0\""},
                                       video_lines(first, "", PLAYER_STATE_IDLE, false)}));

        // The new repeat mode is not taken either, nor the keys of the new player mode.
        fake_.media.fire_prepared();
        fake_.loop.drain_pipe();
        fake_.loop.press_key("XF86AudioNext");
        fake_.loop.drain_pipe();
        EXPECT_EQ(fake_.media.rate, 1.0F);
        fake_.media.fire_completed();
        fake_.loop.drain_pipe();
        EXPECT_EQ(exits(), 0);
    });
}

TEST_F(LaunchTest, ARelaunchWithoutContentOnlyLogs)
{
    fake_.storage.add_folder("/opt/data/demo_movie", {});

    run_created([this] {
        fake_.app.launch();
        fake_.forget();

        fake_.app.launch();

        EXPECT_EQ(fake_.lines(),
                  join({{"I \"\""}, watching_both_keys(), {"I \"play list is empty\""}}));
    });
}

TEST_F(LaunchTest, ARelaunchDuringAPhotoBeginsWithTheFirstVideo)
{
    fake_.storage.add_folder("/opt/data/demo_movie", {"a.mp4", "b.jpg"});

    run_created([this] {
        launch_and_start();
        fake_.loop.press_key("XF86NextChapter");
        fake_.loop.drain_pipe();
        ASSERT_EQ(fake_.pictures.path(), "/opt/data/demo_movie/b.jpg");
        fake_.forget();

        fake_.app.launch();

        EXPECT_THAT(fake_.of({"pictrel_", "player_set_uri"}),
                    LinesAre("pictrel_destroy(picture#1)", "pictrel_destroy_display(1)",
                             "player_set_uri(\"/opt/data/demo_movie/a.mp4\")"));
    });
}

TEST_F(LaunchTest, ARelaunchAfterOffWasChosenEndsTheProgram)
{
    run_created([this] {
        fake_.app.launch();
        fake_.store.values[DEMO_MODE] = -1;
        fake_.forget();

        fake_.app.launch();

        EXPECT_EQ(fake_.lines(),
                  join({{"I \"\""}, watching_both_keys(), {"I \"\""}, exit_lines()}));
    });
}

TEST_F(LaunchTest, ARefusedRelaunchLeavesWhatPlays)
{
    run_created([this] {
        launch_and_start();
        for (const Extras &extras : {Extras{{"__K_RELOCATE_BELOW", "com.norvane.tv.aod"}},
                                     Extras{{"mode", "factory_start"}}}) {
            fake_.forget();
            fake_.app.launch(extras);
            EXPECT_THAT(fake_.lines(), LinesAre("I \"\""));
        }
        EXPECT_EQ(exits(), 0);
    });
}

// The timer of the first disclaimer ends the second one early.
TEST_F(LaunchTest, AfterARelaunchTheOldTimerHidesTheNewDisclaimer)
{
    fake_.system.has_disclaimer = true;
    run_created([this] {
        fake_.app.launch();
        for (const double seconds : {3.0, 1.0}) {
            fake_.app.launch();
            fake_.media.fire_prepared();
            fake_.loop.drain_pipe();
            fake_.loop.advance(seconds);
        }
        fake_.forget();

        fake_.loop.advance(1.0);

        EXPECT_THAT(fake_.lines(),
                    LinesAre("evas_object_hide(imagebox#2)", "evas_object_hide(layout#2)",
                             "ecore_timer_del(timer#2)",
                             "I \"time out, evas hide, delete timer\""));
        fake_.forget();
        fake_.loop.advance(10.0);
        EXPECT_THAT(fake_.lines(), IsEmpty());
    });
}

TEST_F(MainTest, ARelaunchWithAnotherChosenFolderKeepsTheOldOne)
{
    fake_.storage.add_folder("/demo/old", {"x.mp4"});
    fake_.storage.add_folder("/demo/new", {"y.mp4"});
    const Extras old_folder = {{"demo_player_mode", "folder_contents_player"},
                               {"folder_path", "/demo/old/"}};
    const Extras new_folder = {{"demo_player_mode", "folder_contents_player"},
                               {"folder_path", "/demo/new/"}};

    run_created([&] {
        fake_.app.launch(old_folder);
        fake_.app.launch(new_folder);

        EXPECT_THAT(fake_.of({"player_set_uri"}), LinesAre("player_set_uri(\"/demo/old/x.mp4\")"));
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

class FailedCreationTest : public MainTest {
  protected:
    void expect_end_with_status(int status)
    {
        run_created([&] {
            fake_.app.launch();

            EXPECT_EQ(exits(), 1);
            const Lines lines = fake_.lines();
            ASSERT_GE(lines.size(), 4U);
            EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
                      Lines({writes("memory/ostrel-demo-player-tv/playback_status", status),
                             "E \"Create ostrel demo player failed\"", "E \"\"", "ui_app_exit()"}));
        });
    }
};

TEST_F(FailedCreationTest, WithoutContentEndsTheProgram)
{
    fake_.storage.add_folder("/opt/data/demo_movie", {});

    expect_end_with_status(2);
}

TEST_F(FailedCreationTest, WithoutAVideoPlayerEndsTheProgram)
{
    fake_.fail("player_create");

    expect_end_with_status(3);
}

TEST_F(LaunchTest, UnreadableExtrasAreTakenForAbsent)
{
    fake_.script.fail_always("app_control_get_extra_data");

    expect_launched_without_extras();
}

TEST_F(LaunchTest, NullExtrasAreTakenForAbsent)
{
    fake_.app.extras_are_null = true;

    expect_launched_without_extras();
}

} // namespace
